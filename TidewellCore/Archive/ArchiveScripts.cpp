#include "TidewellCore/Archive/ArchiveScripts.h"

#include <algorithm>

#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/JSONText.h"
#include "TidewellCore/Platform/JSONMembers.h"

namespace {

constexpr const char* archiveMember = "ARCHIVE";
constexpr const char* chatsMember = "CHATS";
constexpr std::string_view chatPrefix = "chat-";
constexpr std::string_view ending = ".js";
constexpr std::string_view blockOpening = "window.__BLOCK_PAYLOAD = String.raw`";
constexpr std::string_view blockClosing = "`;\n";

using Visit = std::function<void(std::string_view part)>;

// The text with what `change` makes of its parts, which `forEachPart` visits in
// their order; absent when it makes nothing of any.
template <typename ForEachPart, typename Change>
std::optional<std::string> changedParts(std::string_view text, ForEachPart forEachPart, Change change) {
  std::string result;
  std::size_t done = 0;
  forEachPart([&](std::string_view part) {
    const std::optional<std::string> newPart = change(part);
    if (!newPart) return;
    if (done == 0) result.reserve(text.size() + newPart->size());
    const auto begin = static_cast<std::size_t>(part.data() - text.data());
    result.append(text.substr(done, begin - done)).append(*newPart);
    done = begin + part.size();
  });
  if (done == 0) return std::nullopt;
  return result.append(text.substr(done));
}

// Every object of the list with what `change` makes of it, all else as it is.
template <typename Record>
Json::Array changedItems(const Json::Array& items, const ArchiveFormat::Change<Record>& change) {
  Json::Array newItems;
  for (const Json& item : items) {
    const auto* object = item.as<Json::Object>();
    auto newItem = object ? ArchiveFormat::changed(*object, change) : std::nullopt;
    newItems.push_back(newItem ? Json(std::move(*newItem)) : item);
  }
  return newItems;
}

// The list with another value of a member that can be read, when it is another.
template <typename ChangeValue>
std::string withValue(std::string list, const char* identifier, ChangeValue change) {
  const std::string_view value = ChatArchiveJSON::assignedValue(list, identifier);
  const std::optional<Json> json = Json::parse(value);
  if (!json) return list;
  const Json newJson = change(*json);
  if (newJson == *json) return list;
  const auto begin = static_cast<std::size_t>(value.data() - list.data());
  return list.replace(begin, value.size(), ChatArchiveJSON::stringify(newJson));
}

Json changedArchive(const Json& json, const ArchiveScripts::ListChange& change) {
  const auto* archive = json.as<Json::Object>();
  const auto* blocks = archive ? JSONMembers::member<Json::Array>(*archive, "blocks") : nullptr;
  const auto form = blocks ? MessageLine::form(*archive) : std::nullopt;
  if (!form) return json;
  const ArchiveFormat::Change<ArchiveBlock> changeBlock = [&](ArchiveBlock& block) { change.block(block, *form); };
  Json::Object newArchive = *archive;
  newArchive["blocks"] = changedItems(*blocks, changeBlock);
  return newArchive;
}

}  // namespace

std::string ArchiveScripts::list(const ArchiveFormat::Description& archive,
                                 const std::vector<ArchiveChatSummary>& chats) {
  Json::Array list;
  for (const ArchiveChatSummary& chat : chats) list.emplace_back(ArchiveFormat::json(chat));
  return ChatArchiveJSON::assignment(archiveMember, ArchiveFormat::json(archive)) +
         ChatArchiveJSON::assignment(chatsMember, std::move(list));
}

std::vector<ArchiveChatSummary> ArchiveScripts::chats(std::string_view list) {
  const std::optional<Json> json = ChatArchiveJSON::parseAssignment(list, chatsMember);
  const auto* items = json ? json->as<Json::Array>() : nullptr;
  std::vector<ArchiveChatSummary> chats;
  if (items == nullptr) return chats;
  for (const Json& item : *items) {
    if (const auto* object = item.as<Json::Object>()) chats.push_back(ArchiveFormat::chatSummary(*object));
  }
  return chats;
}

ArchiveScripts::Blocks ArchiveScripts::blocks(std::string_view list) {
  const std::optional<Json> json = ChatArchiveJSON::parseAssignment(list, archiveMember);
  const auto* archive = json ? json->as<Json::Object>() : nullptr;
  const auto form = archive ? MessageLine::form(*archive) : std::nullopt;
  Blocks blocks;
  if (!form) return blocks;
  blocks.form = *form;
  for (const Json& item : JSONMembers::valueOf<Json::Array>(*archive, "blocks")) {
    if (const auto* block = item.as<Json::Object>()) blocks.list.push_back(ArchiveFormat::block(*block));
  }
  return blocks;
}

std::string ArchiveScripts::changedList(std::string list, const ListChange& change) {
  list =
      withValue(std::move(list), archiveMember, [&](const Json& archive) { return changedArchive(archive, change); });
  return withValue(std::move(list), chatsMember, [&](const Json& chats) {
    const auto* items = chats.as<Json::Array>();
    return items ? Json(changedItems(*items, change.chat)) : chats;
  });
}

std::string ArchiveScripts::chatFileName(std::string_view id) {
  return std::string(chatPrefix).append(id).append(ending);
}

bool ArchiveScripts::isChatFileName(std::string_view name) {
  return name.starts_with(chatPrefix) && name.ends_with(ending);
}

std::optional<std::string> ArchiveScripts::changedChat(std::string_view script,
                                                       const ArchiveFormat::Change<ArchiveMessage>& change) {
  const std::string_view payload = ChatArchiveJSON::assignedValue(script, "__CHAT_PAYLOAD");
  const std::string_view messages = JSONText::member(payload, "\"messages\"");
  return changedParts(
      script, [&](const Visit& visit) { JSONText::forEachElement(messages, visit); },
      [&](std::string_view element) -> std::optional<std::string> {
        if (!ArchiveFormat::mayNameFile(element)) return std::nullopt;
        const std::optional<Json> json = Json::parse(element);
        const auto* message = json ? json->as<Json::Object>() : nullptr;
        const auto newMessage = message ? ArchiveFormat::changed(*message, change) : std::nullopt;
        return newMessage ? std::optional(ChatArchiveJSON::stringify(*newMessage)) : std::nullopt;
      });
}

std::string ArchiveScripts::block(std::string_view lines) {
  return std::string(blockOpening).append(lines).append(blockClosing);
}

std::string_view ArchiveScripts::lines(std::string_view block) {
  if (block.size() < blockOpening.size() + blockClosing.size()) return {};
  if (!block.starts_with(blockOpening) || !block.ends_with(blockClosing)) return {};
  return block.substr(blockOpening.size(), block.size() - blockOpening.size() - blockClosing.size());
}

void ArchiveScripts::forEachLine(std::string_view block, const Visit& visit) {
  std::string_view text = lines(block);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    visit(line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

std::optional<std::string> ArchiveScripts::changedBlock(std::string_view script, MessageLine::Form form,
                                                        const ArchiveFormat::Change<ArchiveMessage>& change) {
  return changedParts(
      script, [&](const Visit& visit) { forEachLine(script, visit); },
      [&](std::string_view line) -> std::optional<std::string> {
        const auto message = ArchiveFormat::mayNameFile(line) ? MessageLine::message(line, form) : std::nullopt;
        auto newMessage = message ? ArchiveFormat::changed(*message, change) : std::nullopt;
        if (!newMessage) return std::nullopt;
        std::string newLine;
        MessageLine::append(newLine, std::move(*newMessage), form);
        return newLine;
      });
}
