#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "Benchmarks/Measures.h"
#include "Benchmarks/PhoneData.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

constexpr std::array<MeasureGroup, 8> groups{{{"messages", measureMessages},
                                              {"memory", measureMemory},
                                              {"small", measureSmallFiles},
                                              {"files", measureFiles},
                                              {"encrypted", measureEncryptedFiles},
                                              {"unlocking", measureUnlocking},
                                              {"index", measureIndex},
                                              {"growth", measureGrowth}}};

void addSizes(CLI::App& app, Sizes& sizes) {
  app.add_option("--messages", sizes.messages, "Messages that are read and exported")->capture_default_str();
  app.add_option("--chats", sizes.chats, "Chats that they are of")->capture_default_str();
  app.add_option("--memory-chats", sizes.memoryChats, "Chats where memory is measured")->capture_default_str();
  app.add_option("--memory-media", sizes.memoryMedia, "Media where memory is measured")->capture_default_str();
  app.add_option("--small-files", sizes.smallFiles, "Files of 4 KB")->capture_default_str();
  app.add_option("--files", sizes.files, "Larger files")->capture_default_str();
  app.add_option("--megabytes", sizes.megabytes, "What they take together")->capture_default_str();
  app.add_option("--unlock-rounds", sizes.unlockRounds, "Rounds of PBKDF2")->capture_default_str();
  app.add_option("--index-rows", sizes.indexRows, "Rows of an encrypted index")->capture_default_str();
  app.add_option("--scanned-media", sizes.scannedMedia, "Media of an encrypted scan")->capture_default_str();
  app.add_option("--grown-chats", sizes.grownChats, "Chats beside a quarter of them")->capture_default_str();
  app.add_option("--grown-media", sizes.grownMedia, "Media beside a quarter of them")->capture_default_str();
}

bool run(const MeasureGroup& group, Workshop workshop) {
  const Fixture::TemporaryDirectory folder;
  workshop.folder = folder.path();
  return group.run(workshop);
}

}  // namespace

// Ends with 1 when a limit is missed.
int main(int count, char** arguments) {
  CLI::App app("Measures speed and memory beside tools that everybody has.");
  Workshop workshop;
  std::vector<std::string> names;
  app.add_option("--rounds", workshop.rounds, "How often each is measured")->capture_default_str();
  addSizes(app, workshop.sizes);
  std::vector<std::string> known;
  for (const MeasureGroup& group : groups) known.emplace_back(group.name);
  app.add_option("groups", names, "Which are measured; all unless named")->check(CLI::IsMember(known));
  std::string small;
  app.add_option("--small-backup", small, "Only write the small backup that scripts/count-instructions exports");
  CLI11_PARSE(app, count, arguments);

  if (!small.empty()) {
    PhoneData::writeBackup({.chats = {.messages = 5'000, .chats = 40, .messagesToAMedium = 10}, .bytesOfAMedium = 4096},
                           small);
    return 0;
  }
  Measure::printHead();
  bool isReached = true;
  for (const MeasureGroup& group : groups) {
    const bool isWanted = names.empty() || std::ranges::find(names, group.name) != names.end();
    if (isWanted) isReached = run(group, workshop) && isReached;
  }
  return isReached ? 0 : 1;
}
