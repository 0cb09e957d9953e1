#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Platform/DateText.h"

// What somebody wants of a backup, in their own words.
struct Selection {
  std::vector<std::string> chats;     // names, numbers or JIDs: these chats alone; every chat when there are none
  std::vector<std::string> notChats;  // the same of chats that are left out
  std::optional<Day> since;           // the first day that is wanted
  std::optional<Day> until;           // the last one

  bool operator==(const Selection&) const = default;
};
