#include "TidewellCore/ChatData/BusinessMessage.h"

#include <algorithm>
#include <array>

#include "TidewellCore/ChatData/BlobText.h"

namespace {

constexpr std::size_t mostButtons = 1'000;

void add(BusinessButton button, BusinessText& text) {
  if (!button.words.empty() && text.buttons.size() < mostButtons) text.buttons.push_back(std::move(button));
}

BusinessButton wordsAndTarget(ProtobufReader fields) {
  BusinessButton button;
  while (fields.next()) {
    if (fields.number() == 1) button.words = BlobText::words(fields.text()).value_or("");
    if (fields.number() == 2) button.target = BlobText::words(fields.text());
  }
  return button;
}

BusinessButton wordsAlone(ProtobufReader fields) { return {.words = wordsAndTarget(fields).words}; }

// One of: 1 a reply, 2 an address, 3 a number to call.
void readTemplateButton(ProtobufReader fields, BusinessText& text) {
  while (fields.next()) {
    if (fields.number() == 1) add(wordsAlone(fields.message()), text);
    if (fields.number() == 2 || fields.number() == 3) add(wordsAndTarget(fields.message()), text);
  }
}

// A button, or a section of a list with its rows.
void readChoices(ProtobufReader fields, BusinessText& text) {
  forEachMessage(fields, 2, [&](ProtobufReader choice) { add(wordsAlone(choice), text); });
}

// Which fields of a message hold what.
struct Layout {
  std::array<std::uint32_t, 3> paragraphs{};  // in the order in which they are read
  std::uint32_t choices = 0;
  void (*readChoice)(ProtobufReader, BusinessText&) = nullptr;
};

constexpr Layout templateLayout{{2, 6, 7}, 8, readTemplateButton};
constexpr Layout buttonsLayout{{6, 7}, 9, readChoices};
constexpr Layout listLayout{{1, 2, 7}, 5, readChoices};

BusinessText readText(ProtobufReader fields, const Layout& layout) {
  BusinessText text;
  std::array<std::optional<std::string>, std::tuple_size_v<decltype(layout.paragraphs)>> paragraphs;
  while (fields.next()) {
    const auto* place = std::ranges::find(layout.paragraphs, fields.number());
    const auto index = static_cast<std::size_t>(place - layout.paragraphs.begin());
    if (index < paragraphs.size()) paragraphs[index] = BlobText::words(fields.text());
    if (fields.number() == layout.choices) layout.readChoice(fields.message(), text);
  }
  for (auto& paragraph : paragraphs) {
    if (paragraph) text.paragraphs.push_back(std::move(*paragraph));
  }
  return text;
}

BusinessText read(ProtobufReader metadataField, const Layout& layout) {
  BusinessText text;
  forEachMessage(metadataField, 1, [&](ProtobufReader fields) { text = readText(fields, layout); });
  return text;
}

bool isCurrency(const std::optional<std::string>& text) {
  return text && text->size() == 3 && std::ranges::all_of(*text, [](char c) { return c >= 'A' && c <= 'Z'; });
}

Product snapshot(ProtobufReader fields) {
  Product product;
  while (fields.next()) {
    if (fields.number() == 3) product.title = BlobText::words(fields.text()).value_or("");
    if (fields.number() == 4) product.description = BlobText::words(fields.text());
    if (fields.number() == 5) fields.read(product.currency);
    if (fields.number() == 6) fields.read(product.thousandths);
  }
  if (!isCurrency(product.currency)) product.currency.reset();
  if (!product.currency || product.thousandths.value_or(0) < 0) product.thousandths.reset();
  return product;
}

}  // namespace

BusinessText BusinessMessage::fromTemplate(ProtobufReader metadataField) { return read(metadataField, templateLayout); }

BusinessText BusinessMessage::fromButtons(ProtobufReader metadataField) { return read(metadataField, buttonsLayout); }

BusinessText BusinessMessage::fromList(ProtobufReader metadataField) { return read(metadataField, listLayout); }

std::optional<Product> BusinessMessage::product(ProtobufReader metadataField) {
  Product product;
  forEachMessage(metadataField, 1, [&](ProtobufReader message) {
    forEachMessage(message, 1, [&](ProtobufReader fields) { product = snapshot(fields); });
  });
  return product.title.empty() ? std::nullopt : std::optional(std::move(product));
}
