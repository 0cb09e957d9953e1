#include "TidewellCore/Platform/BinaryPropertyList.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using Object = BinaryPropertyListObject;

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

[[noreturn]] void fail(const char* reason) {
  throw PropertyListError(std::string("The property list is damaged: ") + reason + ".");
}

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

// Objects of a true file never overlap, so all of them together fit into it; the
// budget keeps a hostile file from being read many times over.
class Reader {
 public:
  explicit Reader(ByteView file)
      : file_(file),
        objects_(file_.objectCount()),
        states_(file_.objectCount(), State::unread),
        heights_(file_.objectCount()) {}

  // Builds the root's objects without recursion: a container waits on the
  // stack until all that it refers to is built.
  PropertyList root() {
    enter(file_.root());
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next < top.object.references) {
        visit(file_.reference(top.object, top.next++));
      } else {
        finish(top);
        open_.pop_back();
      }
    }
    return objects_[file_.root()];
  }

 private:
  enum class State : std::uint8_t { unread, open, built };
  struct Open {
    std::size_t index = 0;
    Object object;
    std::size_t next = 0;
  };

  void visit(std::size_t index) {
    if (states_[index] == State::open) fail("it refers to itself");
    if (states_[index] == State::unread) enter(index);
  }

  void enter(std::size_t index) {
    if (open_.size() >= PropertyListLimits::depth) fail("it is nested too deeply");
    states_[index] = State::open;
    open_.push_back({.index = index, .object = file_.object(index)});
    charged_ += open_.back().object.size;
    if (charged_ > file_.size()) fail("its objects overlap");
  }

  // Sharing builds a deep tree out of shallow pieces, and what is built is
  // destroyed level by level: its own depth counts, not that of the stack alone.
  void measure(const Open& done) {
    std::size_t below = 0;
    for (std::size_t i = 0; i < done.object.references; ++i) {
      below = std::max<std::size_t>(below, heights_[file_.reference(done.object, i)]);
    }
    if (below >= PropertyListLimits::depth) fail("it is nested too deeply");
    heights_[done.index] = static_cast<std::uint16_t>(below + 1);
  }

  void finish(const Open& done) {
    measure(done);
    objects_[done.index] = PropertyList(containerOrLeaf(done.object));
    states_[done.index] = State::built;
  }

  PropertyListValue containerOrLeaf(const Object& object) const {
    if (object.marker == Object::dictionary) return dictionaryValue(object);
    if (!BinaryPropertyListFile::isContainer(object)) return BinaryPropertyListFile::leaf(object);
    PropertyListArray items;
    items.reserve(object.references);
    for (std::size_t i = 0; i < object.references; ++i) items.push_back(objects_[file_.reference(object, i)]);
    return {std::move(items)};
  }

  PropertyListValue dictionaryValue(const Object& object) const {
    const std::size_t count = object.references / 2;
    PropertyListDictionary result;
    for (std::size_t i = 0; i < count; ++i) {
      const auto* key = objects_[file_.reference(object, i)].as<std::string>();
      if (key == nullptr) fail("a key is not text");
      result.insert_or_assign(*key, objects_[file_.reference(object, count + i)]);
    }
    return {std::move(result)};
  }

  BinaryPropertyListFile file_;
  std::size_t charged_ = 0;
  std::vector<PropertyList> objects_;
  std::vector<State> states_;
  std::vector<std::uint16_t> heights_;  // levels below and with an object that is built
  std::vector<Open> open_;
};

}  // namespace

BinaryPropertyListFile::BinaryPropertyListFile(ByteView file) : file_(file) {
  if (file.size() < headerSize + trailerSize) fail("it is too short");
  if (!textOf(file).starts_with("bplist0")) fail("its version is unknown");
  const ByteView trailer = file.last(trailerSize);
  offsetSize_ = trailer[6];
  referenceSize_ = trailer[7];
  const std::uint64_t objectCount = readBigEndian(trailer.subspan(8, 8));
  const std::uint64_t root = readBigEndian(trailer.subspan(16, 8));
  const std::uint64_t tableOffset = readBigEndian(trailer.subspan(24, 8));
  if (offsetSize_ < 1 || offsetSize_ > 8) fail("its offsets have an unknown size");
  if (referenceSize_ < 1 || referenceSize_ > 8) fail("its references have an unknown size");
  const std::size_t available = file.size() - trailerSize;
  if (tableOffset < headerSize || tableOffset > available) fail("its offset table is missing");
  const std::uint64_t entries = (available - tableOffset) / offsetSize_;
  if (objectCount > entries || objectCount > PropertyListLimits::objects) fail("it claims more objects than it holds");
  if (root >= objectCount) fail("it has no root object");
  objectCount_ = static_cast<std::size_t>(objectCount);
  root_ = static_cast<std::size_t>(root);
  tableOffset_ = static_cast<std::size_t>(tableOffset);
}

ByteView BinaryPropertyListFile::bytes(std::size_t offset, std::size_t count) const {
  if (offset > file_.size() || count > file_.size() - offset) fail("an object lies outside the file");
  return file_.subspan(offset, count);
}

std::size_t BinaryPropertyListFile::objectOffset(std::size_t index) const {
  return static_cast<std::size_t>(readBigEndian(bytes(tableOffset_ + index * offsetSize_, offsetSize_)));
}

// How many items the object holds: in the low half of its first byte or, where
// it is 0xF, in an integer object that follows.
std::uint64_t BinaryPropertyListFile::readCount(Object& object, std::size_t offset) const {
  if (object.detail != 0xF) return object.detail;
  const std::uint8_t sizeMarker = bytes(offset, 1)[0];
  if (sizeMarker >> 4 != Object::integer || (sizeMarker & 0xF) > 3) fail("a count is not a number");
  const std::size_t width = std::size_t{1} << (sizeMarker & 0xF);
  object.size += 1 + width;
  return readBigEndian(bytes(offset + 1, width));
}

BinaryPropertyListObject BinaryPropertyListFile::object(std::size_t index) const {
  const std::size_t offset = objectOffset(index);
  const std::uint8_t first = bytes(offset, 1)[0];
  Object object{.marker = static_cast<std::uint8_t>(first >> 4),
                .detail = static_cast<std::uint8_t>(first & 0xF),
                .payload = {},
                .size = 1};
  std::size_t payloadSize = 0;
  switch (object.marker) {
    case Object::singleton:
      break;
    case Object::integer:
    case Object::real:
    case Object::date:
      if (object.detail > 4) fail("a number has an unknown size");
      payloadSize = std::size_t{1} << object.detail;
      break;
    case Object::uid:
      if (object.detail > 7) fail("a reference has an unknown size");
      payloadSize = object.detail + std::size_t{1};
      break;
    case Object::data:
    case Object::asciiString:
    case Object::utf16String:
    case Object::array:
    case Object::set:
    case Object::dictionary: {
      const std::uint64_t count = readCount(object, offset + 1);
      if (count > file_.size()) fail("an object lies outside the file");
      const auto items = static_cast<std::size_t>(count);
      if (isContainer(object)) object.references = object.marker == Object::dictionary ? items * 2 : items;
      const std::size_t ofText = object.marker == Object::utf16String ? items * 2 : items;
      payloadSize = isContainer(object) ? object.references * referenceSize_ : ofText;
      break;
    }
    default:
      fail("an object has an unknown type");
  }
  object.payload = bytes(offset + object.size, payloadSize);
  object.size += payloadSize;
  return object;
}

std::size_t BinaryPropertyListFile::reference(const Object& container, std::size_t place) const {
  const std::uint64_t index = readBigEndian(container.payload.subspan(place * referenceSize_, referenceSize_));
  if (index >= objectCount_) fail("a reference leads nowhere");
  return static_cast<std::size_t>(index);
}

std::optional<std::size_t> BinaryPropertyListFile::entry(const Object& dictionary, std::string_view key) const {
  if (dictionary.marker != Object::dictionary) return std::nullopt;
  const std::size_t count = dictionary.references / 2;
  for (std::size_t i = count; i-- > 0;) {
    const Object name = object(reference(dictionary, i));
    // No text takes more than twice its UTF-8 in UTF-16; many references may lead to one that is long.
    const bool mayBeKey = name.marker == Object::utf16String && name.payload.size() <= key.size() * 2;
    const bool isKey =
        name.marker == Object::asciiString ? textOf(name.payload) == key : mayBeKey && utf16Text(name.payload) == key;
    if (isKey) return reference(dictionary, count + i);
  }
  return std::nullopt;
}

bool BinaryPropertyListFile::isContainer(const Object& object) {
  return object.marker == Object::array || object.marker == Object::set || object.marker == Object::dictionary;
}

PropertyListValue BinaryPropertyListFile::leaf(const Object& object) {
  switch (object.marker) {
    case Object::singleton:
      return singletonValue(object.detail);
    case Object::integer:
      return integerValue(object.payload);
    case Object::real:
      return {realNumber(object.payload)};
    case Object::date:
      return dateValue(object.payload);
    case Object::data:
      return {Bytes(object.payload.begin(), object.payload.end())};
    case Object::asciiString:
      return {asciiText(object.payload)};
    case Object::utf16String:
      return {utf16Text(object.payload)};
    case Object::uid:
      return {PropertyListUID{readBigEndian(object.payload)}};
    default:
      fail("an object has an unknown type");
  }
}

PropertyList parseBinaryPropertyList(ByteView data) { return Reader(data).root(); }
