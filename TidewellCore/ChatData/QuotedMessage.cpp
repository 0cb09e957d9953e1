#include "TidewellCore/ChatData/QuotedMessage.h"

#include <algorithm>
#include <array>

#include "TidewellCore/ChatData/BlobText.h"

namespace {

// A field of the copy: what the original is then, and which of its own fields hold words, the best first.
struct Kind {
  std::uint32_t field = 0;
  MessagePart part = MessagePart::text;
  std::array<std::uint32_t, 3> words{};  // 0: none
};

constexpr std::array kinds{
    Kind{3, MessagePart::photo, {3}},
    Kind{4, MessagePart::contact, {1}},
    Kind{5, MessagePart::location, {3, 4}},
    Kind{6, MessagePart::text, {1}},
    Kind{7, MessagePart::document, {20, 8, 3}},
    Kind{8, MessagePart::audio},
    Kind{9, MessagePart::video, {7}},
    Kind{13, MessagePart::contacts},
    Kind{18, MessagePart::liveLocation},
    Kind{26, MessagePart::sticker},
    Kind{28, MessagePart::invite},
    Kind{30, MessagePart::product},
    Kind{49, MessagePart::poll, {2}},
    Kind{60, MessagePart::poll, {2}},
    Kind{64, MessagePart::poll, {2}},
    Kind{66, MessagePart::videoNote, {7}},
};

constexpr std::uint32_t isVoice = 6;
constexpr std::uint32_t isGIF = 8;

void readMedium(ProtobufReader fields, const Kind& kind, Quote& quote) {
  std::array<std::optional<std::string>, std::tuple_size_v<decltype(kind.words)>> words;
  quote.part = kind.part;
  while (fields.next()) {
    const auto* place = std::ranges::find(kind.words, fields.number());
    if (place != kind.words.end())
      words[static_cast<std::size_t>(place - kind.words.begin())] = BlobText::shortWords(fields.text());
    const bool isSet = fields.integer().value_or(0) != 0;
    if (kind.part == MessagePart::audio && fields.number() == isVoice && isSet) quote.part = MessagePart::voiceMessage;
    if (kind.part == MessagePart::video && fields.number() == isGIF && isSet) quote.part = MessagePart::gif;
  }
  const auto best = std::ranges::find_if(words, [](const auto& text) { return text.has_value(); });
  if (best != words.end()) quote.words = *best;
}

}  // namespace

void QuotedMessage::read(ProtobufReader copy, Quote& quote) {
  while (copy.next()) {
    if (copy.number() == 1 && copy.text()) quote.words = BlobText::shortWords(copy.text());
    const auto* kind = std::ranges::find(kinds, copy.number(), &Kind::field);
    if (kind != kinds.end()) readMedium(copy.message(), *kind, quote);
  }
}
