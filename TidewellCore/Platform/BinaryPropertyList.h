#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "TidewellCore/Platform/PropertyList.h"

// Version 00 of the binary property-list format, as documented in the comments of Apple's open-source
// CFBinaryPList.c. Every offset, count and reference that the data give is checked against them; all throw
// PropertyListError.

// One object where it lies in the file.
struct BinaryPropertyListObject {
  // The high half of its first byte.
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

  std::uint8_t marker = 0;
  std::uint8_t detail = 0;     // the low half
  ByteView payload;            // a container's references: a dictionary's are all keys first, then all values
  std::size_t references = 0;  // how many there are
  std::size_t size = 0;        // of all its bytes
};

// The objects of a file, each read when it is asked for. Good as long as the bytes are.
class BinaryPropertyListFile {
 public:
  explicit BinaryPropertyListFile(ByteView file);

  std::size_t size() const { return file_.size(); }
  std::size_t objectCount() const { return objectCount_; }
  std::size_t root() const { return root_; }
  // Of an index below `objectCount`, as `root`, `reference` and `entry` give them.
  BinaryPropertyListObject object(std::size_t index) const;
  // The object that a container refers to in a place below `references`.
  std::size_t reference(const BinaryPropertyListObject& container, std::size_t place) const;
  // The object under a key; of several the last. Absent where there is none, and for anything but a dictionary.
  std::optional<std::size_t> entry(const BinaryPropertyListObject& dictionary, std::string_view key) const;

  static bool isContainer(const BinaryPropertyListObject& object);
  // The value of anything else.
  static PropertyListValue leaf(const BinaryPropertyListObject& object);

 private:
  ByteView bytes(std::size_t offset, std::size_t count) const;
  std::size_t objectOffset(std::size_t index) const;
  std::uint64_t readCount(BinaryPropertyListObject& object, std::size_t offset) const;

  ByteView file_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::size_t objectCount_ = 0;
  std::size_t root_ = 0;
  std::size_t tableOffset_ = 0;
};

// The whole of it. Objects are read once each and shared, circular references are refused.
PropertyList parseBinaryPropertyList(ByteView data);
