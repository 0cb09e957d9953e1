#include "TidewellCore/ChatData/BlobText.h"

#include <charconv>

#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/Platform/Text.h"

std::optional<std::string> BlobText::words(std::optional<std::string_view> text) {
  if (!text) return std::nullopt;
  const std::string_view trimmed = Text::trimmedPart(*text);
  return trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
}

std::optional<std::string> BlobText::shortWords(std::optional<std::string_view> text) {
  auto whole = words(text);
  if (whole && whole->size() > longestShortWords) return Text::cutToBytes(*whole, longestShortWords);
  return whole;
}

bool BlobText::isReadable(std::optional<std::string_view> text) {
  const std::string_view trimmed = Text::trimmedPart(text.value_or(""));
  if (trimmed.empty() || StoredJID::checked(trimmed)) return false;
  return !trimmed.starts_with("{\"") && !trimmed.starts_with("[{") && !NameResolver::looksLikeOpaqueBlob(trimmed);
}

std::optional<std::int64_t> BlobText::seconds(std::optional<std::int64_t> number) {
  constexpr std::int64_t tenYears = 3'650LL * 86'400;
  return number && *number >= 0 && *number <= tenYears ? number : std::nullopt;
}

std::optional<std::int64_t> BlobText::secondsInText(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return seconds(number);
}
