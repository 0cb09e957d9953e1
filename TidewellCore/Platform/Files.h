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
#include "TidewellCore/Platform/RootFolder.h"

// What the file system is asked for. Nothing here follows a link below a
// RootFolder; elsewhere links are followed where it is said. Failures are
// std::filesystem::filesystem_error unless a function says otherwise.
namespace Files {

enum class Kind { nothing, file, folder, link, other };
// What stands there; a link is one, wherever it leads. Throws when that cannot
// be found out: only what the file system says is not there counts as nothing.
Kind kindOf(const std::filesystem::path& path);

// Whether anything stands there, links followed; what cannot be looked at does not.
bool exists(const std::filesystem::path& path);
// The same, but throws when it cannot be found out: only what the file system says is not there is not.
bool isThere(const std::filesystem::path& path);
// Whether a regular file stands there; a link is none, and neither is what cannot be looked at.
bool isRegularFile(const std::filesystem::path& path);
// The length in bytes of a regular file; absent for anything else. Links are not followed.
std::optional<std::int64_t> regularFileSize(const std::filesystem::path& path);
// Asks for the lengths of many files, faster where those of one folder follow each other: it is opened once for them,
// and what takes its place meanwhile is not seen.
class Lengths {
 public:
  // As regularFileSize.
  std::optional<std::int64_t> of(const std::filesystem::path& path);

 private:
  std::string folder_;  // that the place is in
  std::optional<Place> place_;
};
// Whether a folder stands there, links followed; what cannot be looked at is none.
bool isFolder(const std::filesystem::path& path);
// Whether `path` is `folder` or lies in it, links followed. Neither need exist, and both may be relative.
bool isWithin(const std::filesystem::path& path, const std::filesystem::path& folder);

struct Entry {
  std::string name;
  bool isFolder = false;  // a link to a folder counts as one, except below a root

  bool operator==(const Entry&) const = default;
};
// The entries of a folder, hidden ones too, in ascending byte order of their names.
std::vector<Entry> list(const std::filesystem::path& folder);
// The same without hidden entries, and empty when the folder cannot be listed.
std::vector<Entry> listVisible(const std::filesystem::path& folder);

struct SizedFile {
  std::string name;
  std::int64_t size = 0;  // bytes

  bool operator==(const SizedFile&) const = default;
};
// The regular files of a folder, hidden ones too, in ascending byte order of their names.
std::vector<SizedFile> listFiles(const std::filesystem::path& folder);

// Makes a folder, and those above it, where they are missing.
void makeFolder(const std::filesystem::path& path);
// Removes a file, a link or an empty folder; false when nothing stands there.
bool remove(const std::filesystem::path& path);
// The same for what a failure left behind, which is what is told: does not throw.
void removeQuietly(const std::filesystem::path& path) noexcept;
// Removes a folder with all it holds, or whatever else stands there; links in it are not followed.
void removeTree(const std::filesystem::path& path);
// Moves a file or folder on its volume; a file that stands at `to` is replaced as one step.
void rename(const std::filesystem::path& from, const std::filesystem::path& to);

// A whole regular file; one longer than `limit` bytes is refused.
Bytes read(const std::filesystem::path& path, std::int64_t limit);
// The same; absent when no regular file stands there, or one longer than `limit` bytes.
std::optional<Bytes> readIfThere(const std::filesystem::path& path, std::int64_t limit);

// Whether a regular file has that content; one that cannot be read has not.
bool holds(const std::filesystem::path& path, std::string_view content);

// Replaces a file as one step: readers see the old content or the new, never a part.
void writeAtomically(const std::filesystem::path& path, std::string_view content);
// The same, but a regular file that holds that content already keeps its date:
// false then.
bool writeWhenDifferent(const std::filesystem::path& path, std::string_view content);

// Waits until a regular file's bytes are on the disk, or a folder's names are.
void flush(const std::filesystem::path& path);

// Copies a regular file's bytes to a new file, in the kernel where it can.
// Fails at once with EFBIG when the file system takes no file of that size.
// Returns the bytes copied. Stops with TidewellError::cancelled and leaves the part behind.
std::int64_t copy(const std::filesystem::path& from, const std::filesystem::path& to,
                  const CancellationCheck& isCancelled = {}, FileAccess access = FileAccess::byUmask);
// The same into a new file that is open, and stays so.
std::int64_t copy(const std::filesystem::path& from, FileDescriptor& to, const CancellationCheck& isCancelled = {});

// Renames without replacing: false when something already stands at `to`.
bool renameToFree(const std::filesystem::path& from, const std::filesystem::path& to);

// Moves a regular file to a free place: renamed on the same volume, else
// copied, compared by size and then removed. False when `to` is taken.
bool moveToFree(const std::filesystem::path& from, const std::filesystem::path& to);

// The last bytes of a file, at most `count`.
Bytes lastBytes(const std::filesystem::path& path, std::int64_t count);
bool haveSameBytes(const std::filesystem::path& a, const std::filesystem::path& b);

// Dates that the file system cannot hold become the nearest it can; one that
// refuses them keeps its own.
void setModificationDate(const std::filesystem::path& path, Date date);
void setModificationDate(const FileDescriptor& file, Date date);

// A name for a working file beside the file that it will become. Names begin
// with `partialPrefix` and are unique within this process.
inline constexpr std::string_view partialPrefix = ".tidewell-partial-";
std::string partialName();

}  // namespace Files
