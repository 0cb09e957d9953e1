#include "TidewellCore/Archive/ArchiveFormat.h"

#include <algorithm>
#include <cmath>

#include "TidewellCore/Archive/DetailsFormat.h"
#include "TidewellCore/Archive/MessageLine.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using JSONMembers::member;
using JSONMembers::textOf;
using JSONMembers::valueOf;
using ReadableText::cleaned;

// Browsers know dates up to 100,000,000 days from 1970 (ECMA-262, "Time Values and Time Range").
std::int64_t wholeSeconds(double timestamp) {
  constexpr double latest = 8'640'000'000'000;
  return std::llround(std::clamp(timestamp, -latest, latest));
}

Json::Object json(const ArchiveMedia& media) {
  Json::Object json{{"exported", media.exported}, {"kind", media.kind.rawValue()}};
  if (media.relativePath) json.emplace("path", *media.relativePath);
  if (media.fileName) json.emplace("name", cleaned(*media.fileName));
  return json;
}

std::optional<double> timeOf(const Json::Object& json, std::string_view name) {
  if (const auto* seconds = member<std::int64_t>(json, name)) return static_cast<double>(*seconds);
  const auto* seconds = member<double>(json, name);
  return seconds ? std::optional(*seconds) : std::nullopt;
}

ArchiveMedia media(const Json::Object& json) {
  return {.kind = MediaKind::fromRawValue(valueOf<std::string>(json, "kind")).value_or(MediaKind::documents),
          .relativePath = textOf(json, "path"),
          .fileName = textOf(json, "name"),
          .exported = valueOf<bool>(json, "exported")};
}

std::optional<ArchiveBlock::Part> part(const Json& json) {
  const auto* items = json.as<Json::Array>();
  if (items == nullptr || items->size() != 3) return std::nullopt;
  const auto* id = (*items)[0].as<std::string>();
  const auto* first = (*items)[1].as<std::int64_t>();
  const auto* count = (*items)[2].as<std::int64_t>();
  if (id == nullptr || first == nullptr || count == nullptr) return std::nullopt;
  return ArchiveBlock::Part{.chatID = *id, .firstMessage = *first, .count = *count};
}

// `original` with the differences between two states of what is known of it.
Json::Object merged(Json::Object original, const Json::Object& before, const Json::Object& after) {
  for (const auto& [name, value] : before) {
    if (!after.contains(name)) original.erase(name);
  }
  for (const auto& [name, value] : after) {
    const auto former = before.find(name);
    if (former != before.end() && former->second == value) continue;
    const auto* inner = value.as<Json::Object>();
    const auto* formerInner = member<Json::Object>(before, name);
    const auto* originalInner = member<Json::Object>(original, name);
    const bool isKept = inner != nullptr && formerInner != nullptr && originalInner != nullptr;
    original[name] = isKept ? Json(merged(*originalInner, *formerInner, *inner)) : value;
  }
  return original;
}

template <typename Record>
std::optional<Json::Object> changedRecord(const Json::Object& original, const Record& before,
                                          const ArchiveFormat::Change<Record>& change) {
  Record after = before;
  change(after);
  if (after == before) return std::nullopt;
  return merged(original, ArchiveFormat::json(before), ArchiveFormat::json(after));
}

}  // namespace

Json::Object ArchiveFormat::json(const ArchiveMessage& message) {
  Json::Object json{{"id", message.id}, {"me", message.fromMe}, {"sender", cleaned(message.sender)}};
  if (message.timestamp) json.emplace("ts", wholeSeconds(*message.timestamp));
  if (message.text && !message.text->empty()) json.emplace("text", cleaned(*message.text));
  if (message.media) json.emplace("media", ::json(*message.media));
  DetailsFormat::write(message, json);
  return json;
}

Json::Object ArchiveFormat::json(const ArchiveChatSummary& chat) {
  Json::Object json{
      {"id", chat.id},         {"name", cleaned(chat.name)}, {"jid", cleaned(chat.jid)},   {"folder", chat.folder},
      {"group", chat.isGroup}, {"preview", chat.preview},    {"count", chat.messageCount}, {"file", chat.dataFile}};
  if (chat.lastTimestamp) json.emplace("lastTs", wholeSeconds(*chat.lastTimestamp));
  if (chat.avatarRelativePath) json.emplace("avatar", *chat.avatarRelativePath);
  if (chat.isGone) json.emplace("gone", true);
  return json;
}

Json::Object ArchiveFormat::json(const ArchiveBlock& block) {
  Json::Array chats;
  for (const ArchiveBlock::Part& part : block.parts) {
    chats.emplace_back(Json::Array{part.chatID, part.firstMessage, part.count});
  }
  return {{"file", block.file}, {"chats", std::move(chats)}};
}

Json::Object ArchiveFormat::json(const Description& archive) {
  Json::Array blocks;
  for (const ArchiveBlock& block : archive.blocks) blocks.emplace_back(json(block));
  Json::Object json{{"blocks", std::move(blocks)},
                    {"format", static_cast<std::int64_t>(MessageLine::Form::columns)},
                    {"strings", Json::Object(archive.strings.begin(), archive.strings.end())},
                    {"timeZone", archive.timeZone},
                    {"title", archive.title}};
  if (!archive.region.empty()) json.emplace("region", archive.region);
  return json;
}

ArchiveMessage ArchiveFormat::message(const Json::Object& json) {
  const auto* medium = member<Json::Object>(json, "media");
  ArchiveMessage message{.id = valueOf<std::string>(json, "id"),
                         .fromMe = valueOf<bool>(json, "me"),
                         .sender = valueOf<std::string>(json, "sender"),
                         .timestamp = timeOf(json, "ts"),
                         .text = textOf(json, "text"),
                         .media = medium ? std::optional(media(*medium)) : std::nullopt};
  DetailsFormat::read(json, message);
  return message;
}

ArchiveChatSummary ArchiveFormat::chatSummary(const Json::Object& json) {
  return {.id = valueOf<std::string>(json, "id"),
          .name = valueOf<std::string>(json, "name"),
          .jid = valueOf<std::string>(json, "jid"),
          .folder = valueOf<std::string>(json, "folder"),
          .dataFile = valueOf<std::string>(json, "file"),
          .isGroup = valueOf<bool>(json, "group"),
          .preview = valueOf<std::string>(json, "preview"),
          .messageCount = valueOf<std::int64_t>(json, "count"),
          .lastTimestamp = timeOf(json, "lastTs"),
          .avatarRelativePath = textOf(json, "avatar"),
          .isGone = valueOf<bool>(json, "gone")};
}

ArchiveBlock ArchiveFormat::block(const Json::Object& json) {
  ArchiveBlock block{.file = valueOf<std::string>(json, "file"), .parts = {}};
  for (const Json& chat : valueOf<Json::Array>(json, "chats")) {
    if (auto found = part(chat)) block.parts.push_back(std::move(*found));
  }
  return block;
}

bool ArchiveFormat::mayNameFile(std::string_view message) { return message.find("\"path\"") != std::string_view::npos; }

std::optional<Json::Object> ArchiveFormat::changed(const Json::Object& json, const Change<ArchiveMessage>& change) {
  return changedRecord(json, message(json), change);
}

std::optional<Json::Object> ArchiveFormat::changed(const Json::Object& json, const Change<ArchiveChatSummary>& change) {
  return changedRecord(json, chatSummary(json), change);
}

std::optional<Json::Object> ArchiveFormat::changed(const Json::Object& json, const Change<ArchiveBlock>& change) {
  return changedRecord(json, block(json), change);
}
