#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Tests/Support/BackupContents.h"

namespace Fixture {

struct SampleOptions {
  std::uint64_t seed = 1;
  std::size_t messageCount = 4000;
  // Media files that messages carry; a few without a message come on top.
  std::size_t mediaCount = 400;
  std::optional<Encryption> encryption;
};

// A believable phone: 40 chats in several languages and scripts, some years of messages and media,
// and the oddities that real backups show: equal names, names that are none, one person under two
// identifiers, media without a message or a chat, ties and sentinels among the dates.
BackupContents sampleBackup(const SampleOptions& options = {});

}  // namespace Fixture
