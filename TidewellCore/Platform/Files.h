#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Cancellation.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/Platform/FileDescriptor.h"

// What the file system is asked for beyond std::filesystem. Failures are
// std::filesystem::filesystem_error unless a function says otherwise.
namespace Files {

// Whether anything stands there, links followed; what cannot be looked at does not.
bool exists(const std::filesystem::path& path);
// Whether a regular file stands there; a link is none.
bool isRegularFile(const std::filesystem::path& path);
// The length in bytes of a regular file; absent for anything else. Links are not followed.
std::optional<std::int64_t> regularFileSize(const std::filesystem::path& path);
bool isFolder(const std::filesystem::path& path);
// Whether `path` is `folder` or lies in it, links followed. Neither need exist, and both may be relative.
bool isWithin(const std::filesystem::path& path, const std::filesystem::path& folder);

struct Entry {
  std::string name;
  bool isFolder = false;  // a link to a folder counts as one

  bool operator==(const Entry&) const = default;
};
// The entries of a folder, hidden ones too, in ascending byte order of their names.
std::vector<Entry> list(const std::filesystem::path& folder);
// The same without hidden entries, and empty when the folder cannot be listed.
std::vector<Entry> listVisible(const std::filesystem::path& folder);

// A whole regular file; one longer than `limit` bytes is refused.
Bytes read(const std::filesystem::path& path, std::int64_t limit);

// Replaces a file as one step: readers see the old content or the new, never a part.
void writeAtomically(const std::filesystem::path& path, std::string_view content);
// The same, but a regular file that holds that content already keeps its date:
// false then.
bool writeWhenDifferent(const std::filesystem::path& path, std::string_view content);

// Copies a regular file's bytes to a new file, in the kernel where it can.
// Returns the bytes copied. Stops with TidewellError::cancelled and leaves the part behind.
std::int64_t copy(const std::filesystem::path& from, const std::filesystem::path& to,
                  const CancellationCheck& isCancelled = {}, FileAccess access = FileAccess::byUmask);

// Renames without replacing: false when something already stands at `to`.
bool renameToFree(const std::filesystem::path& from, const std::filesystem::path& to);

// Moves a regular file to a free place: renamed on the same volume, else
// copied, compared by size and then removed. False when `to` is taken.
bool moveToFree(const std::filesystem::path& from, const std::filesystem::path& to);

bool haveSameBytes(const std::filesystem::path& a, const std::filesystem::path& b);

// Dates that the file system cannot hold become the nearest it can.
void setModificationDate(const std::filesystem::path& path, Date date);

// A name for a working file beside the file that it will become. Names begin
// with `partialPrefix` and are unique within this process.
inline constexpr std::string_view partialPrefix = ".tidewell-partial-";
std::string partialName();

}  // namespace Files
