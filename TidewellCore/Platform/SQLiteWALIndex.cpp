#include "TidewellCore/Platform/SQLiteWALIndex.h"

#include <algorithm>

#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/SQLiteChecksum.h"

namespace {

constexpr std::size_t headerSize = 48;
constexpr std::size_t initialisedOffset = 12;
constexpr std::size_t frameCountOffset = 16;
constexpr std::size_t saltsOffset = 32;
constexpr std::size_t checksumOffset = 40;
constexpr std::size_t backfilledCountOffset = 2 * headerSize;
constexpr std::size_t readSize = backfilledCountOffset + sizeof(std::uint32_t);
constexpr std::uint32_t version = 3'007'000;

std::uint32_t number(ByteView bytes, std::size_t offset) {
  return SQLiteChecksum::word(&bytes[offset], std::endian::little);
}

bool isWhole(ByteView header) {
  SQLiteChecksum checksum;
  checksum.add(header.first(checksumOffset));
  return number(header, 0) == version && header[initialisedOffset] != 0 &&
         number(header, checksumOffset) == checksum.first && number(header, checksumOffset + 4) == checksum.second;
}

}  // namespace

std::optional<SQLiteWALIndex> SQLiteWALIndex::read(const std::filesystem::path& file) {
  Bytes bytes(readSize);
  try {
    if (FileDescriptor::openForReading(file).read(bytes) < bytes.size()) return std::nullopt;
  } catch (const std::filesystem::filesystem_error&) {
    return std::nullopt;
  }
  const ByteView header = ByteView(bytes).first(headerSize);
  if (!isWhole(header) || !std::ranges::equal(header, ByteView(bytes).subspan(headerSize, headerSize)))
    return std::nullopt;
  SQLiteWALIndex index{.frameCount = number(header, frameCountOffset),
                       .backfilledCount = number(bytes, backfilledCountOffset)};
  std::ranges::copy(header.subspan(saltsOffset, index.salts.size()), index.salts.begin());
  return index;
}
