#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Platform/Bytes.h"

// Bytes that are no protobuf message, or one beyond the limits.
class ProtobufError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What a reader refuses, so that hostile bytes cost neither time nor memory nor stack.
struct ProtobufLimits {
  static constexpr std::size_t bytes = 1 << 20;
  static constexpr std::size_t fields = 4'096;  // of one level, and numbers of one packed field
  static constexpr int levels = 8;
};

// Reads the fields of one level of a protobuf message (protobuf.dev, "Encoding")
// in the order in which they stand, without a schema and without copies; the bytes must outlive it.
//
//   for (ProtobufReader fields(bytes); fields.next();) {
//     if (fields.number() == 1) fields.read(title);
//     if (fields.number() == 2) readSize(fields.message());
//   }
//
// Whoever reads a message reads all of it or nothing: an error at any level is a
// ProtobufError, to be caught where the outermost reader is made. A level is
// checked to its end only when it is read to its end. Unknown fields are passed over
// unseen. A field of another wire type than it is asked for as holds nothing.
class ProtobufReader {
 public:
  // Throws ProtobufError when the bytes are too many.
  explicit ProtobufReader(ByteView message);

  // Goes on to the next field; false at the end. Throws ProtobufError for what is no field, or not all of one.
  bool next();
  // Of the current field: 1 and greater.
  std::uint32_t number() const { return number_; }

  // Each sets `value` when the current field holds one, so that of a repeated field the last counts.
  void read(std::optional<std::string>& value) const;
  void read(std::optional<std::int64_t>& value) const;
  void read(std::optional<double>& value) const;

  // Text that is UTF-8. A part of the message.
  std::optional<std::string_view> text() const;
  // A varint, negative ones as protobuf's int64 has them.
  std::optional<std::int64_t> integer() const;
  // A number of eight bytes that is finite.
  std::optional<double> real() const;
  // Whether the field is of the type that texts, packed numbers and messages have.
  bool isBytes() const { return type_ == Type::bytes; }
  // Empty when it is not.
  ByteView bytes() const;
  // Appends one number, or all of a packed field. Throws ProtobufError for one that is damaged or too long.
  void append(std::vector<std::int64_t>& values) const;
  // The message in the field; one without fields when it is of another type. Throws ProtobufError below the last level.
  ProtobufReader message() const;

 private:
  enum class Type : std::uint8_t { varint, fixed64, bytes, fixed32 };

  ProtobufReader(ByteView message, int level);
  void take(std::uint64_t wireType);

  ByteView rest_;
  int level_ = 1;
  std::size_t count_ = 0;
  std::uint32_t number_ = 0;
  Type type_ = Type::varint;
  std::uint64_t value_ = 0;  // of a field that is no bytes
  ByteView bytes_;
};

// Calls `read` with the message in each field of that number, and reads the level to its end.
template <typename Read>
void forEachMessage(ProtobufReader level, std::uint32_t number, Read read) {
  while (level.next()) {
    if (level.number() == number && level.isBytes()) read(level.message());
  }
}
