#include "TidewellCore/Platform/SQLiteWAL.h"

#include <algorithm>
#include <array>
#include <bit>
#include <set>

#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/SQLiteChecksum.h"

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

// The sum that stands in the log is big-endian, whatever the order it was reckoned in.
bool isStoredAt(const SQLiteChecksum& checksum, ByteView bytes, std::size_t offset) {
  return number(bytes, offset) == checksum.first && number(bytes, offset + 4) == checksum.second;
}

// What the log's first bytes say; they are the same for one generation of frames.
struct Header {
  std::size_t pageSize = 0;
  std::array<std::uint8_t, saltSize> salts{};
  SQLiteChecksum checksum;

  std::size_t frameSize() const { return frameHeaderSize + pageSize; }
  bool owns(ByteView frame) const { return std::ranges::equal(frame.subspan(8, saltSize), salts); }
};

std::optional<Header> parsed(ByteView bytes) {
  const std::uint32_t kind = number(bytes, 0);
  const std::size_t pageSize = number(bytes, 8);
  const bool isPageSize = std::has_single_bit(pageSize) && pageSize >= smallestPage && pageSize <= largestPage;
  if ((kind & ~1U) != magic || number(bytes, 4) != version || !isPageSize) return std::nullopt;
  Header header{.pageSize = pageSize, .checksum = {.order = (kind & 1) != 0 ? std::endian::big : std::endian::little}};
  std::ranges::copy(bytes.subspan(16, saltSize), header.salts.begin());
  header.checksum.add(bytes.first(24));
  return isStoredAt(header.checksum, bytes, 24) ? std::optional(header) : std::nullopt;
}

// SQLite writes no such frame: a copy that was broken off leaves them, its length being set before its bytes.
bool isBlank(ByteView frame) {
  return std::ranges::all_of(frame.first(frameHeaderSize), [](std::uint8_t byte) { return byte == 0; });
}

bool isCommit(ByteView frame) { return number(frame, 4) != 0; }

// Whether the frame is the next of the log; the sum then includes it.
bool continues(ByteView frame, const Header& header, SQLiteChecksum& checksum) {
  if (number(frame, 0) == 0 || !header.owns(frame)) return false;
  checksum.add(frame.first(8));
  checksum.add(frame.subspan(frameHeaderSize));
  return isStoredAt(checksum, frame, 16);
}

// Judges the frames from the one that does not fit, which stands at `offset`.
// A rolled-back transaction leaves frames of this generation, but no commit.
SQLiteWAL::State stateOfRest(FileDescriptor& file, const Header& header, ByteView misfit, std::int64_t offset) {
  bool hasCommit = header.owns(misfit) && isCommit(misfit);
  bool isFollowed = false;
  bool hasBlank = isBlank(misfit);
  Bytes frame(frameHeaderSize);
  for (;;) {
    offset += static_cast<std::int64_t>(header.frameSize());
    file.seek(offset);
    if (file.read(frame) < frameHeaderSize) break;
    hasBlank = hasBlank || isBlank(frame);
    if (!header.owns(frame)) continue;
    isFollowed = true;
    hasCommit = hasCommit || isCommit(frame);
  }
  if (hasBlank || (isFollowed && hasCommit)) return SQLiteWAL::State::damagedFrame;
  return header.owns(misfit) ? SQLiteWAL::State::torn : SQLiteWAL::State::sound;
}

SQLiteWAL readFrames(FileDescriptor& file, const Header& header) {
  SQLiteWAL log{.state = SQLiteWAL::State::sound};
  SQLiteChecksum checksum = header.checksum;
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

// The first salt counts the generations of a log: each begins with one more (section 4.4), the
// first with any number. An index may be the older of the two, since nothing writes it to the disk at once, and
// then of a log whose numbers are far from these.
bool isOfLaterLog(const SQLiteWALIndex& index, const Header& header) {
  constexpr std::uint32_t mostGenerations = 1 << 16;
  const auto ahead = static_cast<std::uint32_t>(number(index.salts, 0) - number(header.salts, 0));
  return index.frameCount > 0 && ahead != 0 && ahead < mostGenerations;
}

bool knowsMore(const std::optional<SQLiteWALIndex>& index, const Header& header, const SQLiteWAL& log) {
  if (!index) return false;
  if (index->salts != header.salts) return isOfLaterLog(*index, header);
  return index->frameCount > log.frameCount;
}

SQLiteWAL readLog(FileDescriptor& file, const std::optional<SQLiteWALIndex>& index) {
  Bytes bytes(headerSize);
  const std::size_t length = file.read(bytes);
  if (length == 0) return {};
  const auto header = length == headerSize ? parsed(bytes) : std::nullopt;
  if (!header) return {.state = SQLiteWAL::State::damagedHeader};
  SQLiteWAL log = readFrames(file, *header);
  if (knowsMore(index, *header, log)) log.state = SQLiteWAL::State::damagedFrame;
  return log;
}

// The page of the lock bytes, which never holds anything and is never written.
std::int64_t lockPage(std::int64_t pageSize) { return 0x4000'0000 / pageSize + 1; }

// Those of a database after the last commit which lie beyond so many.
struct PagesBeyond {
  std::int64_t databasePages = 0;
  std::set<std::int64_t> held;

  bool areAllHeld(std::int64_t stored, std::int64_t pageSize) const {
    const auto end = held.upper_bound(databasePages);
    const std::int64_t lock = lockPage(pageSize);
    const bool hasLock = lock > stored && lock <= databasePages && !held.contains(lock);
    return std::distance(held.begin(), end) + (hasLock ? 1 : 0) >= databasePages - stored;
  }
};

PagesBeyond pagesBeyond(FileDescriptor& file, const Header& header, std::int64_t frameCount, std::int64_t stored) {
  PagesBeyond pages;
  Bytes frame(frameHeaderSize);
  for (std::int64_t i = 0; i < frameCount; ++i) {
    file.seek(static_cast<std::int64_t>(headerSize) + i * static_cast<std::int64_t>(header.frameSize()));
    if (file.read(frame) < frameHeaderSize) break;
    if (number(frame, 0) > stored) pages.held.insert(number(frame, 0));
    if (isCommit(frame)) pages.databasePages = number(frame, 4);
  }
  return pages;
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

SQLiteWAL SQLiteWAL::read(const std::filesystem::path& file, std::optional<std::int64_t> recordedSize,
                          const std::optional<SQLiteWALIndex>& index) {
  std::optional<FileDescriptor> opened = openIfThere(file);
  SQLiteWAL log = opened ? readLog(*opened, index) : SQLiteWAL();
  const std::int64_t size = opened ? opened->size() : 0;
  if (!log.isDamaged() && recordedSize && size < *recordedSize) log.state = State::cut;
  return log;
}

bool SQLiteWAL::completes(const std::filesystem::path& file, std::int64_t storedSize) const {
  if (frameCount == 0) return false;
  FileDescriptor opened = FileDescriptor::openForReading(file);
  Bytes bytes(headerSize);
  const auto header = opened.read(bytes) == headerSize ? parsed(bytes) : std::nullopt;
  if (!header) return false;
  const auto pageSize = static_cast<std::int64_t>(header->pageSize);
  const std::int64_t stored = storedSize / pageSize;
  return pagesBeyond(opened, *header, frameCount, stored).areAllHeld(stored, pageSize);
}
