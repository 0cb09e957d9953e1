#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the archive's directory says of a block: its file, and the parts of chats
// that it holds, one after another.
struct ArchiveBlock {
  struct Part {
    std::string chatID;
    std::int64_t firstMessage = 0;  // its index in its chat
    std::int64_t count = 0;

    bool operator==(const Part&) const = default;
  };

  std::string file;
  std::vector<Part> parts;

  bool operator==(const ArchiveBlock&) const = default;
};
