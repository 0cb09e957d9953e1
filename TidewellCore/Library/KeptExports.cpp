#include "TidewellCore/Library/KeptExports.h"

#include <string>

std::optional<KeptExports::Speech> KeptExports::lastSpeech(const SQLiteDB& database) {
  std::optional<Speech> speech;
  database.forEachRow("SELECT zone, locale FROM export ORDER BY id DESC LIMIT 1", [&](const SQLiteRowView& row) {
    speech = Speech{.timeZone = {.identifier = std::string(row.text(0).value_or(""))},
                    .locale = {.identifier = std::string(row.text(1).value_or(""))}};
  });
  return speech;
}
