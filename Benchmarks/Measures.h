#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Benchmarks/Measure.h"

// How large the data are that are made for the measures.
struct Sizes {
  int messages = 1'000'000;
  int chats = 807;
  int memoryChats = 3'000;
  int memoryMedia = 100'000;
  int smallFiles = 60'000;
  int files = 10'000;
  int megabytes = 2'000;  // of those files
  int unlockRounds = 10'000'000;
  int indexRows = 500'000;
  int scannedMedia = 100'000;
  int grownChats = 10'000;
  int grownMedia = 200'000;
};

struct Workshop {
  std::filesystem::path folder;  // empty; what a group leaves there is removed
  Sizes sizes;
  int rounds = 5;
};

// A group of measures that share their data. Returns whether all limits were kept.
struct MeasureGroup {
  std::string_view name;
  bool (*run)(const Workshop& workshop) = nullptr;
};

bool measureMessages(const Workshop& workshop);
bool measureMemory(const Workshop& workshop);
bool measureSmallFiles(const Workshop& workshop);
bool measureFiles(const Workshop& workshop);
bool measureEncryptedFiles(const Workshop& workshop);
bool measureUnlocking(const Workshop& workshop);
bool measureIndex(const Workshop& workshop);
bool measureGrowth(const Workshop& workshop);
