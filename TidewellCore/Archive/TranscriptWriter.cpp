#include "TidewellCore/Archive/TranscriptWriter.h"

#include "TidewellCore/Archive/ReadableText.h"

namespace {

using ReadableText::cleaned;
using ReadableText::escapedForHTML;

constexpr std::string_view withoutContent = "[media]";
constexpr std::string_view undated = "undated";

constexpr std::string_view styleSheet = R"(:root { color-scheme: light dark; }
body {
  font: 15px/1.45 -apple-system, BlinkMacSystemFont, system-ui, sans-serif;
  margin: 0 auto;
  max-width: 40rem;
  padding: 1.5rem 1.25rem 3rem;
}
h1 { font-size: 1.25rem; font-weight: 600; margin: 0 0 1.25rem; }
.day {
  margin: 1.5rem 0 0.75rem;
  color: #6e6e73;
  font-size: 0.8rem;
  text-align: center;
}
.msg { margin: 0.65rem 0; }
.msg.me { display: flex; flex-direction: column; align-items: flex-end; }
.msg.me .bubble { background: #d8ead2; }
.bubble {
  background: #f2f2f7;
  border-radius: 12px;
  padding: 0.5rem 0.75rem;
  display: inline-block;
  max-width: 100%;
}
.meta { color: #6e6e73; font-size: 0.75rem; margin-bottom: 0.2rem; }
p { margin: 0.15rem 0; white-space: pre-wrap; }
img, video { max-width: 100%; height: auto; border-radius: 8px; display: block; margin-top: 0.35rem; }
audio { width: 16rem; margin-top: 0.35rem; }
a { color: inherit; }
@media (prefers-color-scheme: dark) {
  .day, .meta { color: #98989d; }
  .bubble { background: #2c2c2e; }
  .msg.me .bubble { background: #1f3d2b; }
}
)";

std::string escaped(std::string_view text) { return escapedForHTML(cleaned(text)); }

std::string withLineBreaks(const std::string& escapedText) {
  std::string result;
  for (const char c : escapedText) c == '\n' ? result += "<br>" : result += c;
  return result;
}

// A file name as a relative link: a browser would cut it at "?" and "#", and a blank off its end.
std::string link(std::string_view fileName) {
  std::string encoded;
  for (const char c : fileName) {
    if (c == '%') {
      encoded += "%25";
    } else if (c == '#') {
      encoded += "%23";
    } else if (c == '?') {
      encoded += "%3F";
    } else {
      encoded += c;
    }
  }
  if (encoded.ends_with(' ')) encoded.replace(encoded.size() - 1, 1, "%20");
  return escaped(encoded);
}

std::string mediaElement(std::string_view fileName, MediaKind kind) {
  const std::string name = escaped(fileName);
  const std::string target = "\"" + link(fileName) + "\"";
  switch (kind.value()) {
    case MediaKind::photos:
    case MediaKind::stickers:
      return "<img src=" + target + " alt=\"" + name + "\" loading=\"lazy\">";
    case MediaKind::videos:
      return "<video controls src=" + target + "></video>";
    case MediaKind::voiceNotes:
      return "<audio controls src=" + target + "></audio>";
    case MediaKind::documents:
      return "<a href=" + target + ">" + name + "</a>";
  }
  return {};
}

std::string mediaHTML(std::string_view fileName, MediaKind kind) {
  return "<p>" + mediaElement(fileName, kind) + "</p>";
}

// Where the medium of a message stands, seen from the chat's folder; absent when it is not in the export. It
// stands in that folder, unless two chats share it.
std::optional<std::string> mediaPath(const ArchiveMessage& message, const ArchiveChat& chat) {
  if (!message.media || !message.media->relativePath) return std::nullopt;
  const std::string& path = *message.media->relativePath;
  const std::string prefix = chat.folder + "/";
  return path.starts_with(prefix) ? path.substr(prefix.size()) : "../" + path;
}

std::optional<Date> dateOf(const ArchiveMessage& message) {
  return message.timestamp ? std::optional(dateFromUnixTime(*message.timestamp)) : std::nullopt;
}

bool hasText(const ArchiveMessage& message) { return message.text && !message.text->empty(); }

std::string bubble(const ArchiveMessage& message, const ArchiveChat& chat) {
  std::string content;
  if (hasText(message)) content += "<p>" + withLineBreaks(escaped(*message.text)) + "</p>";
  if (const auto path = mediaPath(message, chat)) content += mediaHTML(*path, message.media->kind);
  if (content.empty()) content = "<p>" + std::string(withoutContent) + "</p>";
  // The direction is that of the text in it.
  return "<div class=\"bubble\" dir=\"auto\">" + content + "</div>\n";
}

void appendHead(std::string& page, std::string_view chatName, const TranscriptStyle& style) {
  page += "<!DOCTYPE html>\n<html lang=\"" + escaped(style.languageCode) + "\">\n<head>\n<meta charset=\"utf-8\">\n";
  page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  page += "<title>" + escaped(chatName) + "</title>\n<style>\n";
  page += styleSheet;
  page += "</style>\n</head>\n<body>\n";
}

// A line of its own must not begin within a name.
std::string heading(std::string_view name) { return ReadableText::onOneLine(cleaned(name)); }

std::string textBody(const ArchiveMessage& message, const ArchiveChat& chat) {
  std::string body = hasText(message) ? cleaned(*message.text) : std::string();
  if (const auto path = mediaPath(message, chat)) body += (body.empty() ? "[" : " [") + cleaned(*path) + "]";
  return body.empty() ? std::string(withoutContent) : body;
}

}  // namespace

std::string TranscriptWriter::renderHTML(const ArchiveChat& chat, const TranscriptStyle& style,
                                         const TimeZone& timeZone, const Locale& locale) {
  const DateFormatter days = DateFormatter::fullDate(timeZone, locale);
  const DateFormatter times = DateFormatter::mediumTime(timeZone, locale);
  std::string page;
  appendHead(page, chat.name, style);
  page += "<h1>" + escaped(chat.name) + "</h1>\n";
  std::string previousDay;
  for (const ArchiveMessage& message : chat.messages) {
    const std::optional<Date> date = dateOf(message);
    const std::string day = date ? days.string(*date) : previousDay;
    if (day != previousDay) page += "<div class=\"day\">" + escaped(day) + "</div>\n";
    previousDay = day;
    page += message.fromMe ? "<article class=\"msg me\">\n" : "<article class=\"msg\">\n";
    page += "<div class=\"meta\">" + escaped(message.sender);
    if (date) page += " · " + escaped(times.string(*date));
    page += "</div>\n" + bubble(message, chat) + "</article>\n";
  }
  return page + "</body>\n</html>";
}

std::string TranscriptWriter::renderText(const ArchiveChat& chat, const TimeZone& timeZone, const Locale& locale) {
  const DateFormatter times("yyyy-MM-dd HH:mm:ss", timeZone, locale);
  std::string text = "=== " + heading(chat.name) + " ===\n";
  for (const ArchiveMessage& message : chat.messages) {
    const std::optional<Date> date = dateOf(message);
    const std::string time = date ? times.string(*date) : std::string(undated);
    text += "[" + time + "] " + heading(message.sender) + ": " + textBody(message, chat) + "\n";
  }
  return text;
}
