#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/ArchiveChatSummary.h"
#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/TranscriptStyle.h"

// Writes the Chat Archive: a page that opens in any browser without a server,
// and its data as scripts (docs/formats/chat-archive.md). Chats are written one
// after another, so that only one need be in memory. Every file appears whole;
// the page comes last. Failures are those of the file system.
class ChatArchiveWriter {
 public:
  // Where an archive stands, and how it speaks.
  struct Setting {
    std::filesystem::path destination;  // gets the page
    std::filesystem::path contentRoot;  // gets the rest: the destination, or a folder in it
    TranscriptStyle style;
    TimeZone timeZone;  // of the times that the page shows
  };

  explicit ChatArchiveWriter(Setting setting);

  // Writes the data file of a chat. Each chat has an ID of its own. One whose
  // data cannot be written stands in the chat list all the same.
  void add(const ArchiveChat& chat);
  // Writes the chat list, the viewer and the page, and returns the page. A page
  // of someone else's in its place is renamed.
  std::filesystem::path finish();

  // All of that, for chats that fit in memory together.
  static std::filesystem::path write(Setting setting, const std::vector<ArchiveChat>& chats);

  // The newest first, those without a date last; equal ones by name, as the
  // language of `style` orders them.
  static std::vector<ArchiveChatSummary> sortedByActivity(std::vector<ArchiveChatSummary> chats,
                                                          const TranscriptStyle& style);
  // A JID with "_" for all but ASCII letters, digits, "-", "_" and "."; for an
  // empty one "chat-" and the primary key, 0 when there is none.
  static std::string safeID(std::string_view jid, std::optional<std::int64_t> pk);
  // The safe ID of a JID in a form that every drive takes.
  static std::string pageID(const std::string& jid);

  static ArchiveChatSummary summary(const ArchiveChat& chat, const TranscriptStyle& style);
  // One line that tells of a chat's last message; empty without one.
  static std::string preview(const ArchiveMessage* message, const TranscriptStyle& style);
  // As ArchiveFormat has them.
  static Json::Object dictionary(const ArchiveChatSummary& chat);
  static Json::Object dictionary(const ArchiveMessage& message);

 private:
  std::filesystem::path dataFolder() const;
  void writeViewer() const;
  void writeChatList();

  Setting setting_;
  MessageBlocks blocks_;
  std::vector<ArchiveChatSummary> chats_;
};
