#include "TidewellCore/Archive/TranscriptDetails.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "TidewellCore/Archive/ContentWords.h"
#include "TidewellCore/Archive/MessageInfo.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::string_view section = "transcript";

std::string cut(const std::string& words) {
  constexpr std::size_t longest = TranscriptDetails::longestReply;
  if (Text::firstCharacters(words, longest) == words) return words;
  return Text::firstCharacters(words, longest - 1) + "…";
}

// "Photo: the sea"; the label alone is the words of what has none.
std::string quotedWords(const ArchiveQuote& quote, const Wording& wording) {
  const std::string label = ContentWords::label(quote.part, wording);
  const bool isLabelled = quote.part != MessagePart::text && quote.words != label;
  return cut(isLabelled ? label + ": " + quote.words : quote.words);
}

std::string pollWords(const ArchiveDetails& details, const Wording& wording) {
  std::string words = ContentWords::of(Poll{.question = MessageInfo::question(details.info)}, {wording});
  if (const auto caption = MessageInfo::caption(details.info)) words += "\n" + *caption;
  return Mentions::named(words, details.mentions);
}

// Those whose names are known, and how many they are where that is not all.
std::string reactionWords(const ArchiveReaction& reaction, const Wording& wording) {
  std::string words = reaction.emoji;
  if (reaction.count > static_cast<std::int64_t>(reaction.names.size())) words += fmt::format(" {}", reaction.count);
  return reaction.names.empty() ? words : words + " " + wording.list(reaction.names);
}

// What is said of a file that is not there, unless the message's own words are that.
std::string absenceOf(const ArchiveMessage& message, const Wording& wording) {
  if (message.media && !message.media->relativePath) return ContentWords::notExported(message.media->kind, wording);
  const bool isCaptioned = message.kind() == ArchiveKind::missing && MessageInfo::caption(message.details->info);
  return isCaptioned ? ContentWords::of(MessageInfo::missing(message.details->info), {wording}) : std::string();
}

}  // namespace

std::optional<Date> TranscriptDetails::dateOf(const ArchiveMessage& message) {
  return message.timestamp ? std::optional(dateFromUnixTime(*message.timestamp)) : std::nullopt;
}

std::optional<std::string> TranscriptDetails::mediaPath(const ArchiveMessage& message, const ArchiveChat& chat) {
  if (!message.media || !message.media->relativePath) return std::nullopt;
  const std::string& path = *message.media->relativePath;
  const std::string prefix = chat.folder + "/";
  return path.starts_with(prefix) ? path.substr(prefix.size()) : "../" + path;
}

std::string TranscriptDetails::words(const ArchiveMessage& message, const Wording& wording) {
  if (message.kind() == ArchiveKind::poll) return pollWords(*message.details, wording);
  const std::string text = MessageWords::text(message);
  const std::string absence = absenceOf(message, wording);
  if (text.empty() || absence.empty()) return text + absence;
  return text + " [" + absence + "]";
}

std::vector<std::string> TranscriptDetails::marks(const ArchiveMessage& message, const Wording& wording) {
  const MessageMarks set = message.details ? message.details->marks : MessageMarks();
  const bool hasFile = message.media.has_value();  // what is missing says so in its words
  const std::array marks{std::pair(set.isForwarded, "forwarded"), std::pair(set.isViewOnce, "viewOnce"),
                         std::pair(set.isGIF && hasFile, "gif"),  std::pair(set.isRound && hasFile, "round"),
                         std::pair(set.isStarred, "starred"),     std::pair(message.isDeletedLater, "deletedLater")};
  std::vector<std::string> words;
  for (const auto& [isSet, name] : marks) {
    if (isSet) words.push_back(wording.say(section, name));
  }
  return words;
}

std::optional<std::string> TranscriptDetails::reply(const ArchiveMessage& message, const Wording& wording) {
  if (!message.details || !message.details->quote) return std::nullopt;
  const ArchiveQuote& quote = *message.details->quote;
  const std::string words = quotedWords(quote, wording);
  const std::string name = quote.isOwner ? wording.nameInside({.isOwner = true}) : quote.name;
  if (name.empty()) return wording.say(section, "inReply", {{"words", words}});
  return wording.say(section, "inReplyTo", {{"name", name}, {"words", words}});
}

std::vector<std::string> TranscriptDetails::pollOptions(const ArchiveMessage& message, const Wording& wording) {
  if (message.kind() != ArchiveKind::poll) return {};
  std::vector<std::string> options;
  for (const MessageInfo::Choice& choice : MessageInfo::choices(message.details->info)) {
    options.push_back(wording.option(choice.words, choice.names));
  }
  return options;
}

std::string TranscriptDetails::reactions(const ArchiveMessage& message, const Wording& wording) {
  if (!message.details) return {};
  std::vector<std::string> words;
  for (const ArchiveReaction& reaction : message.details->reactions) words.push_back(reactionWords(reaction, wording));
  return fmt::format("{}", fmt::join(words, ", "));
}

std::optional<TranscriptDetails::Link> TranscriptDetails::link(const ArchiveMessage& message) {
  const auto preview = message.details ? MessageInfo::link(message.details->info) : std::nullopt;
  if (!preview) return std::nullopt;
  const auto& said = preview->title ? preview->title : preview->summary;
  const bool isInText = message.text && message.text->find(preview->url) != std::string::npos;
  if (!said && isInText) return std::nullopt;
  return Link{.words = said.value_or(preview->url), .address = preview->url};
}

std::optional<TranscriptDetails::Link> TranscriptDetails::map(const ArchiveMessage& message, const Wording& wording) {
  if (message.kind() != ArchiveKind::place) return std::nullopt;
  const auto place = MessageInfo::coordinates(message.details->info);
  if (!place) return std::nullopt;
  return Link{.words = wording.say(section, "map"),
              .address = fmt::format("https://www.openstreetmap.org/?mlat={0:.6f}&mlon={1:.6f}#map=16/{0:.6f}/{1:.6f}",
                                     place->latitude, place->longitude)};
}

bool TranscriptDetails::mayLead(std::string_view address) {
  constexpr std::array<std::string_view, 5> schemes{"https:", "http:", "mailto:", "tel:", "geo:"};
  const std::string lower = Text::lowercased(address.substr(0, address.find(':') + 1));
  return std::ranges::find(schemes, lower) != schemes.end();
}
