#include "TidewellCore/ChatData/RowLocation.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "TidewellCore/ChatData/BlobText.h"

namespace {

constexpr std::int64_t liveOrigin = 1;

bool isDigits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<Coordinates> coordinates(std::optional<double> latitude, std::optional<double> longitude) {
  // Also false for what is no number.
  const bool isPlace = latitude && longitude && std::abs(*latitude) <= 90 && std::abs(*longitude) <= 180;
  if (!isPlace) return std::nullopt;
  return Coordinates{.latitude = *latitude + 0.0, .longitude = *longitude + 0.0};  // and never −0
}

std::optional<double> number(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

// "latitude;longitude", which stands beside the columns.
std::optional<Coordinates> coordinatesInText(std::string_view text) {
  const auto middle = text.find(';');
  if (middle == std::string_view::npos) return std::nullopt;
  return coordinates(number(text.substr(0, middle)), number(text.substr(middle + 1)));
}

}  // namespace

SharedLocation RowLocation::read(const MessageRow& row) {
  auto place = coordinates(row.latitude, row.longitude);
  if (!place) place = coordinatesInText(row.vCardString.value_or(""));
  return {.coordinates = place,
          .name = BlobText::shortWords(row.title),
          .address = BlobText::shortWords(row.vCardName),
          .isLive = row.mediaOrigin == liveOrigin && isDigits(row.authorName.value_or(""))};
}
