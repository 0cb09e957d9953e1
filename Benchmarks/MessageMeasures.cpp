#include <fmt/format.h>

#include <algorithm>

#include "Benchmarks/Exports.h"
#include "Benchmarks/Measures.h"
#include "Benchmarks/PhoneData.h"
#include "Tests/Support/BackupBuilder.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t bytesOfAMessage = 400;
constexpr std::int64_t bytesOfTheRest = 30'000'000;  // this program, and SQLite's cache

// Those whose journal stands beside them, like a working copy; reading folds it in.
void copyChats(const fs::path& backup, const fs::path& copy) {
  for (const char* ending : {"", "-wal", "-shm"}) {
    const std::string name = std::string("ChatStorage.sqlite") + ending;
    const fs::path stored = Fixture::storedPath(backup, Fixture::fileIDOf(Fixture::consumerDomain, name));
    fs::remove(copy.native() + ending);
    if (fs::exists(stored)) fs::copy_file(stored, copy.native() + ending);
  }
}

}  // namespace

bool measureMessages(const Workshop& workshop) {
  const Sizes& sizes = workshop.sizes;
  const fs::path backup = workshop.folder / "backup";
  const fs::path copy = workshop.folder / "copy.sqlite";
  const fs::path destination = workshop.folder / "export";
  Measure::of([&] { PhoneData::writeBackup({.chats = {.messages = sizes.messages, .chats = sizes.chats}}, backup); });
  const std::string count = fmt::format("{} messages", sizes.messages);
  const auto scan = [&] { PhoneData::scanMessages(copy); };
  bool isReached = Measure::compare({.what = "Reading " + count,
                                     .reference = "SQLite's scan of them",
                                     .ours = [&] { ChatStorageSnapshot(ChatStorageReader::load(copy)); },
                                     .other = scan,
                                     .prepare = [&] { copyChats(backup, copy); },
                                     .limit = 2,
                                     .mostBytes = bytesOfTheRest + bytesOfAMessage * sizes.messages},
                                    workshop.rounds);
  Measure::of([&] { Exports::run(backup, workshop.folder / "measured"); });
  isReached = Measure::compare({.what = "Exporting " + count,
                                .reference = "that scan, and cat of what is written",
                                .ours = [&] { Exports::run(backup, destination); },
                                .other =
                                    [&] {
                                      scan();
                                      Measure::shell(fmt::format("find '{}' -type f -exec cat {{}} + > '{}'",
                                                                 (workshop.folder / "measured").native(),
                                                                 (workshop.folder / "bytes").native()));
                                    },
                                .prepare = [&] { fs::remove_all(destination); },
                                .limit = 4},
                               workshop.rounds) &&
              isReached;
  return Measure::compare({.what = "Exporting them again, nothing new",
                           .reference = "that scan",
                           .ours = [&] { Exports::run(backup, workshop.folder / "measured"); },
                           .other = scan,
                           .limit = 2},
                          workshop.rounds) &&
         isReached;
}

bool measureMemory(const Workshop& workshop) {
  const Sizes& sizes = workshop.sizes;
  const fs::path backup = workshop.folder / "backup";
  Measure::of([&] {
    PhoneData::writeBackup({.chats = {.messages = sizes.messages,
                                      .chats = sizes.memoryChats,
                                      .messagesToAMedium = std::max(1, sizes.messages / sizes.memoryMedia)},
                            .bytesOfAMedium = 100},
                           backup);
  });
  return Measure::compareMemory(
      fmt::format("Exporting {} messages and {} media", sizes.messages, sizes.memoryMedia),
      [&] { Exports::run(backup, workshop.folder / "export"); }, 600'000'000);
}
