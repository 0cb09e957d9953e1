#include "TidewellCore/Platform/SQLiteWAL.h"

#include <algorithm>
#include <bit>

#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/FileDescriptor.h"

namespace {

constexpr std::size_t headerSize = 32;
constexpr std::size_t frameHeaderSize = 24;
constexpr std::size_t saltSize = 8;
constexpr std::uint32_t magic = 0x377F0682;  // the lowest bit tells the byte order of the checksums
constexpr std::uint32_t version = 3'007'000;
constexpr std::size_t smallestPage = 512;
constexpr std::size_t largestPage = 65'536;

std::uint32_t number(ByteView bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(readBigEndian(bytes.subspan(offset, 4)));
}

// The running sum over everything before it, two words at a time.
struct Checksum {
  bool isBigEndian = false;
  std::uint32_t first = 0;
  std::uint32_t second = 0;

  void add(ByteView bytes) {
    for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
      first += word(&bytes[i]) + second;
      second += word(&bytes[i + 4]) + first;
    }
  }

  bool isStoredAt(ByteView bytes, std::size_t offset) const {
    return number(bytes, offset) == first && number(bytes, offset + 4) == second;
  }

 private:
  std::uint32_t word(const std::uint8_t* bytes) const {
    const std::uint32_t littleEndian =
        static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
        static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
    return isBigEndian ? __builtin_bswap32(littleEndian) : littleEndian;
  }
};

// What the log's first bytes say; they are the same for one generation of frames.
struct Header {
  std::size_t pageSize = 0;
  Bytes salts;
  Checksum checksum;

  std::size_t frameSize() const { return frameHeaderSize + pageSize; }
  bool owns(ByteView frame) const { return std::ranges::equal(frame.subspan(8, saltSize), salts); }
};

std::optional<Header> parsed(ByteView bytes) {
  const std::uint32_t kind = number(bytes, 0);
  const std::size_t pageSize = number(bytes, 8);
  const bool isPageSize = std::has_single_bit(pageSize) && pageSize >= smallestPage && pageSize <= largestPage;
  if ((kind & ~1U) != magic || number(bytes, 4) != version || !isPageSize) return std::nullopt;
  Header header{.pageSize = pageSize,
                .salts = Bytes(bytes.begin() + 16, bytes.begin() + 24),
                .checksum = {.isBigEndian = (kind & 1) != 0}};
  header.checksum.add(bytes.first(24));
  return header.checksum.isStoredAt(bytes, 24) ? std::optional(header) : std::nullopt;
}

bool isCommit(ByteView frame) { return number(frame, 4) != 0; }

// Whether the frame is the next of the log; the sum then includes it.
bool continues(ByteView frame, const Header& header, Checksum& checksum) {
  if (number(frame, 0) == 0 || !header.owns(frame)) return false;
  checksum.add(frame.first(8));
  checksum.add(frame.subspan(frameHeaderSize));
  return checksum.isStoredAt(frame, 16);
}

// Judges the frames from the one that does not fit, which stands at `offset`.
// A rolled-back transaction leaves frames of this generation, but no commit.
SQLiteWAL::State stateOfRest(FileDescriptor& file, const Header& header, ByteView misfit, std::int64_t offset) {
  bool hasCommit = header.owns(misfit) && isCommit(misfit);
  bool isFollowed = false;
  Bytes frame(frameHeaderSize);
  for (;;) {
    offset += static_cast<std::int64_t>(header.frameSize());
    file.seek(offset);
    if (file.read(frame) < frameHeaderSize) break;
    if (!header.owns(frame)) continue;
    isFollowed = true;
    hasCommit = hasCommit || isCommit(frame);
  }
  if (isFollowed && hasCommit) return SQLiteWAL::State::damagedFrame;
  return header.owns(misfit) ? SQLiteWAL::State::torn : SQLiteWAL::State::sound;
}

SQLiteWAL readFrames(FileDescriptor& file, const Header& header) {
  SQLiteWAL log{.state = SQLiteWAL::State::sound};
  Checksum checksum = header.checksum;
  Bytes frame(header.frameSize());
  std::int64_t count = 0;
  for (auto offset = static_cast<std::int64_t>(headerSize);; offset += static_cast<std::int64_t>(frame.size())) {
    const std::size_t length = file.read(frame);
    if (length < frame.size()) {
      if (length > 0 || count > log.frameCount) log.state = SQLiteWAL::State::torn;
      return log;
    }
    if (!continues(frame, header, checksum)) {
      log.state = stateOfRest(file, header, frame, offset);
      return log;
    }
    ++count;
    if (isCommit(frame)) log.frameCount = count;
  }
}

SQLiteWAL readLog(FileDescriptor& file) {
  Bytes bytes(headerSize);
  const std::size_t length = file.read(bytes);
  if (length == 0) return {};
  const auto header = length == headerSize ? parsed(bytes) : std::nullopt;
  return header ? readFrames(file, *header) : SQLiteWAL{.state = SQLiteWAL::State::damagedHeader};
}

std::optional<FileDescriptor> openIfThere(const std::filesystem::path& path) {
  try {
    return FileDescriptor::openForReading(path);
  } catch (const std::filesystem::filesystem_error& error) {
    if (error.code() != std::errc::no_such_file_or_directory) throw;
    return std::nullopt;
  }
}

}  // namespace

bool SQLiteWAL::isDamaged() const {
  return state == State::damagedHeader || state == State::damagedFrame || state == State::cut;
}

SQLiteWAL SQLiteWAL::read(const std::filesystem::path& file, std::optional<std::int64_t> recordedSize) {
  std::optional<FileDescriptor> opened = openIfThere(file);
  SQLiteWAL log = opened ? readLog(*opened) : SQLiteWAL();
  const std::int64_t size = opened ? opened->size() : 0;
  if (!log.isDamaged() && recordedSize && size < *recordedSize) log.state = State::cut;
  return log;
}
