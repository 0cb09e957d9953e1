#pragma once

#include <string>
#include <string_view>
#include <vector>

// One property of a vCard: "item1.TEL;type=CELL;waid=15550000009:+1 555 000 0009".
struct VCardProperty {
  std::string name;   // in capitals, without its group
  std::string waID;   // of the parameter "waid", a telephone number's digits; empty when there is none
  std::string value;  // unfolded and decoded, its backslashes as they are; UTF-8

  bool operator==(const VCardProperty&) const = default;
};

namespace VCardProperties {

// Those that name and number a contact (FN, N, ORG, TEL, EMAIL) in their order, as many as `most`.
std::vector<VCardProperty> read(std::string_view card, std::size_t most);

inline constexpr std::size_t longestValue = 10'000;  // bytes; what follows is cut off

}  // namespace VCardProperties
