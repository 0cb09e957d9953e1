#pragma once

#include <optional>

#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// What the library keeps of the exports that told it something.
namespace KeptExports {

// In which pages were written.
struct Speech {
  TimeZone timeZone;
  Locale locale;

  bool operator==(const Speech&) const = default;
};

// As the last export had them, word for word; absent before the first.
std::optional<Speech> lastSpeech(const SQLiteDB& database);

}  // namespace KeptExports
