#include "TidewellCore/ChatData/StoredNumber.h"

#include <charconv>
#include <cmath>

#include "TidewellCore/ChatData/BlobText.h"

namespace {

std::optional<double> number(const SQLiteValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(&value)) return *real;
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return std::nullopt;
  double parsed = 0;
  const char* const end = text->data() + text->size();
  const auto [rest, error] = std::from_chars(text->data(), end, parsed);
  return error == std::errc() && rest == end ? std::optional(parsed) : std::nullopt;
}

}  // namespace

std::optional<double> StoredNumber::real(const SQLiteValue* value) {
  const auto stored = value == nullptr ? std::nullopt : number(*value);
  return stored && std::isfinite(*stored) ? stored : std::nullopt;
}

std::optional<Date> StoredNumber::date(const SQLiteValue* value) {
  const auto seconds = real(value);
  return seconds ? std::optional(dateFromAppleTime(*seconds)) : std::nullopt;
}

std::optional<std::int64_t> StoredNumber::seconds(const SQLiteValue* value) {
  const auto stored = real(value);
  if (!stored || std::abs(*stored) > 1e15) return std::nullopt;
  return BlobText::seconds(std::llround(*stored));
}
