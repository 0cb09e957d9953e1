#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "TidewellCore/Platform/RawValue.h"

// What a verification looked at and found.
struct VerifySummary {
  enum class Kind {
    missing,     // a file is not there
    changed,     // a file is not what was written
    unreadable,  // a file cannot be read
    unfinished,  // the pages of a chat do not show what the library knows
    library,     // the library contradicts the pages or itself
    notArchived  // what the backup holds is not in the archive
  };
  struct Finding {
    Kind kind = Kind::missing;
    std::string place;    // of the file, from the content root; of a chat, or what is absent of it, its name
    std::string message;  // a sentence for people, in English, that says what to do

    bool operator==(const Finding&) const = default;
  };

  std::int64_t mediaCount = 0;
  std::int64_t chatCount = 0;
  std::int64_t messageCount = 0;    // of the library
  std::int64_t newDigestCount = 0;  // of media whose digest was kept: those read for the first time, mostly
  std::vector<Finding> findings;    // none when all is right
  // Of a backup that could not be read whole, so that what it lacks was not looked for: sentences for people, in
  // English.
  std::vector<std::string> warnings;

  bool operator==(const VerifySummary&) const = default;
};

constexpr std::array<std::pair<VerifySummary::Kind, std::string_view>, 6> rawValueTable(VerifySummary::Kind) {
  using enum VerifySummary::Kind;
  return {{{missing, "missing"},
           {changed, "changed"},
           {unreadable, "unreadable"},
           {unfinished, "unfinished"},
           {library, "library"},
           {notArchived, "notArchived"}}};
}
