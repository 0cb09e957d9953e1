#include "TidewellCore/ChatData/EncodedMessage.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "TidewellCore/Platform/Base64.h"

namespace {

constexpr std::uint64_t earliestTime = 1'200'000'000;
constexpr std::uint64_t latestTime = 4'200'000'000;

// The shortest message that holds such a time has 6 bytes.
constexpr std::size_t shortestText = 8;

bool isPaddedRightly(std::string_view text) {
  const std::size_t digits = std::min(text.find('='), text.size());
  const std::size_t padding = text.size() - digits;
  if (padding > 2 || digits % 4 == 1) return false;
  return padding == 0 || text.size() % 4 == 0;
}

// Takes fields off the front of a message (protobuf.dev, "Encoding"). Every name is asked whether it is
// one, and most are none: ProtobufReader would throw for each of them.
class FieldReader {
 public:
  struct Field {
    std::uint64_t number = 0;
    std::optional<std::uint64_t> integer;  // of a field that is a varint
  };

  explicit FieldReader(ByteView bytes) : rest_(bytes) {}

  bool isAtEnd() const { return rest_.empty(); }

  // Absent for what is no field, or not all of one.
  std::optional<Field> next() {
    constexpr std::uint64_t largestNumber = (1U << 29) - 1;
    const auto tag = varint();
    if (!tag || *tag >> 3 == 0 || *tag >> 3 > largestNumber) return std::nullopt;
    Field field{.number = *tag >> 3};
    return takeValue(*tag & 7, field) ? std::optional(field) : std::nullopt;
  }

 private:
  bool takeValue(std::uint64_t wireType, Field& field) {
    if (wireType == 0) return (field.integer = varint()).has_value();
    if (wireType == 1) return skip(8);
    if (wireType == 2) return skip(varint());
    return wireType == 5 && skip(4);
  }

  std::optional<std::uint64_t> varint() {
    constexpr std::size_t longest = 10;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < std::min(longest, rest_.size()); ++i) {
      value |= static_cast<std::uint64_t>(rest_[i] & 0x7FU) << 7 * i;
      if (rest_[i] >= 0x80) continue;
      rest_ = rest_.subspan(i + 1);
      return value;
    }
    return std::nullopt;
  }

  bool skip(std::optional<std::uint64_t> count) {
    if (!count || *count > rest_.size()) return false;
    rest_ = rest_.subspan(*count);
    return true;
  }

  ByteView rest_;
};

bool isTime(std::optional<std::uint64_t> integer) {
  return integer && *integer >= earliestTime && *integer <= latestTime;
}

}  // namespace

bool EncodedMessage::holdsTime(std::string_view text) {
  if (text.size() < shortestText || !isPaddedRightly(text)) return false;
  const auto bytes = Base64::decode(text);
  if (!bytes) return false;
  bool isTimed = false;
  for (FieldReader fields(*bytes); !fields.isAtEnd();) {
    const auto field = fields.next();
    if (!field) return false;
    if (field->number == 1) isTimed = isTime(field->integer);  // of a field that is repeated the last counts
  }
  return isTimed;
}
