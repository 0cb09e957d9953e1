#include "TidewellCore/Export/KnownFiles.h"

#include "TidewellCore/Destination/OwnFiles.h"

std::optional<KnownMedium> KnownFiles::take(std::string_view path, std::optional<std::int64_t> size) {
  const KeptMedium* medium = media_ ? media_(path) : nullptr;
  if (medium == nullptr || !medium->place || (size && *size != medium->size)) return std::nullopt;
  const DestinationIndex::FileEntry* file = fileOf(*medium);
  if (file == nullptr || !takers_.insert(medium->path).second) return std::nullopt;
  files_.insert(file);
  return KnownMedium{
      .place = index_.placeOf(medium->place->folder, *file), .size = medium->size, .isDoubtful = medium->isDoubtful};
}

const DestinationIndex::FileEntry* KnownFiles::fileOf(const KeptMedium& medium) const {
  const DestinationIndex::FileEntry* file = index_.file(medium.place->folder, medium.place->name);
  const bool isMedium = file != nullptr && OwnFiles::kindOf(file->name) == OwnFiles::Kind::none;
  return isMedium && file->size == medium.size ? file : nullptr;
}
