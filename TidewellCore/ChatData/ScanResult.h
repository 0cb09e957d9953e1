#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/Scope.h"
#include "TidewellCore/MediaKind.h"

struct MediaTypeStats {
  std::int64_t count = 0;
  std::int64_t byteCount = 0;

  void add(std::int64_t bytes);

  bool operator==(const MediaTypeStats&) const = default;
};

// A chat as people see it, whatever records WhatsApp keeps of it.
struct ScanChat {
  std::string jid;  // canonical, or UnknownChatJID
  std::string name;
  std::int64_t messageCount = 0;
  std::int64_t mediaFileCount = 0;
  std::int64_t mediaBytes = 0;
  std::map<MediaKind, MediaTypeStats> statsByKind;

  // Of the media of these kinds.
  MediaTypeStats stats(const MediaKinds& kinds) const;
  const std::string& id() const { return jid; }

  bool operator==(const ScanChat&) const = default;
};

// What a backup holds, shown before an export. Sizes are in bytes, as recorded.
struct ScanResult {
  std::int64_t chatCount = 0;
  std::int64_t mediaFileCount = 0;
  std::int64_t totalBytes = 0;
  std::map<MediaKind, MediaTypeStats> statsByKind;
  std::int64_t skippedThumbnailCount = 0;
  bool hasChatStorage = false;
  std::string whatsAppDomain;
  std::vector<ScanChat> chats;        // by name, then by JID
  std::vector<std::string> warnings;  // what may be missing: sentences for people, in English

  std::int64_t count(const MediaKinds& kinds) const;
  std::int64_t bytes(const MediaKinds& kinds) const;

  bool operator==(const ScanResult&) const = default;
};

namespace ScanSummary {

// Of what is in the scope. `locale` orders the names of the chats.
ScanResult summarize(const BackupSource& source, const Scope& scope, const Locale& locale);

// One row for each chat that has messages, media or both in the scope.
std::vector<ScanChat> scanChats(const BackupSource& source, const Scope& scope, const Locale& locale);

}  // namespace ScanSummary
