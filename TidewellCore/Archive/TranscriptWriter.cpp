#include "TidewellCore/Archive/TranscriptWriter.h"

#include "TidewellCore/Archive/TranscriptDetails.h"
#include "TidewellCore/Archive/TranscriptPage.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using ReadableText::cleaned;

constexpr std::string_view undated = "undated";
constexpr std::string_view indentation = "    ";

// A line of its own must not begin within a name.
std::string heading(std::string_view name) { return ReadableText::onOneLine(cleaned(name)); }

std::string textBody(const ArchiveMessage& message, const ArchiveChat& chat, const Wording& wording) {
  std::string body = TranscriptDetails::words(message, wording);
  if (const auto path = TranscriptDetails::mediaPath(message, chat))
    body += (body.empty() ? "[" : " [") + cleaned(*path) + "]";
  return body.empty() ? std::string(TranscriptDetails::withoutContent) : body;
}

// "Ana [forwarded]: ", and "* " of what nobody says.
std::string textHead(const ArchiveMessage& message, const Wording& wording) {
  if (message.kind() == ArchiveKind::notice) return "* ";
  std::string head = heading(message.sender);
  for (const std::string& mark : TranscriptDetails::marks(message, wording)) head += " [" + mark + "]";
  return head + ": ";
}

std::vector<std::string> detailLines(const ArchiveMessage& message, const Wording& wording) {
  const auto said = [&](const char* name, const char* place, const std::string& value) {
    return wording.say("transcript", name, {{place, value}});
  };
  std::vector<std::string> lines;
  if (auto reply = TranscriptDetails::reply(message, wording)) lines.push_back(std::move(*reply));
  for (const std::string& option : TranscriptDetails::pollOptions(message, wording)) {
    lines.push_back(said("pollOption", "words", option));
  }
  if (const auto link = TranscriptDetails::link(message)) {
    const bool isTitled = link->words != link->address && !link->address.empty();
    lines.push_back(said("link", "words", isTitled ? link->words + " — " + link->address : link->words));
  }
  const std::string reactions = TranscriptDetails::reactions(message, wording);
  if (!reactions.empty()) lines.push_back(said("reactions", "list", reactions));
  return lines;
}

}  // namespace

std::string TranscriptWriter::renderHTML(const ArchiveChat& chat, const TranscriptStyle& style,
                                         const TranscriptDates& dates) {
  return TranscriptPage::render(chat, style, dates);
}

std::string TranscriptWriter::renderText(const ArchiveChat& chat, const TranscriptStyle& style,
                                         const TranscriptDates& dates) {
  const Wording wording{.style = style};
  std::string text = "=== " + heading(chat.name) + " ===\n";
  for (const ArchiveMessage& message : chat.messages) {
    const std::optional<Date> date = TranscriptDetails::dateOf(message);
    text.append("[").append(date ? dates.inText.string(*date) : std::string(undated)).append("] ");
    text.append(textHead(message, wording)).append(textBody(message, chat, wording)).append("\n");
    for (const std::string& line : detailLines(message, wording)) text.append(indentation).append(line).append("\n");
  }
  return text;
}
