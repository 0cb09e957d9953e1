#pragma once

#include <cstdint>
#include <filesystem>

namespace DiskSpace {

// The bytes that this user can still write to the volume of `path`, which need
// not exist yet. Throws TidewellError::ioFailure when the volume does not tell.
std::int64_t availableBytes(const std::filesystem::path& path);

// Whether an export of `needed` bytes fits, part of the space being kept for what
// comes with the media. Takes sizes that no volume could hold.
bool fitsExport(std::int64_t needed, std::int64_t available);

// Whether `needed` bytes fit, `margin` (a factor) being kept free for what comes
// with them. A product beyond 64 bits is a fault of the program.
bool hasEnoughSpace(std::int64_t needed, std::int64_t available, double margin);

}  // namespace DiskSpace
