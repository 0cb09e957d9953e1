#include "TidewellCore/Destination/DiskSpace.h"

#include <cmath>
#include <limits>

#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

fs::path nearestExisting(const fs::path& path) {
  std::error_code ignored;
  fs::path candidate = fs::absolute(path, ignored);
  while (!Files::exists(candidate)) {
    if (candidate == candidate.parent_path()) return DefaultPaths::home();
    candidate = candidate.parent_path();
  }
  return candidate;
}

}  // namespace

std::int64_t DiskSpace::availableBytes(const fs::path& path) {
  std::error_code error;
  const fs::space_info space = fs::space(nearestExisting(path), error);
  if (error) throw TidewellError::ioFailure("Could not determine free space at " + PathText::text(path));
  constexpr auto largest = static_cast<std::uintmax_t>(std::numeric_limits<std::int64_t>::max());
  return static_cast<std::int64_t>(std::min(space.available, largest));
}

bool DiskSpace::fitsExport(std::int64_t needed, std::int64_t available) {
  constexpr double margin = 1.03;
  constexpr std::int64_t beyondEveryVolume = std::int64_t{1} << 62;
  return needed < beyondEveryVolume && hasEnoughSpace(needed, available, margin);
}

bool DiskSpace::hasEnoughSpace(std::int64_t needed, std::int64_t available, double margin) {
  if (needed < 1) return true;
  const double required = std::ceil(static_cast<double>(needed) * margin);
  precondition(required < 0x1p63, "the space required must fit a 64-bit integer");
  return available >= static_cast<std::int64_t>(required);
}
