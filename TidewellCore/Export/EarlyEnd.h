#pragma once

#include <exception>
#include <filesystem>

// What ends a run at once, because going on would fail again and again: a full
// disk, and a backup or a destination that was taken away.
namespace EarlyEnd {

inline constexpr const char* fullDestination =
    "The disk is full. Free some space or choose another folder, then export again. What was copied so far is kept.";
inline constexpr const char* fullTemporaryFolder =
    "The disk that holds temporary files is full. Free some space, then try again.";
inline constexpr const char* backupGone =
    "The backup was moved or removed. Put it back or connect its disk again, then export again. What was copied so "
    "far is kept.";
inline constexpr const char* destinationBroken =
    "The disk of the destination folder takes nothing any more. Connect it again or choose another folder, then export "
    "again. What was copied so far is kept.";
inline constexpr const char* fullExport = "The disk is full. Free some space, then try again.";
inline constexpr const char* exportBroken =
    "The disk of this folder takes nothing any more. Connect it again, then try again.";
inline constexpr const char* backupGoneWhileRead =
    "The backup was moved or removed. Put it back or connect its disk again, then try again.";

// What a run reads and writes. A scan has no destination, and what makes pages again no backup. The paths must
// outlive the run.
struct Places {
  const std::filesystem::path* backup = nullptr;
  const std::filesystem::path* destination = nullptr;
};

// Whether the lists that make a folder a backup are there. Throws std::filesystem::filesystem_error
// when that cannot be found out.
bool isBackup(const std::filesystem::path& folder);
// Throws TidewellError::ioFailure when the backup is known to be there no more.
void requireBackup(const Places& places);
// Whether a disk, or the user's share of it, had no room for what was written.
bool isFullDisk(const std::exception& error);
// Whether a disk failed, and not a name or a permission.
bool isOfDisk(const std::exception& error);
// After a copy or another part of an export failed, which is being handled:
// throws what ends the run, if anything does.
void throwWhenDue(const std::exception& error, const Places& places);

// Throws the failure that is being handled, or what it comes from when that is one of the above.
[[noreturn]] void rethrow(const std::exception& error, const Places& places, bool wasBackup);

// Runs `work` and has its failures tell what they come from.
template <typename Work>
auto explained(const Places& places, Work work) {
  const bool wasBackup = places.backup != nullptr && isBackup(*places.backup);
  try {
    return work();
  } catch (const std::exception& error) {
    rethrow(error, places, wasBackup);
  }
}

}  // namespace EarlyEnd
