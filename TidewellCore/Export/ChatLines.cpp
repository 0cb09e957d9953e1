#include "TidewellCore/Export/ChatLines.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

constexpr double beforeAll = -std::numeric_limits<double>::infinity();

double sortDate(const MessageRecord* message) { return message->date ? unixTime(*message->date) : beforeAll; }

std::optional<ArchiveMedia> mediaOf(const MessageRecord& message, const MediaLinks& links) {
  if (!message.mediaLocalPath) return std::nullopt;
  const std::string& path = *message.mediaLocalPath;
  ArchiveMedia media{.kind = MediaKind::classify(PathText::extension(path)), .relativePath = links.relativePath(path)};
  media.exported = media.relativePath.has_value();
  media.fileName = PathText::lastComponent(media.relativePath.value_or(path));
  return media;
}

ArchiveMessage archiveMessage(const MessageRecord& message, std::string sender, const MediaLinks& links) {
  return {.id = std::to_string(message.pk),
          .fromMe = message.isFromMe,
          .sender = std::move(sender),
          .timestamp = message.date ? std::optional(unixTime(*message.date)) : std::nullopt,
          .text = message.text && !message.text->empty() ? message.text : std::nullopt,
          .media = mediaOf(message, links)};
}

// A file stands in the chat's own folder, unless two chats share it.
std::string fromFolder(const std::string& folder, const std::string& relativePath) {
  const std::string prefix = folder + "/";
  return relativePath.starts_with(prefix) ? relativePath.substr(prefix.size()) : "../" + relativePath;
}

}  // namespace

// Messages whose chat has no record, or a record without a JID, belong to no chat that can be told.
ChatLines::ChatLines(const ChatStorageSnapshot& snapshot) : snapshot_(snapshot) {
  const std::string unknown(UnknownChatJID);
  for (const auto& [jid, keys] : snapshot.chatPKsByCanonicalJID) {
    RecordKeys& all = recordsByJID_[jid.empty() ? unknown : jid];
    all.insert(all.end(), keys.begin(), keys.end());
  }
  for (const auto& [key, messages] : snapshot.messagesByChat) {
    if (!snapshot.chats.contains(key)) recordsByJID_[unknown].push_back(key);
  }
  if (const auto keys = recordsByJID_.find(unknown); keys != recordsByJID_.end()) std::ranges::sort(keys->second);
}

std::vector<ArchiveChat> ChatLines::chats(const FolderAssignment& folders) const {
  FolderAssignment all = folders;
  for (const auto& [jid, keys] : recordsByJID_) all.emplace(jid, "");
  std::vector<ArchiveChat> chats;
  for (const auto& [jid, folder] : all) {
    chats.push_back({.name = snapshot_.chatTitle(jid), .jid = jid, .folder = folder, .isGroup = JID::isGroup(jid)});
  }
  ChatArchiveWriter::giveIDs(chats);
  std::ranges::stable_sort(chats, std::greater(), [this](const ArchiveChat& chat) { return newestDate(chat.jid); });
  return chats;
}

std::vector<std::string> ChatLines::chatsWithMessages() const {
  std::vector<std::string> jids;
  for (const auto& [jid, keys] : recordsByJID_) {
    const auto hasMessages = [&](std::int64_t key) { return messagesOf(key) != nullptr; };
    if (std::ranges::any_of(keys, hasMessages)) jids.push_back(jid);
  }
  return jids;
}

std::vector<ArchiveMessage> ChatLines::messages(const std::string& jid, const MediaLinks& links,
                                                const TranscriptStyle& style) const {
  const auto keys = recordsByJID_.find(jid);
  if (keys == recordsByJID_.end()) return {};
  std::vector<ArchiveMessage> messages;
  for (const MessageRecord* message : inOneRow(keys->second)) {
    const auto found = snapshot_.chats.find(message->chatPK.value_or(0));
    const ChatRecord* record = found == snapshot_.chats.end() ? nullptr : &found->second;
    messages.push_back(archiveMessage(*message, snapshot_.senderName(*message, record, style), links));
  }
  return messages;
}

const std::vector<MessageRecord>* ChatLines::messagesOf(std::int64_t key) const {
  const auto found = snapshot_.messagesByChat.find(key);
  return found == snapshot_.messagesByChat.end() ? nullptr : &found->second;
}

double ChatLines::newestDate(const std::string& jid) const {
  const auto keys = recordsByJID_.find(jid);
  double newest = beforeAll;
  if (keys == recordsByJID_.end()) return newest;
  for (const std::int64_t key : keys->second) {
    const auto* messages = messagesOf(key);
    if (messages != nullptr) newest = std::max(newest, sortDate(&messages->back()));
  }
  return newest;
}

std::vector<const MessageRecord*> ChatLines::inOneRow(const RecordKeys& keys) const {
  std::vector<const MessageRecord*> row;
  for (const std::int64_t key : keys) {
    const auto* messages = messagesOf(key);
    if (messages == nullptr) continue;
    for (const MessageRecord& message : *messages) row.push_back(&message);
  }
  // The messages of a single record are in order already.
  if (keys.size() > 1) std::ranges::stable_sort(row, {}, sortDate);
  return row;
}

std::vector<TranscriptWriter::Line> ChatLines::transcriptLines(const ArchiveChat& chat) {
  std::vector<TranscriptWriter::Line> lines;
  lines.reserve(chat.messages.size());
  for (const ArchiveMessage& message : chat.messages) {
    TranscriptWriter::Line line{.sender = message.sender, .text = message.text};
    if (message.timestamp) line.date = dateFromUnixTime(*message.timestamp);
    if (message.media) {
      line.mediaKind = message.media->kind;
      if (message.media->relativePath) line.mediaFileName = fromFolder(chat.folder, *message.media->relativePath);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}
