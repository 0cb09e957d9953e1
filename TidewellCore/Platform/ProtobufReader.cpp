#include "TidewellCore/Platform/ProtobufReader.h"

#include <bit>
#include <cmath>
#include <protozero/varint.hpp>

#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::uint64_t largestNumber = (1U << 29) - 1;

// protozero's own reader of fields cuts keys and lengths to 32 bits, so that a
// length of 2^32 + 1 passes for 1. Its varints are taken here, the fields are ours.
std::uint64_t takeVarint(ByteView& rest) {
  const char* const begin = textOf(rest).data();
  const char* end = begin;
  std::uint64_t value = 0;
  try {
    value = protozero::decode_varint(&end, begin + rest.size());
  } catch (const protozero::exception&) {
    throw ProtobufError("A varint has no end.");
  }
  const auto size = static_cast<std::size_t>(end - begin);
  if (size == protozero::max_varint_length && rest[size - 1] > 1) throw ProtobufError("A varint is too large.");
  rest = rest.subspan(size);
  return value;
}

ByteView takeBytes(ByteView& rest, std::uint64_t count) {
  if (count > rest.size()) throw ProtobufError("A field is longer than its message.");
  const ByteView bytes = rest.first(static_cast<std::size_t>(count));
  rest = rest.subspan(bytes.size());
  return bytes;
}

std::uint64_t littleEndian(ByteView bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) number |= std::uint64_t{bytes[i]} << 8 * i;
  return number;
}

}  // namespace

ProtobufReader::ProtobufReader(ByteView message) : ProtobufReader(message, 1) {}

ProtobufReader::ProtobufReader(ByteView message, int level) : rest_(message), level_(level) {
  if (message.size() > ProtobufLimits::bytes) throw ProtobufError("A message is too long.");
  if (level > ProtobufLimits::levels) throw ProtobufError("A message is nested too deep.");
}

bool ProtobufReader::next() {
  if (rest_.empty()) return false;
  if (++count_ > ProtobufLimits::fields) throw ProtobufError("A message has too many fields.");
  const std::uint64_t key = takeVarint(rest_);
  if (key >> 3 == 0 || key >> 3 > largestNumber) throw ProtobufError("A field has a number that there is not.");
  number_ = static_cast<std::uint32_t>(key >> 3);
  take(key & 7);
  return true;
}

void ProtobufReader::take(std::uint64_t wireType) {
  bytes_ = {};
  switch (wireType) {
    case 0:
      type_ = Type::varint;
      value_ = takeVarint(rest_);
      return;
    case 1:
      type_ = Type::fixed64;
      value_ = littleEndian(takeBytes(rest_, 8));
      return;
    case 2:
      type_ = Type::bytes;
      bytes_ = takeBytes(rest_, takeVarint(rest_));
      return;
    case 5:
      type_ = Type::fixed32;
      value_ = littleEndian(takeBytes(rest_, 4));
      return;
    default:
      throw ProtobufError("A field is of a type that nobody writes.");
  }
}

void ProtobufReader::read(std::optional<std::string>& value) const {
  if (const auto held = text()) value.emplace(*held);
}

void ProtobufReader::read(std::optional<std::int64_t>& value) const {
  if (const auto held = integer()) value = held;
}

void ProtobufReader::read(std::optional<double>& value) const {
  if (const auto held = real()) value = held;
}

std::optional<std::string_view> ProtobufReader::text() const {
  if (type_ != Type::bytes || !Text::isValid(textOf(bytes_))) return std::nullopt;
  return textOf(bytes_);
}

std::optional<std::int64_t> ProtobufReader::integer() const {
  if (type_ != Type::varint) return std::nullopt;
  return static_cast<std::int64_t>(value_);
}

std::optional<double> ProtobufReader::real() const {
  const auto number = std::bit_cast<double>(value_);
  if (type_ != Type::fixed64 || !std::isfinite(number)) return std::nullopt;
  return number;
}

ByteView ProtobufReader::bytes() const { return bytes_; }

void ProtobufReader::append(std::vector<std::int64_t>& values) const {
  if (const auto single = integer()) values.push_back(*single);
  std::size_t count = 0;
  for (ByteView packed = bytes_; !packed.empty();) {
    if (++count > ProtobufLimits::fields) throw ProtobufError("A field has too many numbers.");
    values.push_back(static_cast<std::int64_t>(takeVarint(packed)));
  }
}

ProtobufReader ProtobufReader::message() const { return {bytes_, level_ + 1}; }
