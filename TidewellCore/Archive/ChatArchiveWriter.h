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
#include "TidewellCore/Platform/FileBatch.h"
#include "TidewellCore/Platform/Files.h"
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
    Locale locale;      // of the dates in transcripts; its region says how the page writes them
    // Writes chats and blocks; what it keeps back has to be in place before the page is finished.
    FileWriter writeFile = Files::writeWhenDifferent;
  };

  explicit ChatArchiveWriter(Setting setting);

  // Lists a chat. Each has an ID of its own.
  void list(ArchiveChatSummary chat) { chats_.push_back(std::move(chat)); }
  // Writes the data file of a chat, and its lines. Returns the file.
  RenderedFile writeMessages(const ArchiveChat& chat);
  // Writes the lines of a chat alone, whose data file stands as it should.
  void writeLines(const ArchiveChat& chat);
  // Lists a chat and writes its messages. One whose data cannot be written is listed all the same.
  void add(const ArchiveChat& chat);
  // Where the lines go: the end of a shelf, and blocks that stay, are told there.
  MessageBlocks& blocks() { return blocks_; }
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

  static std::filesystem::path dataFolder(const std::filesystem::path& contentRoot);
  static ArchiveChatSummary summary(const ArchiveChat& chat, const TranscriptStyle& style);
  // One line that tells of a chat's last message; empty without one.
  static std::string preview(const ArchiveMessage* message, const TranscriptStyle& style);
  // As ArchiveFormat has them.
  static Json::Object dictionary(const ArchiveChatSummary& chat);
  static Json::Object dictionary(const ArchiveMessage& message);

 private:
  std::filesystem::path dataFolder() const { return dataFolder(setting_.contentRoot); }
  void writeViewer() const;
  void writeChatList();

  Setting setting_;
  MessageBlocks blocks_;
  std::vector<ArchiveChatSummary> chats_;
};
