#include "TidewellCore/Export/MovedFiles.h"

#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Export/FileDigest.h"
#include "TidewellCore/Platform/Files.h"

namespace {

using FileEntry = DestinationIndex::FileEntry;

class Search {
 public:
  Search(const MediaLedger& ledger, const DestinationIndex& index, const MovedFiles::DigestOfMedium& digestOf,
         const CancellationCheck& isCancelled)
      : index_(index), digestOfMedium_(digestOf), isCancelled_(isCancelled) {
    for (const KeptMedium& medium : ledger.media()) {
      if (!medium.place) continue;
      const FileEntry* file = index.file(medium.place->folder, medium.place->name);
      file != nullptr && file->size == medium.size ? standing_.insert(file), void() : missing_.push_back(&medium);
    }
    if (!missing_.empty()) collectStrays();
  }

  // Where each missing medium is now, by where it was.
  std::map<ExportPlace, ExportPlace> run() {
    std::map<ExportPlace, ExportPlace> moved;
    for (const KeptMedium* medium : missing_) {
      throwIfCancelled(isCancelled_);
      if (const Stray* stray = strayOf(*medium)) moved.emplace(*medium->place, stray->place);
    }
    return moved;
  }

 private:
  struct Stray {
    ExportPlace place;
    std::optional<std::string> digest;  // once it was asked for; empty for what cannot be read
  };

  // An empty file is like every other.
  void collectStrays() {
    for (const auto& [folder, files] : index_.filesByFolder) {
      for (const auto& [key, file] : files) {
        const bool isStray =
            file.size > 0 && !standing_.contains(&file) && OwnFiles::kindOf(file.name) == OwnFiles::Kind::none;
        if (isStray) strays_[file.size].push_back({.place = {.folder = folder, .name = file.name}});
      }
    }
  }

  const Stray* strayOf(const KeptMedium& medium) {
    const auto ofSize = strays_.find(medium.size);
    if (ofSize == strays_.end()) return nullptr;
    if (const Stray* stray = find(ofSize->second, medium.digest)) return stray;
    if (const Stray* stray = find(ofSize->second, medium.sentDigest)) return stray;
    return medium.digest.empty() ? find(ofSize->second, digestOfMedium_(medium).value_or("")) : nullptr;
  }

  // Null also where the digest is not known.
  const Stray* find(std::vector<Stray>& strays, const std::string& digest) {
    for (Stray& stray : strays) {
      if (!digest.empty() && digestOf(stray) == digest) return &stray;
    }
    return nullptr;
  }

  const std::string& digestOf(Stray& stray) {
    if (stray.digest) return *stray.digest;
    try {
      stray.digest = FileDigest::of(stray.place.in(index_.destination), isCancelled_);
    } catch (const std::filesystem::filesystem_error&) {
      stray.digest.emplace();
    }
    return *stray.digest;
  }

  const DestinationIndex& index_;
  const MovedFiles::DigestOfMedium& digestOfMedium_;
  const CancellationCheck& isCancelled_;
  std::unordered_set<const FileEntry*> standing_;
  std::vector<const KeptMedium*> missing_;
  std::unordered_map<std::int64_t, std::vector<Stray>> strays_;  // by their sizes
};

}  // namespace

void MovedFiles::follow(MediaLedger& ledger, const DestinationIndex& index, const DigestOfMedium& digestOf,
                        const CancellationCheck& isCancelled) {
  const std::map<ExportPlace, ExportPlace> moved = Search(ledger, index, digestOf, isCancelled).run();
  if (moved.empty()) return;
  ledger.relocate([&](const ExportPlace& former) {
    const auto found = moved.find(former);
    return found == moved.end() ? std::nullopt : std::optional(found->second);
  });
}
