#include "TidewellCore/Archive/TranscriptPage.h"

#include <algorithm>

#include "TidewellCore/Archive/TextMarks.h"
#include "TidewellCore/Archive/TranscriptDetails.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using ReadableText::cleaned;
using ReadableText::escapedForHTML;
using TranscriptDetails::Link;

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

// For pages with more than plain texts and files.
constexpr std::string_view detailsStyleSheet = R"(.bubble, .notice { overflow-wrap: anywhere; }
.notice { margin: 1rem auto; max-width: 34rem; color: #6e6e73; font-size: 0.8rem; text-align: center; }
.quote { border-inline-start: 3px solid #8e8e93; padding-inline-start: 0.5rem; color: #515154; font-size: 0.85rem; }
.option { border-top: 1px solid #c7c7cc; padding-top: 0.15rem; }
.link, .reactions { font-size: 0.85rem; }
.quoted, .entry { display: block; }
.quoted { border-inline-start: 3px solid #8e8e93; padding-inline-start: 0.5rem; color: #515154; }
.entry { padding-inline-start: 1.3em; text-indent: -1.3em; }
@media (prefers-color-scheme: dark) {
  .notice { color: #98989d; }
  .quote, .quoted { color: #c7c7cc; }
  .option { border-color: #48484a; }
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

std::string paragraph(std::string_view kind, const std::string& html) {
  return "<p class=\"" + std::string(kind) + "\" dir=\"auto\">" + html + "</p>";
}

// Opened by a click alone, in a tab of its own that does not learn where it comes from.
std::string anchor(const Link& link) {
  if (!TranscriptDetails::mayLead(link.address)) return escaped(link.words);
  return "<a href=\"" + escaped(link.address) + R"(" target="_blank" rel="noreferrer noopener">)" +
         escaped(link.words) + "</a>";
}

std::string detailsHTML(const ArchiveMessage& message, const Wording& wording) {
  std::string html;
  for (const std::string& option : TranscriptDetails::pollOptions(message, wording)) {
    html += paragraph("option", escaped(option));
  }
  if (const auto link = TranscriptDetails::link(message)) html += paragraph("link", anchor(*link));
  if (const auto map = TranscriptDetails::map(message, wording)) html += paragraph("link", anchor(*map));
  const std::string reactions = TranscriptDetails::reactions(message, wording);
  return reactions.empty() ? html : html + paragraph("reactions", escaped(reactions));
}

std::string bubble(const ArchiveMessage& message, const ArchiveChat& chat, const Wording& wording) {
  std::string content;
  const std::string words = TranscriptDetails::words(message, wording);
  if (!words.empty()) content += "<p>" + TextMarks::html(cleaned(words)) + "</p>";
  if (const auto path = TranscriptDetails::mediaPath(message, chat)) content += mediaHTML(*path, message.media->kind);
  if (content.empty()) content = "<p>" + std::string(TranscriptDetails::withoutContent) + "</p>";
  const auto reply = TranscriptDetails::reply(message, wording);
  if (reply) content = paragraph("quote", escaped(*reply)) + content;
  // The direction is that of the text in it.
  return "<div class=\"bubble\" dir=\"auto\">" + content + detailsHTML(message, wording) + "</div>\n";
}

bool isNotice(const ArchiveMessage& message) { return message.kind() == ArchiveKind::notice; }

// Who and when, and what the message is marked with.
std::string meta(const ArchiveMessage& message, const std::string& time, const Wording& wording) {
  std::string meta = escaped(message.sender);
  if (!time.empty()) meta += " · " + escaped(time);
  for (const std::string& mark : TranscriptDetails::marks(message, wording)) meta += " · " + escaped(mark);
  return meta;
}

std::string noticeArticle(const ArchiveMessage& message, const std::string& time, const Wording& wording) {
  std::string html = withLineBreaks(escaped(TranscriptDetails::words(message, wording)));
  if (!time.empty()) html += " · " + escaped(time);
  return "<article class=\"notice\">\n<p dir=\"auto\">" + html + "</p>\n</article>\n";
}

std::string article(const ArchiveMessage& message, const ArchiveChat& chat, const std::string& time,
                    const Wording& wording) {
  if (isNotice(message)) return noticeArticle(message, time, wording);
  return std::string(message.fromMe ? "<article class=\"msg me\">\n" : "<article class=\"msg\">\n") +
         "<div class=\"meta\">" + meta(message, time, wording) + "</div>\n" + bubble(message, chat, wording) +
         "</article>\n";
}

bool hasMoreThanText(const ArchiveMessage& message) {
  if (!message.details) return false;
  const ArchiveDetails& details = *message.details;
  return details.quote || !details.reactions.empty() || !details.info.empty();
}

bool needsMoreStyle(const ArchiveChat& chat, const std::string& articles) {
  return std::ranges::any_of(chat.messages, [](const ArchiveMessage& message) { return hasMoreThanText(message); }) ||
         articles.find(TextMarks::blockStart) != std::string::npos;
}

void appendHead(std::string& page, const ArchiveChat& chat, const TranscriptStyle& style, bool hasMoreStyle) {
  page += "<!DOCTYPE html>\n<html lang=\"" + escaped(style.languageCode) + "\">\n<head>\n<meta charset=\"utf-8\">\n";
  page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  page += "<title>" + escaped(chat.name) + "</title>\n<style>\n";
  page += styleSheet;
  page += "</style>\n";
  if (hasMoreStyle) {
    page += "<style>\n";
    page += detailsStyleSheet;
    page += "</style>\n";
  }
  page += "</head>\n<body>\n";
}

}  // namespace

std::string TranscriptPage::render(const ArchiveChat& chat, const TranscriptStyle& style,
                                   const TranscriptDates& dates) {
  const Wording wording{.style = style};
  std::string articles;
  std::string previousDay;
  for (const ArchiveMessage& message : chat.messages) {
    const std::optional<Date> date = TranscriptDetails::dateOf(message);
    const std::string day = date ? dates.days.string(*date) : previousDay;
    if (day != previousDay) articles += "<div class=\"day\">" + escaped(day) + "</div>\n";
    previousDay = day;
    articles += article(message, chat, date ? dates.times.string(*date) : "", wording);
  }
  std::string page;
  appendHead(page, chat, style, needsMoreStyle(chat, articles));
  page += "<h1>" + escaped(chat.name) + "</h1>\n";
  return page + articles + "</body>\n</html>";
}
