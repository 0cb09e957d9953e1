#include "TidewellCore/Platform/SQLiteHeader.h"

#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/FileDescriptor.h"

namespace {

constexpr std::size_t headerSize = 100;

std::int64_t pageSize(ByteView header) {
  const auto size = static_cast<std::int64_t>(readBigEndian(header.subspan(16, 2)));
  return size == 1 ? 65'536 : size;  // the largest size does not fit its two bytes
}

// Old versions of SQLite leave the count behind when they write; it counts
// only while the change counters beside it agree.
std::int64_t pageCount(ByteView header) {
  const bool isValid = readBigEndian(header.subspan(24, 4)) == readBigEndian(header.subspan(92, 4));
  return isValid ? static_cast<std::int64_t>(readBigEndian(header.subspan(28, 4))) : 0;
}

}  // namespace

std::optional<SQLiteHeader> SQLiteHeader::read(const std::filesystem::path& file) {
  Bytes header(headerSize);
  try {
    if (FileDescriptor::openForReading(file).read(header) < headerSize) return std::nullopt;
  } catch (const std::filesystem::filesystem_error&) {
    return std::nullopt;
  }
  if (!textOf(header).starts_with(magic)) return std::nullopt;
  return SQLiteHeader{.isWAL = header[readVersionOffset] == 2, .databaseSize = pageSize(header) * pageCount(header)};
}
