#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "Benchmarks/Exports.h"
#include "Benchmarks/Measures.h"
#include "Benchmarks/PhoneData.h"

namespace {

namespace fs = std::filesystem;
using Measure::Judged;

struct Media {
  int count = 0;
  std::size_t bytes = 0;  // of each
  bool isEncrypted = false;

  PhoneData::Chats chats(int chatCount) const {
    return {.messages = count * 2, .chats = chatCount, .messagesToAMedium = 2};
  }
};

// A backup, a place to export it to, and one for the copies of others.
struct Scene {
  explicit Scene(const fs::path& folder)
      : backup(folder / "backup"), destination(folder / "export"), copies(folder / "copies") {}

  void clear() const {
    fs::remove_all(destination);
    fs::remove_all(copies);
  }
  std::string copyAll() const { return fmt::format("cp -a '{}' '{}'", backup.native(), copies.native()); }

  fs::path backup;
  fs::path destination;
  fs::path copies;
};

Scene sceneOf(const Workshop& workshop, const Media& media) {
  const Scene scene(workshop.folder);
  Measure::of([&] {
    PhoneData::writeBackup(
        {.chats = media.chats(workshop.sizes.chats), .bytesOfAMedium = media.bytes, .isEncrypted = media.isEncrypted},
        scene.backup);
  });
  return scene;
}

Media filesOf(const Sizes& sizes, bool areEncrypted) {
  return {.count = sizes.files,
          .bytes = static_cast<std::size_t>(sizes.megabytes) * 1'000'000 / static_cast<std::size_t>(sizes.files),
          .isEncrypted = areEncrypted};
}

bool isCloned(const fs::path& folder) {
  const fs::path file = folder / "a";
  const std::string command =
      fmt::format("touch '{0}' && cp --reflink=always '{0}' '{1}' 2>/dev/null", file.native(), (folder / "b").native());
  return std::system(command.c_str()) == 0;
}

}  // namespace

bool measureSmallFiles(const Workshop& workshop) {
  const Scene scene = sceneOf(workshop, {.count = workshop.sizes.smallFiles, .bytes = 4096});
  const bool isReached = Measure::compare({.what = fmt::format("Exporting {} files of 4 KB", workshop.sizes.smallFiles),
                                           .reference = "cp -a of the backup",
                                           .ours = [&] { Exports::run(scene.backup, scene.destination); },
                                           .other = [&] { Measure::shell(scene.copyAll()); },
                                           .prepare = [&] { scene.clear(); },
                                           .limit = 0.8,
                                           .judged = Judged::time},
                                          workshop.rounds);
  Measure::of([&] { Exports::run(scene.backup, scene.destination); });
  return Measure::compare(
             {.what = "Exporting them again, nothing new",
              .reference = "find -type f -printf %s",
              .ours = [&] { Exports::run(scene.backup, scene.destination); },
              .other =
                  [&] {
                    Measure::shell(fmt::format("find '{}' -type f -printf %s > '{}'", scene.destination.native(),
                                               (workshop.folder / "sizes").native()));
                  },
              .limit = 8},
             workshop.rounds) &&
         isReached;
}

bool measureFiles(const Workshop& workshop) {
  const Scene scene = sceneOf(workshop, filesOf(workshop.sizes, false));
  return Measure::compare(
      {.what = fmt::format("Exporting {} files, {} MB", workshop.sizes.files, workshop.sizes.megabytes),
       .reference = "cp -a of the backup",
       .ours = [&] { Exports::run(scene.backup, scene.destination); },
       .other = [&] { Measure::shell("cp -a --reflink=never " + scene.copyAll().substr(6)); },
       .prepare = [&] { scene.clear(); },
       .limit = isCloned(workshop.folder) ? 0.2 : 0.8,
       .judged = Judged::time},
      workshop.rounds);
}

bool measureEncryptedFiles(const Workshop& workshop) {
  const Scene scene = sceneOf(workshop, filesOf(workshop.sizes, true));
  const std::string decrypt = fmt::format(
      "find '{}' -type f -exec cat {{}} + | openssl enc -d -aes-256-cbc -nopad -K 00 -iv 00 > /dev/null 2>&1; ",
      scene.backup.native());
  return Measure::compare(
      {.what = fmt::format("Exporting {} encrypted files, {} MB", workshop.sizes.files, workshop.sizes.megabytes),
       .reference = "openssl enc -d, and cp -a",
       .ours = [&] { Exports::run(scene.backup, scene.destination, PhoneData::password); },
       .other = [&] { Measure::shell(decrypt + scene.copyAll()); },
       .prepare = [&] { scene.clear(); },
       .limit = 0.6,
       .judged = Judged::time},
      workshop.rounds);
}

bool measureGrowth(const Workshop& workshop) {
  const auto grown = [&](const fs::path& folder, int part) {
    const Scene scene(folder);
    Measure::of([&] {
      PhoneData::writeBackup({.chats = {.messages = workshop.sizes.grownMedia / part * 2,
                                        .chats = workshop.sizes.grownChats / part,
                                        .messagesToAMedium = 2},
                              .bytesOfAMedium = 100},
                             folder / "backup");
    });
    return scene;
  };
  const Scene whole = grown(workshop.folder / "whole", 1);
  const Scene quarter = grown(workshop.folder / "quarter", 4);
  return Measure::compare(
      {.what = fmt::format("Exporting {} chats, {} media", workshop.sizes.grownChats, workshop.sizes.grownMedia),
       .reference = "a quarter of them",
       .ours = [&] { Exports::run(whole.backup, whole.destination); },
       .other = [&] { Exports::run(quarter.backup, quarter.destination); },
       .prepare = [&] { whole.clear(), quarter.clear(); },
       .limit = 4.4},
      workshop.rounds);
}
