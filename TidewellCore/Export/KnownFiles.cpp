#include "TidewellCore/Export/KnownFiles.h"

#include "TidewellCore/Destination/OwnFiles.h"

std::optional<KnownMedium> KnownFiles::take(std::string_view path, std::optional<std::int64_t> size) {
  const auto known = media_.find(path);
  if (known == media_.end()) return std::nullopt;
  const KnownMedium& medium = known->second;
  if (size && *size != medium.size) return std::nullopt;
  const DestinationIndex::FileEntry* file = fileOf(medium);
  if (file == nullptr || !takers_.insert(known->first).second) return std::nullopt;
  files_.insert(file);
  return KnownMedium{.place = index_.placeOf(medium.place.folder, *file), .size = medium.size};
}

const DestinationIndex::FileEntry* KnownFiles::fileOf(const KnownMedium& medium) const {
  const DestinationIndex::FileEntry* file = index_.file(medium.place.folder, medium.place.name);
  const bool isMedium = file != nullptr && OwnFiles::kindOf(file->name) == OwnFiles::Kind::none;
  return isMedium && file->size == medium.size ? file : nullptr;
}
