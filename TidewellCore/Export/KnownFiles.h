#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Export/KnownMedia.h"

// The files at the destination that are known to be whose, each of which is taken once by each
// medium: of two files with the same bytes a clean-up keeps one, which is both media's. All media are to be asked for
// here before any file is looked for by its name, so that no name takes what is known to be another's.
class KnownFiles {
 public:
  // Both must outlive it.
  KnownFiles(const KnownMedia& media, const DestinationIndex& index) : media_(media), index_(index) {}

  // Takes the file of the medium with this path in the backup: its place as it is spelt on disk, and its size. Absent
  // when none is known, when it is gone or changed, when this medium took it already, and when it has another size than
  // is asked for.
  std::optional<KnownMedium> take(std::string_view path, std::optional<std::int64_t> size = std::nullopt);

  // Of the index that it was made with.
  bool isTaken(const DestinationIndex::FileEntry& file) const { return files_.contains(&file); }
  // Whether a file was taken for that medium.
  bool hasTaken(std::string_view path) const { return takers_.contains(path); }

 private:
  // Null when nothing stands at its place that may be the medium.
  const DestinationIndex::FileEntry* fileOf(const KeptMedium& medium) const;

  const KnownMedia& media_;
  const DestinationIndex& index_;
  std::unordered_set<const DestinationIndex::FileEntry*> files_;  // that are taken
  std::unordered_set<std::string_view> takers_;                   // paths, of the media that are known
};
