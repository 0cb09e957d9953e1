#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Tests/Support/BackupContents.h"

namespace Fixture {

struct SampleOptions {
  std::uint64_t seed = 1;
  // Of 1,000 or more, with 100 media or more, the newest ones are scripted talks.
  std::size_t messageCount = 4000;
  // Media files that messages carry; a few without a message come on top.
  std::size_t mediaCount = 400;
  // Files that open and play, and drawn profile pictures. They take some seconds and the program
  // ffmpeg; without, clips and documents are noise behind the right first bytes.
  bool playableMedia = false;
  // A message of the distant past and one of the distant future.
  bool sentinelDates = true;
  std::optional<Encryption> encryption;
};

// A believable phone: 41 chats in several languages and scripts, some years of messages and media,
// and the oddities that real backups show: equal names, names that are none, one person under two
// identifiers, media without a message or a chat, ties and sentinels among the dates, and messages
// of every kind.
BackupContents sampleBackup(const SampleOptions& options = {});

}  // namespace Fixture
