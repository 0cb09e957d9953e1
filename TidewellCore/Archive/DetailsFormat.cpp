#include "TidewellCore/Archive/DetailsFormat.h"

#include <algorithm>

#include "TidewellCore/Platform/JSONMembers.h"

namespace {

using JSONMembers::member;
using JSONMembers::textOf;
using JSONMembers::textsOf;
using JSONMembers::valueOf;

// All that one list tells: what the phone marked, and what became of the message there.
struct Marks : MessageMarks {
  bool isDeletedLater = false;
  bool isGone = false;
};

struct Mark {
  std::string_view name;
  bool Marks::*isSet;
};

constexpr std::array knownMarks{Mark{"deletedLater", &Marks::isDeletedLater},
                                Mark{"forwarded", &Marks::isForwarded},
                                Mark{"gif", &Marks::isGIF},
                                Mark{"gone", &Marks::isGone},
                                Mark{"round", &Marks::isRound},
                                Mark{"starred", &Marks::isStarred},
                                Mark{"viewOnce", &Marks::isViewOnce}};

Json::Object json(const ArchiveQuote& quote) {
  Json::Object json{
      {"me", quote.isOwner}, {"name", quote.name}, {"part", rawValue(quote.part)}, {"thing", quote.words}};
  if (quote.toID) json.emplace("to", *quote.toID);
  return json;
}

// The count says itself where everybody has a name.
Json::Object json(const ArchiveReaction& reaction) {
  Json::Object json{{"emoji", reaction.emoji}, {"names", Json::Array(reaction.names.begin(), reaction.names.end())}};
  const auto named = static_cast<std::int64_t>(reaction.names.size());
  if (reaction.count != named) json.emplace("count", reaction.count);
  return json;
}

Json::Array json(const std::vector<ArchiveReaction>& reactions) {
  Json::Array list;
  for (const ArchiveReaction& reaction : reactions) list.emplace_back(json(reaction));
  return list;
}

Marks marksOf(const std::vector<std::string>& names) {
  Marks set;
  for (const Mark& mark : knownMarks) set.*mark.isSet = std::ranges::find(names, mark.name) != names.end();
  return set;
}

ArchiveQuote quoteOf(const Json::Object& json) {
  return {.isOwner = valueOf<bool>(json, "me"),
          .name = valueOf<std::string>(json, "name"),
          .part = fromRawValue<MessagePart>(valueOf<std::string>(json, "part")).value_or(MessagePart::text),
          .words = valueOf<std::string>(json, "thing"),
          .toID = textOf(json, "to")};
}

std::vector<ArchiveReaction> reactionsOf(const Json::Array& list) {
  std::vector<ArchiveReaction> reactions;
  for (const Json& entry : list) {
    const auto* json = entry.as<Json::Object>();
    if (json == nullptr) continue;
    ArchiveReaction reaction{.emoji = valueOf<std::string>(*json, "emoji"), .names = textsOf(*json, "names")};
    const auto* count = member<std::int64_t>(*json, "count");
    reaction.count = count ? *count : static_cast<std::int64_t>(reaction.names.size());
    reactions.push_back(std::move(reaction));
  }
  return reactions;
}

std::map<std::string, std::string> mentionsOf(const Json::Object& json) {
  std::map<std::string, std::string> mentions;
  for (const auto& [digits, name] : json) {
    if (const auto* text = name.as<std::string>()) mentions.emplace(digits, *text);
  }
  return mentions;
}

void writeDetails(const ArchiveDetails& details, Json::Object& message) {
  if (details.kind != ArchiveKind::none) message.emplace("kind", rawValue(details.kind));
  if (!details.info.empty()) message.emplace("info", details.info);
  if (!details.mentions.empty()) {
    message.emplace("mentions", Json::Object(details.mentions.begin(), details.mentions.end()));
  }
  if (details.quote) message.emplace("quote", json(*details.quote));
  if (!details.reactions.empty()) message.emplace("reactions", json(details.reactions));
}

ArchiveDetails detailsOf(const Json::Object& message, const MessageMarks& set) {
  const auto* quote = member<Json::Object>(message, "quote");
  return {.kind = fromRawValue<ArchiveKind>(valueOf<std::string>(message, "kind")).value_or(ArchiveKind::none),
          .info = valueOf<Json::Object>(message, "info"),
          .marks = set,
          .mentions = mentionsOf(valueOf<Json::Object>(message, "mentions")),
          .quote = quote ? std::optional(quoteOf(*quote)) : std::nullopt,
          .reactions = reactionsOf(valueOf<Json::Array>(message, "reactions"))};
}

}  // namespace

std::vector<std::string_view> DetailsFormat::marks(const ArchiveMessage& message) {
  const Marks set{message.details ? message.details->marks : MessageMarks(), message.isDeletedLater, message.isGone};
  std::vector<std::string_view> names;
  for (const Mark& mark : knownMarks) {
    if (set.*mark.isSet) names.push_back(mark.name);
  }
  return names;
}

void DetailsFormat::write(const ArchiveMessage& message, Json::Object& json) {
  if (message.details) writeDetails(*message.details, json);
  const std::vector<std::string_view> names = marks(message);
  if (!names.empty()) json.emplace("marks", Json::Array(names.begin(), names.end()));
}

void DetailsFormat::read(const Json::Object& json, ArchiveMessage& message) {
  const Marks set = marksOf(textsOf(json, "marks"));
  message.isDeletedLater = set.isDeletedLater;
  message.isGone = set.isGone;
  ArchiveDetails details = detailsOf(json, set);
  if (details != ArchiveDetails()) message.details = std::move(details);
}
