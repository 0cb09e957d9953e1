#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// A file as it was written.
struct RenderedFile {
  std::int64_t size = 0;  // bytes
  std::string digest;     // SHA-256 of its content, in Base64

  // What a file of that content is.
  static RenderedFile of(std::string_view content);

  bool operator==(const RenderedFile&) const = default;
};
using RenderedFiles = std::map<std::string, RenderedFile>;  // by their names

// The pages that were made of a chat: what of, and what stands since.
struct ChatRendering {
  std::int64_t changed = 0;  // KeptChat::changed of that time
  Bytes manner;              // a digest of all that shapes the pages beside the chat
  std::string folder;        // in the content root; empty when the chat has none
  RenderedFiles files;       // the chat's own: its data file, and those in its folder
  std::int64_t shelf = 0;    // that has its messages among those of others
  std::int64_t messageCount = 0;
  std::string preview;                       // a line that tells of the last message
  std::optional<double> lastTimestamp;       // of the last dated message, in seconds since 1970
  std::map<MediaKind, std::int64_t> absent;  // how many messages have a file that is not in the export

  bool operator==(const ChatRendering&) const = default;
};

// A file with lines of messages, in parts, each of one chat.
struct RenderedBlock {
  struct Part {
    std::string page;               // the chat's page ID
    std::int64_t firstMessage = 0;  // its index in its chat
    std::int64_t count = 0;

    bool operator==(const Part&) const = default;
  };

  std::string file;       // its name
  std::int64_t size = 0;  // bytes
  std::vector<Part> parts;

  bool operator==(const RenderedBlock&) const = default;
};

// What a library knows of the pages that were made from it, so that those of a chat that did not
// change need not be made again. It is a memory of what was done and no more: without it all is made.
struct Renderings {
  std::map<std::int64_t, ChatRendering> chats;                 // by KeptChat::id
  std::map<std::int64_t, std::vector<RenderedBlock>> shelves;  // the blocks of each, in their order

  // What does not read as it was written is left out.
  static Renderings load(const SQLiteDB& database);
  // Writes what is new, in the caller's transaction.
  void save(const SQLiteDB& database) const;
  // From now on no chat's pages are known to be right. Which shelves they stand on stays known.
  void doubt();
  // The same of some chats, in the database and in the caller's transaction.
  static void doubt(const SQLiteDB& database, const std::vector<std::int64_t>& chats);
  // Forgets all of them, in the caller's transaction.
  static void forget(const SQLiteDB& database);

  bool operator==(const Renderings&) const = default;
};
