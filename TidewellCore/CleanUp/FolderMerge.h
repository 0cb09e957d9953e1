#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/CleanUp/DedupeSummary.h"
#include "TidewellCore/CleanUp/FolderPairing.h"
#include "TidewellCore/CleanUp/MergeJournal.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/UsedNames.h"

// What becomes of each entry of a duplicate folder.
struct FolderMerge {
  enum class Action {
    removeDuplicate,  // its twin in the canonical folder holds the same bytes
    move,
    leave,        // it may be a duplicate, but one of the two cannot be read
    discard,      // a file manager's ".DS_Store"
    moveIfItCan,  // no regular file: moved with the folder's other entries where that is possible
  };
  struct Step {
    Action action = Action::move;
    std::string name;      // in the duplicate folder
    std::string target;    // the twin's name in the canonical folder, or the free name there
    bool isMedia = false;  // neither a transcript nor a program's own file
    std::int64_t size = 0;

    bool operator==(const Step&) const = default;
  };

  DedupePair pair;
  std::vector<Step> steps;
  std::vector<std::string> warnings;  // of what is left: sentences for people, in English
};

// Plans merges one after another, each as the folders are once the former are
// carried out, without changing anything. Two files are duplicates when the keys
// of their names and their bytes are equal; what cannot be compared is left for a later clean-up.
class MergePlanner {
 public:
  explicit MergePlanner(std::filesystem::path contentRoot, CancellationCheck isCancelled = {})
      : contentRoot_(std::move(contentRoot)), isCancelled_(std::move(isCancelled)) {}

  // Throws what listing the folders reports, and TidewellError::cancelled.
  FolderMerge plan(const FolderPairing::Pair& pair);

 private:
  struct File {
    std::string name;            // in the canonical folder
    std::filesystem::path path;  // where it stands meanwhile
    std::int64_t size = 0;
  };
  struct Content {
    std::multimap<std::string, File> files;  // by the key of the name
    UsedNames usedNames;
  };

  Content& contentOf(const std::string& canonical);
  // What becomes of one entry; the name it is moved to is left open.
  FolderMerge::Step step(const Content& content, const std::filesystem::path& folder, const std::string& name) const;
  // Null when there is none. Throws when it cannot be read whether one is.
  static const File* twin(const Content& content, const std::string& name, const std::filesystem::path& file,
                          std::int64_t size);

  std::filesystem::path contentRoot_;
  CancellationCheck isCancelled_;
  std::map<std::string, Content> contents_;  // by the canonical folder
};

// Carries merges out. Nothing is ever replaced, and a file is removed only when
// its twin was compared with it the moment before.
class Merger {
 public:
  // `journal` must outlive it. It knows all places of the merges, and is told of those that turn out taken.
  Merger(std::filesystem::path contentRoot, MergeJournal& journal, CancellationCheck isCancelled = {})
      : contentRoot_(std::move(contentRoot)), journal_(journal), isCancelled_(std::move(isCancelled)) {}

  // Counts in `summary` what it does, and warns of what it leaves. Throws what the file system reports, and
  // TidewellError::cancelled.
  void carryOut(const FolderMerge& merge, DedupeSummary& summary) const;

  // Enters all that a merge moves.
  static void announce(const FolderMerge& merge, MergeJournal& journal);

 private:
  void carryOut(const FolderMerge& merge, const FolderMerge::Step& step, DedupeSummary& summary) const;
  void move(const FolderMerge& merge, const FolderMerge::Step& step) const;

  std::filesystem::path contentRoot_;
  MergeJournal& journal_;
  CancellationCheck isCancelled_;
};
