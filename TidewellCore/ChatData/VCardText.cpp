#include "TidewellCore/ChatData/VCardText.h"

#include <algorithm>
#include <array>
#include <vector>

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/VCardProperties.h"

namespace {

// A few of every kind that a card repeats.
constexpr std::size_t mostProperties = 4 * VCardText::mostNumbers;

// The parts of a text between separators, those that say nothing too; none of no text.
std::vector<std::string_view> split(std::optional<std::string_view> text, std::string_view separator) {
  std::vector<std::string_view> parts;
  if (!text || text->empty()) return parts;
  for (std::size_t start = 0; parts.size() <= VCardText::mostContacts;) {
    const auto end = text->find(separator, start);
    parts.push_back(text->substr(start, end - start));
    if (end == std::string_view::npos) return parts;
    start = end + separator.size();
  }
  return parts;
}

// The parts of a value between semicolons that no backslash precedes, the backslashes gone.
std::vector<std::string> components(std::string_view value) {
  std::vector<std::string> parts(1);
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool isEscape = value[i] == '\\' && i + 1 < value.size();
    if (isEscape) ++i;
    const bool isBreak = isEscape && (value[i] == 'n' || value[i] == 'N');
    if (value[i] == ';' && !isEscape) {
      parts.emplace_back();
    } else {
      parts.back() += isBreak ? ' ' : value[i];
    }
  }
  return parts;
}

std::optional<std::string> wordsOf(std::string_view value) {
  std::string joined;
  for (const std::string& part : components(value)) joined += joined.empty() ? part : ";" + part;
  return BlobText::shortWords(joined);
}

// "family;given;additional;prefix;suffix" as it is spoken.
std::optional<std::string> spokenName(std::string_view value) {
  std::vector<std::string> parts = components(value);
  parts.resize(std::max<std::size_t>(parts.size(), 5));
  std::string name;
  for (const std::size_t place : std::array<std::size_t, 5>{3, 1, 2, 0, 4}) {
    if (const auto words = BlobText::words(parts[place])) name += (name.empty() ? "" : " ") + *words;
  }
  return BlobText::shortWords(name);
}

void add(std::optional<std::string> value, std::vector<std::string>& list) {
  const bool isNew = value && std::ranges::find(list, *value) == list.end();
  if (isNew && list.size() < VCardText::mostNumbers) list.push_back(std::move(*value));
}

bool isNumber(std::string_view digits) {
  return !digits.empty() && digits.size() <= 20 &&
         std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<std::string> numberOf(const VCardProperty& property) {
  std::string_view value = property.value;
  if (value.starts_with("tel:")) value.remove_prefix(4);
  auto number = wordsOf(value);
  if (!number && isNumber(property.waID)) number = "+" + property.waID;
  return number;
}

// Its name is empty when the card has none.
SharedContact contactOf(std::string_view card) {
  SharedContact contact;
  std::optional<std::string> full;
  std::optional<std::string> spoken;
  std::optional<std::string> company;
  for (const VCardProperty& property : VCardProperties::read(card, mostProperties)) {
    if (property.name == "FN" && !full) full = wordsOf(property.value);
    if (property.name == "N" && !spoken) spoken = spokenName(property.value);
    if (property.name == "ORG" && !company) company = BlobText::shortWords(components(property.value)[0]);
    if (property.name == "TEL") add(numberOf(property), contact.phones);
    if (property.name == "EMAIL") add(wordsOf(property.value), contact.emails);
  }
  contact.name = full ? *full : spoken ? *spoken : company.value_or("");
  return contact;
}

bool saysSomething(const SharedContact& contact) {
  return !contact.name.empty() || !contact.phones.empty() || !contact.emails.empty();
}

}  // namespace

SharedContacts VCardText::contacts(std::optional<std::string_view> names, std::optional<std::string_view> cards) {
  std::vector<std::string_view> titles = split(names, nameSeparator);
  // The first of several says how many there are, in the phone's language.
  if (titles.size() > 1) titles.erase(titles.begin());
  const std::vector<std::string_view> texts = split(cards, cardSeparator);
  SharedContacts shared;
  for (std::size_t i = 0; i < std::max(titles.size(), texts.size()); ++i) {
    SharedContact contact = i < texts.size() ? contactOf(texts[i]) : SharedContact();
    if (contact.name.empty() && i < titles.size()) contact.name = BlobText::shortWords(titles[i]).value_or("");
    if (saysSomething(contact) && shared.contacts.size() < mostContacts) shared.contacts.push_back(std::move(contact));
  }
  return shared;
}
