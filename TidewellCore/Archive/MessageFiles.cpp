#include "TidewellCore/Archive/MessageFiles.h"

#include <fmt/format.h>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/CSVText.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/ContentWords.h"
#include "TidewellCore/Archive/DetailsFormat.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/Archive/TranscriptDetails.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using ReadableText::cleaned;

// Digits and calendar are the same in every language.
DateFormatter formatter(const char* pattern, const TimeZone& timeZone) {
  return {pattern, timeZone, Locale{.identifier = "en_US"}};
}

// One word for what every message is; the kinds of the archive have theirs.
std::string_view kindOf(const ArchiveMessage& message) {
  if (message.kind() != ArchiveKind::none) return rawValue(message.kind());
  return rawValue(message.media ? ContentWords::partOf(message.media->kind) : MessagePart::text);
}

Json::Object json(const ArchiveMessage& message, const ArchiveChat& chat, const DateFormatter& localTimes) {
  Json::Object json = ArchiveFormat::json(message);
  json.erase("ts");
  json.insert_or_assign("kind", Json(kindOf(message)));
  if (!message.senderJID.empty()) json.emplace("senderJID", cleaned(message.senderJID));
  if (const auto date = TranscriptDetails::dateOf(message)) {
    json.emplace("time", iso8601(*date));
    json.emplace("localTime", localTimes.string(*date));
  }
  if (const auto path = TranscriptDetails::mediaPath(message, chat)) {
    json.at("media").as<Json::Object>()->insert_or_assign("path", Json(*path));
  }
  return json;
}

// How a table writes a chat's messages.
class Rows {
 public:
  Rows(const ArchiveChat& chat, const TranscriptStyle& style, const TimeZone& timeZone)
      : chat_(chat),
        wording_{.style = style},
        utc_(formatter(time, TimeZone{})),
        local_(formatter(time, timeZone)),
        offset_(formatter("xxx", timeZone)) {}

  static std::vector<std::string> header() {
    return {"id",   "utc",   "local",    "offset",     "me",         "sender",    "sender_jid", "kind",
            "text", "media", "reply_to", "reply_name", "reply_text", "reactions", "marks"};
  }

  // In the order of the header.
  std::vector<std::string> row(const ArchiveMessage& message) const {
    const std::optional<Date> date = TranscriptDetails::dateOf(message);
    const auto written = [&](const DateFormatter& times) { return date ? times.string(*date) : std::string(); };
    const ArchiveQuote quote = quoteOf(message);
    return {number(message.id),
            written(utc_),
            written(local_),
            written(offset_),
            message.fromMe ? "true" : "false",
            words(message.sender),
            words(message.senderJID),
            std::string(kindOf(message)),
            words(MessageWords::text(message)),
            words(TranscriptDetails::mediaPath(message, chat_).value_or("")),
            number(quote.toID.value_or("")),
            words(quote.name),
            words(quote.words),
            words(TranscriptDetails::reactions(message, wording_)),
            fmt::format("{}", fmt::join(DetailsFormat::marks(message), " "))};
  }

 private:
  static constexpr const char* time = "yyyy-MM-dd HH:mm:ss";  // as spreadsheet programs of any region read it

  static std::string words(std::string_view text) { return CSVText::words(cleaned(text)); }

  // A number stays one, also below zero; what pages say in its place may be anything.
  static std::string number(const std::string& text) {
    const bool isNumber = text.find_first_not_of("0123456789", text.starts_with('-') ? 1 : 0) == std::string::npos;
    return isNumber && text != "-" ? text : words(text);
  }

  static ArchiveQuote quoteOf(const ArchiveMessage& message) {
    return message.details ? message.details->quote.value_or(ArchiveQuote()) : ArchiveQuote();
  }

  const ArchiveChat& chat_;
  const Wording wording_;
  const DateFormatter utc_;
  const DateFormatter local_;
  const DateFormatter offset_;
};

}  // namespace

const char* MessageFiles::nameOf(MessageFormat format) {
  return format == MessageFormat::json ? FolderNames::jsonMessages : FolderNames::csvMessages;
}

std::string MessageFiles::render(MessageFormat format, const ArchiveChat& chat, const TranscriptStyle& style,
                                 const TimeZone& timeZone) {
  return format == MessageFormat::json ? renderJSONLines(chat, timeZone) : renderCSV(chat, style, timeZone);
}

std::string MessageFiles::renderJSONLines(const ArchiveChat& chat, const TimeZone& timeZone) {
  const DateFormatter localTimes = formatter("yyyy-MM-dd'T'HH:mm:ssxxx", timeZone);
  std::string lines;
  for (const ArchiveMessage& message : chat.messages) {
    ChatArchiveJSON::append(lines, json(message, chat, localTimes));
    lines += '\n';
  }
  return lines;
}

std::string MessageFiles::renderCSV(const ArchiveChat& chat, const TranscriptStyle& style, const TimeZone& timeZone) {
  const Rows rows(chat, style, timeZone);
  std::string table(CSVText::byteOrderMark);
  CSVText::appendRow(table, Rows::header());
  for (const ArchiveMessage& message : chat.messages) CSVText::appendRow(table, rows.row(message));
  return table;
}
