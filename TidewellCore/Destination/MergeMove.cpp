#include "TidewellCore/Destination/MergeMove.h"

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Whether both name one entry of one folder, however it is spelt. Two hard links are two entries.
bool areOnePlace(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  if (a == b) return true;
  if (!fs::equivalent(a, b, ignored)) return false;
  const bool areFiles = Files::isRegularFile(a) && Files::isRegularFile(b);
  return !areFiles || fs::equivalent(a.parent_path(), b.parent_path(), ignored);
}

// A folder itself; a link to one is moved as the link it is.
bool isRealFolder(const fs::path& path) { return Files::kindOf(path) == Files::Kind::folder; }

void moveUnderFreeName(const fs::path& from, const fs::path& folder, const std::string& name) {
  UsedNames used = MergeMove::usedNames(folder);
  used.uniquifyUntil(name, [&](const std::string& free) { return Files::moveToFree(from, folder / free); });
}

void mergeFolder(const fs::path& from, const fs::path& to) {
  for (const Files::Entry& entry : Files::list(from)) MergeMove::move(from / entry.name, to / entry.name);
  Files::remove(from);
}

// Tries a plain move; false when the target is taken or on another volume.
bool moveWhole(const fs::path& from, const fs::path& to) {
  try {
    return isRealFolder(from) ? Files::renameToFree(from, to) : Files::moveToFree(from, to);
  } catch (const fs::filesystem_error& error) {
    if (error.code() != std::errc::cross_device_link || !isRealFolder(from)) throw;
  }
  Files::makeFolder(to);
  return false;
}

}  // namespace

UsedNames MergeMove::usedNames(const fs::path& folder) {
  UsedNames used;
  for (const Files::Entry& entry : Files::list(folder)) used.take(entry.name);
  return used;
}

void MergeMove::move(const fs::path& from, const fs::path& to) {
  if (areOnePlace(from, to)) return;
  if (moveWhole(from, to)) return;
  if (isRealFolder(from) && isRealFolder(to)) return mergeFolder(from, to);
  const bool areFiles = Files::isRegularFile(from) && Files::isRegularFile(to);
  if (areFiles && Files::haveSameBytes(from, to)) {
    Files::remove(from);
  } else {
    moveUnderFreeName(from, to.parent_path(), PathText::text(to.filename()));
  }
}
