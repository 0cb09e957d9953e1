#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

// Backups as phones in use leave them: the messages of all chats lie mixed in the order in which they came, the newest
// quarter in the journal, and the paths of media begin alike.
namespace PhoneData {

struct Chats {
  int messages = 1'000'000;
  int chats = 807;
  int messagesToAMedium = 5;  // every fifth message has one
};

// How fast a password is to be tried; the quick ones are for work that is not about unlocking.
struct Rounds {
  std::uint32_t first = 10;
  std::uint32_t second = 100;
};

struct Backup {
  Chats chats;
  std::size_t bytesOfAMedium = 0;  // 0: the backup has none of them
  bool isEncrypted = false;        // with `password`
  Rounds rounds;
  int filesOfOtherApps = 0;  // that the index lists
};

inline constexpr const char* password = "correct horse";

// ChatStorage.sqlite, and its journal beside it.
void writeChats(const Chats& chats, const std::filesystem::path& database);

// Takes as much memory as the media.
void writeBackup(const Backup& backup, const std::filesystem::path& folder);

// What SQLite alone takes to hand over what is read of messages and their media.
void scanMessages(const std::filesystem::path& database);

}  // namespace PhoneData
