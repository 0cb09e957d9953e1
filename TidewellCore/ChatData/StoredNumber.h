#pragma once

#include <optional>

#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/DateText.h"

// Numbers of a column in whichever form a row stores them.
namespace StoredNumber {

// A finite number; text that is one and nothing else too.
std::optional<double> real(const SQLiteRowView& row, TableReader::Column column);
// Seconds since 2001 as Core Data counts them.
std::optional<Date> date(const SQLiteRowView& row, TableReader::Column column);
// A length of time in whole seconds, rounded; absent for one that BlobText::seconds refuses.
std::optional<std::int64_t> seconds(const SQLiteRowView& row, TableReader::Column column);

}  // namespace StoredNumber
