#include "TidewellCore/CleanUp/FolderMerge.h"

#include <algorithm>

#include "TidewellCore/Destination/MergeMove.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

namespace fs = std::filesystem;
using Action = FolderMerge::Action;
using Step = FolderMerge::Step;

// In any letter case, as a merge compares names.
bool isTranscript(const std::string& name) {
  return OwnFiles::kindOf(FileNaming::normalizedKey(name)) == OwnFiles::Kind::transcript;
}

bool isMedia(const std::string& name) {
  return !isTranscript(name) && OwnFiles::kindOf(name) != OwnFiles::Kind::partial;
}

// Absent for anything but a regular file; throws when that cannot be found out.
std::optional<std::int64_t> sizeOf(const fs::path& path) {
  const auto size = Files::regularFileSize(path);
  if (size || Files::kindOf(path) != Files::Kind::file) return size;
  throw fs::filesystem_error("Could not look at", path, std::make_error_code(std::errc::io_error));
}

std::string warningOf(const DedupePair& pair, const Step& step) {
  return "“" + step.name + "” stands in “" + pair.canonicalFolder + "” and in “" + pair.duplicateFolder +
         "”, and one of the two cannot be read, so both stay. Clean up again when the disk can be read; what still "
         "cannot be read then is damaged.";
}

// Absent when one of them cannot be read.
std::optional<bool> haveSameBytes(const fs::path& a, const fs::path& b) {
  try {
    return Files::haveSameBytes(a, b);
  } catch (const fs::filesystem_error&) {
    return std::nullopt;
  }
}

// False when something stands at `to`, or when this cannot be moved there.
bool renamed(const fs::path& from, const fs::path& to) {
  try {
    return Files::renameToFree(from, to);
  } catch (const fs::filesystem_error&) {
    return false;
  }
}

ExportPlace from(const FolderMerge& merge, const Step& step) {
  return {.folder = merge.pair.duplicateFolder, .name = step.name};
}

ExportPlace to(const FolderMerge& merge, const std::string& name) {
  return {.folder = merge.pair.canonicalFolder, .name = name};
}

bool isMoved(const Step& step) { return step.action == Action::move || step.action == Action::moveIfItCan; }

void count(const Step& step, DedupePair& pair) {
  if (!step.isMedia) return;
  if (step.action == Action::move) ++pair.uniqueFileCount;
  if (step.action != Action::removeDuplicate) return;
  ++pair.duplicateFileCount;
  pair.bytes = saturatingAdd(pair.bytes, step.size);
}

}  // namespace

FolderMerge MergePlanner::plan(const FolderPairing::Pair& pair) {
  FolderMerge merge{.pair = {.canonicalFolder = pair.canonicalFolder,
                             .duplicateFolder = pair.duplicateFolder,
                             .jid = pair.jid.empty() ? std::nullopt : std::optional(pair.jid)}};
  Content& content = contentOf(pair.canonicalFolder);
  const fs::path folder = contentRoot_ / PathText::path(pair.duplicateFolder);
  for (const Files::Entry& entry : Files::list(folder)) {
    throwIfCancelled(isCancelled_);
    merge.steps.push_back(step(content, folder, entry.name));
  }
  // Whoever can keep its name does, before another is given that name.
  std::stable_partition(merge.steps.begin(), merge.steps.end(),
                        [&](const Step& step) { return !isMoved(step) || !content.usedNames.contains(step.name); });
  for (Step& step : merge.steps) {
    if (isMoved(step)) step.target = content.usedNames.uniquify(step.name);
    if (step.action == Action::move) {
      content.files.emplace(FileNaming::normalizedKey(step.target),
                            File{.name = step.target, .path = folder / PathText::path(step.name), .size = step.size});
    }
    if (step.action == Action::leave) merge.warnings.push_back(warningOf(merge.pair, step));
    count(step, merge.pair);
  }
  return merge;
}

FolderMerge::Step MergePlanner::step(const Content& content, const fs::path& folder, const std::string& name) const {
  const fs::path path = folder / PathText::path(name);
  const auto size = sizeOf(path);
  if (!size) return {.action = Action::moveIfItCan, .name = name};
  if (OwnFiles::kindOf(name) == OwnFiles::Kind::fileManagers) return {.action = Action::discard, .name = name};
  Step step{.name = name, .isMedia = isMedia(name), .size = *size};
  try {
    if (const File* same = twin(content, name, path, *size)) {
      step.action = Action::removeDuplicate;
      step.target = same->name;
    }
  } catch (const fs::filesystem_error&) {
    step.action = Action::leave;
  }
  return step;
}

MergePlanner::Content& MergePlanner::contentOf(const std::string& canonical) {
  const auto [found, isNew] = contents_.try_emplace(canonical);
  Content& content = found->second;
  if (!isNew) return content;
  const fs::path folder = contentRoot_ / PathText::path(canonical);
  for (const Files::Entry& entry : Files::list(folder)) {
    const std::string key = FileNaming::normalizedKey(entry.name);
    const fs::path path = folder / PathText::path(entry.name);
    content.usedNames.take(entry.name);
    if (const auto size = sizeOf(path)) {
      content.files.emplace(key, File{.name = entry.name, .path = path, .size = *size});
    }
  }
  return content;
}

const MergePlanner::File* MergePlanner::twin(const Content& content, const std::string& name, const fs::path& file,
                                             std::int64_t size) {
  const auto [begin, end] = content.files.equal_range(FileNaming::normalizedKey(name));
  const auto found = std::find_if(begin, end, [&](const auto& entry) {
    return entry.second.size == size && Files::haveSameBytes(entry.second.path, file);
  });
  return found == end ? nullptr : &found->second;
}

void Merger::announce(const FolderMerge& merge, MergeJournal& journal) {
  journal.addFolder(merge.pair.duplicateFolder, merge.pair.canonicalFolder);
  for (const Step& step : merge.steps) {
    const bool isFile = step.action == Action::removeDuplicate || step.action == Action::move;
    if (isFile) journal.addFile(from(merge, step).relativePath(), to(merge, step.target).relativePath());
  }
}

void Merger::carryOut(const FolderMerge& merge, DedupeSummary& summary) const {
  for (const Step& step : merge.steps) {
    throwIfCancelled(isCancelled_);
    carryOut(merge, step, summary);
  }
  try {
    if (Files::remove(contentRoot_ / PathText::path(merge.pair.duplicateFolder))) ++summary.removedFolderCount;
  } catch (const fs::filesystem_error& error) {
    const bool isFilled = error.code() == std::errc::directory_not_empty || error.code() == std::errc::file_exists;
    if (!isFilled) throw;
  }
}

void Merger::carryOut(const FolderMerge& merge, const Step& step, DedupeSummary& summary) const {
  const fs::path former = from(merge, step).in(contentRoot_);
  const fs::path target = to(merge, step.target).in(contentRoot_);
  if (step.action == Action::leave) return;
  std::optional<bool> isDuplicate = false;  // absent when that cannot be read
  if (step.action == Action::removeDuplicate) isDuplicate = haveSameBytes(former, target);
  if (!isDuplicate) {
    summary.warnings.push_back(warningOf(merge.pair, step));
  } else if (step.action == Action::discard) {
    Files::remove(former);
  } else if (step.action == Action::moveIfItCan) {
    renamed(former, target);
  } else if (*isDuplicate) {
    Files::remove(former);
    if (!step.isMedia) return;
    ++summary.deletedDuplicateCount;
    summary.bytesReclaimed = saturatingAdd(summary.bytesReclaimed, step.size);
  } else {
    move(merge, step);
    if (step.isMedia) ++summary.movedUniqueCount;
  }
}

// A name may be free by its key and taken all the same: file systems have rules
// of their own, and a twin may have changed since it was found.
void Merger::move(const FolderMerge& merge, const Step& step) const {
  const ExportPlace former = from(merge, step);
  const auto tryToMove = [&](const std::string& name) {
    return Files::moveToFree(former.in(contentRoot_), to(merge, name).in(contentRoot_));
  };
  if (tryToMove(step.target)) return;
  const fs::path folder = contentRoot_ / PathText::path(merge.pair.canonicalFolder);
  MergeMove::usedNames(folder).uniquifyUntil(step.name, [&](const std::string& name) {
    journal_.addFile(former.relativePath(), to(merge, name).relativePath());
    journal_.save();
    return tryToMove(name);
  });
}
