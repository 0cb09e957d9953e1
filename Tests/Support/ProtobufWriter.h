#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "Tests/Support/Bytes.h"

namespace Fixture {

// Writes a protobuf message field after field, by protozero's writer:
//   Protobuf().text(5, "3A0F").message(19, Protobuf().text(1, "words")).bytes()
class Protobuf {
 public:
  Protobuf& integer(std::uint32_t field, std::int64_t value);
  Protobuf& real(std::uint32_t field, double value);
  Protobuf& fixed32(std::uint32_t field, std::uint32_t value);
  Protobuf& text(std::uint32_t field, std::string_view value);
  Protobuf& message(std::uint32_t field, const Protobuf& value);
  Protobuf& packed(std::uint32_t field, std::initializer_list<std::int64_t> values);
  // The fields of the other after those that are there.
  Protobuf& append(const Protobuf& other);

  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

}  // namespace Fixture
