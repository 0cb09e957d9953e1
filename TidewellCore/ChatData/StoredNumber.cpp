#include "TidewellCore/ChatData/StoredNumber.h"

#include <cmath>

#include "TidewellCore/ChatData/BlobText.h"

std::optional<double> StoredNumber::real(const SQLiteRowView& row, TableReader::Column column) {
  const auto stored = row.number(column.place);
  return stored && std::isfinite(*stored) ? stored : std::nullopt;
}

std::optional<Date> StoredNumber::date(const SQLiteRowView& row, TableReader::Column column) {
  const auto seconds = real(row, column);
  return seconds ? std::optional(dateFromAppleTime(*seconds)) : std::nullopt;
}

std::optional<std::int64_t> StoredNumber::seconds(const SQLiteRowView& row, TableReader::Column column) {
  const auto stored = real(row, column);
  if (!stored || std::abs(*stored) > 1e15) return std::nullopt;
  return BlobText::seconds(std::llround(*stored));
}
