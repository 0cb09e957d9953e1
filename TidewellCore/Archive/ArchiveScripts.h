#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/MessageLine.h"

// The archive's data files as texts. Those with messages are gone through message
// by message, so that only one is built into values; what a change does not touch
// keeps its bytes.
namespace ArchiveScripts {

// The chat list, "chats.js".
std::string list(const ArchiveFormat::Description& archive, const std::vector<ArchiveChatSummary>& chats);
// The chats of such a list; empty when it cannot be read.
std::vector<ArchiveChatSummary> chats(std::string_view list);
// The blocks of such a list, in their order; none when it has none, or their lines have a form that is not known.
struct Blocks {
  MessageLine::Form form = MessageLine::Form::columns;
  std::vector<ArchiveBlock> list;
};
Blocks blocks(std::string_view list);
// The list with its changes. Blocks come before the chats, and not at all when
// their lines have a form that is not known.
struct ListChange {
  std::function<void(ArchiveBlock&, MessageLine::Form)> block;
  ArchiveFormat::Change<ArchiveChatSummary> chat;
};
std::string changedList(std::string list, const ListChange& change);

// The name of a chat's data file.
std::string chatFileName(std::string_view id);
// What its text begins and ends with; between them stand the messages, parted by commas.
inline constexpr std::string_view chatOpening = "window.__CHAT_PAYLOAD = {\"messages\":[";
inline constexpr std::string_view chatClosing = "]};\n";
// Those of the data files that a chat has or had.
bool isChatFileName(std::string_view name);
// A chat's data file with its changes; absent when nothing changes.
std::optional<std::string> changedChat(std::string_view script, const ArchiveFormat::Change<ArchiveMessage>& change);

// The script of a block around its lines, and the lines of such a script;
// empty when it is none.
std::string block(std::string_view lines);
std::string_view lines(std::string_view block);
void forEachLine(std::string_view block, const std::function<void(std::string_view line)>& visit);
// A block with its changes; absent when nothing changes.
std::optional<std::string> changedBlock(std::string_view script, MessageLine::Form form,
                                        const ArchiveFormat::Change<ArchiveMessage>& change);

}  // namespace ArchiveScripts
