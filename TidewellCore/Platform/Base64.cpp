#include "TidewellCore/Platform/Base64.h"

#include <algorithm>

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view blanks = " \t\r\n";

}  // namespace

std::optional<Bytes> Base64::decode(std::string_view text) {
  Bytes result;
  result.reserve(text.size() / 4 * 3);
  std::uint32_t pending = 0;
  int pendingBits = 0;
  bool ended = false;
  for (const char c : text) {
    if (blanks.find(c) != std::string_view::npos) continue;
    if (c == '=') {
      ended = true;
      continue;
    }
    const auto value = alphabet.find(c);
    if (ended || value == std::string_view::npos) return std::nullopt;
    pending = (pending << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFFF;
    pendingBits += 6;
    if (pendingBits < 8) continue;
    pendingBits -= 8;
    result.push_back(static_cast<std::uint8_t>(pending >> pendingBits));
  }
  return result;
}

std::string Base64::encode(ByteView bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const ByteView group = bytes.subspan(i, std::min<std::size_t>(3, bytes.size() - i));
    std::uint32_t bits = 0;
    for (std::size_t j = 0; j < 3; ++j) bits = bits << 8 | (j < group.size() ? group[j] : 0U);
    for (std::size_t j = 0; j < 4; ++j) text += j <= group.size() ? alphabet[bits >> (18 - 6 * j) & 63U] : '=';
  }
  return text;
}
