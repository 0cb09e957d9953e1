#include "TidewellCore/Platform/BinaryPropertyList.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

// The high half of an object's first byte.
enum Marker : std::uint8_t {
  singleton = 0x0,
  integer = 0x1,
  real = 0x2,
  date = 0x3,
  data = 0x4,
  asciiString = 0x5,
  utf16String = 0x6,
  uid = 0x8,
  array = 0xA,
  set = 0xC,
  dictionary = 0xD
};

[[noreturn]] void fail(const char* reason) {
  throw PropertyListError(std::string("The property list is damaged: ") + reason + ".");
}

// The last 32 bytes of the file.
struct Trailer {
  std::size_t offsetSize = 0;
  std::size_t referenceSize = 0;
  std::uint64_t objectCount = 0;
  std::uint64_t rootIndex = 0;
  std::uint64_t tableOffset = 0;
};

// An object as it lies in the file: its marker, its payload and, for containers, its references.
struct RawObject {
  std::uint8_t marker = 0;
  std::uint8_t detail = 0;
  ByteView payload;
  std::vector<std::size_t> references;
};

std::string asciiText(ByteView bytes) { return Text::repaired(textOf(bytes)); }

std::string utf16Text(ByteView bytes) {
  std::u32string scalars;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    auto unit = static_cast<char32_t>(readBigEndian(bytes.subspan(i, 2)));
    const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
    if (isHigh && i + 3 < bytes.size()) {
      const auto low = static_cast<char32_t>(readBigEndian(bytes.subspan(i + 2, 2)));
      if (low >= 0xDC00 && low < 0xE000) {
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    scalars.push_back(unit >= 0xD800 && unit < 0xE000 ? U'\uFFFD' : unit);
  }
  return Text::fromScalars(scalars);
}

// Numbers of 1, 2 and 4 bytes are unsigned, those of 8 signed; 16 bytes hold a 64-bit number sign-extended.
PropertyListValue integerValue(ByteView bytes) {
  const std::uint64_t low = readBigEndian(bytes.last(std::min<std::size_t>(bytes.size(), 8)));
  if (bytes.size() <= 8) return {static_cast<std::int64_t>(low)};
  const std::uint64_t high = readBigEndian(bytes.first(8));
  const bool isSigned = low <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  const bool isNegative = high == std::numeric_limits<std::uint64_t>::max() && !isSigned;
  if (high != 0 && !isNegative) fail("a number is too large");
  if (isSigned || isNegative) return {static_cast<std::int64_t>(low)};
  return {low};
}

double realNumber(ByteView bytes) {
  if (bytes.size() == 4) return std::bit_cast<float>(static_cast<std::uint32_t>(readBigEndian(bytes)));
  if (bytes.size() == 8) return std::bit_cast<double>(readBigEndian(bytes));
  fail("a real number has an unknown size");
}

PropertyListValue dateValue(ByteView bytes) {
  const double seconds = realNumber(bytes);
  if (!std::isfinite(seconds)) fail("a date is not a number");
  return {dateFromAppleTime(seconds)};
}

PropertyListValue singletonValue(std::uint8_t detail) {
  if (detail == 0x8) return {false};
  if (detail == 0x9) return {true};
  if (detail == 0x0) return {};
  fail("an object has an unknown type");
}

PropertyListValue leafValue(const RawObject& object) {
  switch (object.marker) {
    case singleton:
      return singletonValue(object.detail);
    case integer:
      return integerValue(object.payload);
    case real:
      return {realNumber(object.payload)};
    case date:
      return dateValue(object.payload);
    case data:
      return {Bytes(object.payload.begin(), object.payload.end())};
    case asciiString:
      return {asciiText(object.payload)};
    case utf16String:
      return {utf16Text(object.payload)};
    case uid:
      return {PropertyListUID{readBigEndian(object.payload)}};
    default:
      fail("an object has an unknown type");
  }
}

class Reader {
 public:
  explicit Reader(ByteView file) : file_(file), trailer_(readTrailer()) {
    objects_.resize(static_cast<std::size_t>(trailer_.objectCount));
    states_.resize(objects_.size(), State::unread);
    heights_.resize(objects_.size());
  }

  // Builds the root's objects without recursion: a container waits on the
  // stack until all that it refers to is built.
  PropertyList root() {
    const auto rootIndex = static_cast<std::size_t>(trailer_.rootIndex);
    enter(rootIndex);
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next < top.object.references.size()) {
        visit(top.object.references[top.next++]);
      } else {
        finish(top);
        open_.pop_back();
      }
    }
    return objects_[rootIndex];
  }

 private:
  enum class State : std::uint8_t { unread, open, built };
  struct Open {
    std::size_t index = 0;
    RawObject object;
    std::size_t next = 0;
  };

  ByteView bytes(std::size_t offset, std::size_t count) const {
    if (offset > file_.size() || count > file_.size() - offset) fail("an object lies outside the file");
    return file_.subspan(offset, count);
  }

  Trailer readTrailer() const {
    if (file_.size() < headerSize + trailerSize) fail("it is too short");
    if (!textOf(file_).starts_with("bplist0")) fail("its version is unknown");
    const ByteView raw = file_.last(trailerSize);
    const Trailer trailer{.offsetSize = raw[6],
                          .referenceSize = raw[7],
                          .objectCount = readBigEndian(raw.subspan(8, 8)),
                          .rootIndex = readBigEndian(raw.subspan(16, 8)),
                          .tableOffset = readBigEndian(raw.subspan(24, 8))};
    if (trailer.offsetSize < 1 || trailer.offsetSize > 8) fail("its offsets have an unknown size");
    if (trailer.referenceSize < 1 || trailer.referenceSize > 8) fail("its references have an unknown size");
    const std::size_t available = file_.size() - trailerSize;
    if (trailer.tableOffset < headerSize || trailer.tableOffset > available) fail("its offset table is missing");
    const std::uint64_t entries = (available - trailer.tableOffset) / trailer.offsetSize;
    if (trailer.objectCount > entries || trailer.objectCount > PropertyListLimits::objects) {
      fail("it claims more objects than it holds");
    }
    if (trailer.rootIndex >= trailer.objectCount) fail("it has no root object");
    return trailer;
  }

  // Objects of a true file never overlap, so all of them together fit into it.
  // The budget keeps a hostile file from being read many times over.
  ByteView charge(ByteView read) {
    charged_ += read.size();
    if (charged_ > file_.size()) fail("its objects overlap");
    return read;
  }

  std::size_t objectOffset(std::size_t index) const {
    const std::size_t entryOffset = static_cast<std::size_t>(trailer_.tableOffset) + index * trailer_.offsetSize;
    return static_cast<std::size_t>(readBigEndian(bytes(entryOffset, trailer_.offsetSize)));
  }

  RawObject readObject(std::size_t index) {
    std::size_t offset = objectOffset(index);
    const std::uint8_t first = charge(bytes(offset++, 1))[0];
    RawObject object{.marker = static_cast<std::uint8_t>(first >> 4), .detail = static_cast<std::uint8_t>(first & 0xF)};
    switch (object.marker) {
      case singleton:
        break;
      case integer:
      case real:
      case date:
        if (object.detail > 4) fail("a number has an unknown size");
        object.payload = charge(bytes(offset, std::size_t{1} << object.detail));
        break;
      case uid:
        if (object.detail > 7) fail("a reference has an unknown size");
        object.payload = charge(bytes(offset, object.detail + std::size_t{1}));
        break;
      default:
        readCounted(object, offset);
    }
    return object;
  }

  // Objects that say how many items they hold: in the low half of the first
  // byte or, where it is 0xF, in an integer object that follows.
  void readCounted(RawObject& object, std::size_t offset) {
    std::uint64_t count = object.detail;
    if (count == 0xF) {
      const std::uint8_t sizeMarker = charge(bytes(offset++, 1))[0];
      if (sizeMarker >> 4 != integer || (sizeMarker & 0xF) > 3) fail("a count is not a number");
      const std::size_t width = std::size_t{1} << (sizeMarker & 0xF);
      count = readBigEndian(charge(bytes(offset, width)));
      offset += width;
    }
    if (count > file_.size()) fail("an object lies outside the file");
    const auto items = static_cast<std::size_t>(count);
    switch (object.marker) {
      case data:
      case asciiString:
        object.payload = charge(bytes(offset, items));
        break;
      case utf16String:
        object.payload = charge(bytes(offset, items * 2));
        break;
      case array:
      case set:
        object.references = readReferences(offset, items);
        break;
      case dictionary:
        object.references = readReferences(offset, items * 2);
        break;
      default:
        fail("an object has an unknown type");
    }
  }

  std::vector<std::size_t> readReferences(std::size_t offset, std::size_t count) {
    const ByteView raw = charge(bytes(offset, count * trailer_.referenceSize));
    std::vector<std::size_t> references(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t index = readBigEndian(raw.subspan(i * trailer_.referenceSize, trailer_.referenceSize));
      if (index >= trailer_.objectCount) fail("a reference leads nowhere");
      references[i] = static_cast<std::size_t>(index);
    }
    return references;
  }

  void visit(std::size_t index) {
    if (states_[index] == State::open) fail("it refers to itself");
    if (states_[index] == State::unread) enter(index);
  }

  void enter(std::size_t index) {
    if (open_.size() >= PropertyListLimits::depth) fail("it is nested too deeply");
    states_[index] = State::open;
    open_.push_back({.index = index, .object = readObject(index)});
  }

  // Sharing builds a deep tree out of shallow pieces, and what is built is
  // destroyed level by level: its own depth counts, not that of the stack alone.
  void measure(const Open& done) {
    std::size_t below = 0;
    for (const std::size_t index : done.object.references) below = std::max<std::size_t>(below, heights_[index]);
    if (below >= PropertyListLimits::depth) fail("it is nested too deeply");
    heights_[done.index] = static_cast<std::uint16_t>(below + 1);
  }

  void finish(const Open& done) {
    measure(done);
    objects_[done.index] = PropertyList(containerOrLeaf(done.object));
    states_[done.index] = State::built;
  }

  PropertyListValue containerOrLeaf(const RawObject& object) const {
    if (object.marker == dictionary) return dictionaryValue(object.references);
    if (object.marker != array && object.marker != set) return leafValue(object);
    PropertyListArray items;
    items.reserve(object.references.size());
    for (const std::size_t index : object.references) items.push_back(objects_[index]);
    return {std::move(items)};
  }

  // The references are all keys first, then all values.
  PropertyListValue dictionaryValue(const std::vector<std::size_t>& references) const {
    const std::size_t count = references.size() / 2;
    PropertyListDictionary result;
    for (std::size_t i = 0; i < count; ++i) {
      const auto* key = objects_[references[i]].as<std::string>();
      if (key == nullptr) fail("a key is not text");
      result.insert_or_assign(*key, objects_[references[count + i]]);
    }
    return {std::move(result)};
  }

  ByteView file_;
  Trailer trailer_;
  std::size_t charged_ = 0;
  std::vector<PropertyList> objects_;
  std::vector<State> states_;
  std::vector<std::uint16_t> heights_;  // levels below and with an object that is built
  std::vector<Open> open_;
};

}  // namespace

PropertyList parseBinaryPropertyList(ByteView data) { return Reader(data).root(); }
