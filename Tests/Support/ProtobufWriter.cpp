#include "Tests/Support/ProtobufWriter.h"

#include <protozero/pbf_writer.hpp>
#include <string>

namespace Fixture {

namespace {

// Appends what `write` writes.
template <typename Write>
void add(Bytes& bytes, Write write) {
  std::string written;
  protozero::pbf_writer writer(written);
  write(writer);
  append(bytes, bytesOf(written));
}

}  // namespace

Protobuf& Protobuf::integer(std::uint32_t field, std::int64_t value) {
  add(bytes_, [&](protozero::pbf_writer& writer) { writer.add_int64(field, value); });
  return *this;
}

Protobuf& Protobuf::real(std::uint32_t field, double value) {
  add(bytes_, [&](protozero::pbf_writer& writer) { writer.add_double(field, value); });
  return *this;
}

Protobuf& Protobuf::fixed32(std::uint32_t field, std::uint32_t value) {
  add(bytes_, [&](protozero::pbf_writer& writer) { writer.add_fixed32(field, value); });
  return *this;
}

Protobuf& Protobuf::text(std::uint32_t field, std::string_view value) {
  add(bytes_, [&](protozero::pbf_writer& writer) { writer.add_bytes(field, value.data(), value.size()); });
  return *this;
}

Protobuf& Protobuf::message(std::uint32_t field, const Protobuf& value) {
  return text(field, {reinterpret_cast<const char*>(value.bytes_.data()), value.bytes_.size()});
}

Protobuf& Protobuf::packed(std::uint32_t field, std::initializer_list<std::int64_t> values) {
  add(bytes_,
      [&](protozero::pbf_writer& writer) { writer.add_packed_int64(field, std::begin(values), std::end(values)); });
  return *this;
}

Protobuf& Protobuf::append(const Protobuf& other) {
  Fixture::append(bytes_, other.bytes_);
  return *this;
}

}  // namespace Fixture
