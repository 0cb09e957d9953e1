#include "TidewellCore/ChatData/RowMedia.h"

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

bool saysSomething(std::optional<std::string_view> text) { return text && !Text::trimmedPart(*text).empty(); }

bool areSame(std::string_view one, std::string_view other) {
  return Text::trimmedPart(one) == Text::trimmedPart(other);
}

// Whether it is a file's name without its ending.
bool isNameOf(std::string_view stem, std::string_view file) {
  const std::size_t dot = file.rfind('.');
  return dot != std::string_view::npos && areSame(stem, file.substr(0, dot));
}

bool hasLength(MessagePart part) {
  using enum MessagePart;
  return part == video || part == gif || part == videoNote || part == voiceMessage || part == audio;
}

}  // namespace

std::optional<MessagePart> RowMedia::partOf(const MessageRow& row) {
  switch (row.type) {
    case 1:
    case 38:
      return MessagePart::photo;
    case 2:
    case 39:
      return MessagePart::video;
    case 3:
      return partOfMIMEType(row) == MessagePart::audio ? MessagePart::audio : MessagePart::voiceMessage;
    case 8:
      return MessagePart::document;
    case 11:
      return MessagePart::gif;
    case 15:
      return MessagePart::sticker;
    case 53:
      return MessagePart::voiceMessage;
    case 54:
      return MessagePart::videoNote;
    default:
      return std::nullopt;
  }
}

// A vCard or a place may stand there instead; a MIME type has no line breaks and is short.
std::optional<MessagePart> RowMedia::partOfMIMEType(const MessageRow& row) {
  constexpr std::size_t longest = 255;
  const std::string_view column = row.vCardString.value_or("");
  if (column.size() > longest || column.find('\n') != std::string_view::npos) return std::nullopt;
  const std::string type = Text::lowercased(column);
  if (type.starts_with("image/")) return MessagePart::photo;
  if (type.starts_with("video/")) return MessagePart::video;
  if (type.starts_with("audio/")) {
    return type.find("opus") == std::string::npos ? MessagePart::audio : MessagePart::voiceMessage;
  }
  if (type.starts_with("application/") || type.starts_with("text/")) return MessagePart::document;
  return std::nullopt;
}

MissingMedia RowMedia::missing(const MessageRow& row, MessagePart part) {
  MissingMedia media{.part = part};
  if (hasLength(part) && row.duration.value_or(0) > 0) media.seconds = BlobText::seconds(row.duration);
  if (part == MessagePart::document) media.fileName = BlobText::shortWords(documentName(row));
  return media;
}

std::optional<std::string_view> RowMedia::caption(const MessageRow& row) {
  return saysSomething(row.text) ? row.text : row.title;
}

std::optional<std::string_view> RowMedia::titleAboveText(const MessageRow& row) {
  const bool isOther = saysSomething(row.title) && saysSomething(row.text) && !areSame(*row.title, *row.text);
  return isOther ? row.title : std::nullopt;
}

std::optional<std::string_view> RowMedia::documentName(const MessageRow& row) {
  if (saysSomething(row.text)) return row.text;
  return saysSomething(row.title) ? row.title : std::nullopt;
}

std::optional<std::string_view> RowMedia::documentCaption(const MessageRow& row) {
  const auto title = titleAboveText(row);
  const bool isName = title && (isNameOf(*title, *row.text) || isNameOf(*row.text, *title));
  return isName ? std::nullopt : title;
}
