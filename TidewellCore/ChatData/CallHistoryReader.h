#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/PastCall.h"

namespace CallHistoryReader {

// Reads what a working copy of CallHistory.sqlite holds, those without a date first, then the
// oldest first. Tables and columns that are not there leave their fields empty; returns false
// when one is missing that every version has.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase.
bool load(const std::filesystem::path& copiedDatabase, std::vector<PastCall>& calls);

inline constexpr std::size_t mostParticipants = 1'000;  // of one call

}  // namespace CallHistoryReader
