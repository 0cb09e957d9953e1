#pragma once

#include <optional>

#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// Numbers of a column in whichever form it stores them. A null pointer holds none.
namespace StoredNumber {

// A finite number; text that is one and nothing else too.
std::optional<double> real(const SQLiteValue* value);
// Seconds since 2001 as Core Data counts them.
std::optional<Date> date(const SQLiteValue* value);
// A length of time in whole seconds, rounded; absent for one that BlobText::seconds refuses.
std::optional<std::int64_t> seconds(const SQLiteValue* value);

}  // namespace StoredNumber
