#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/PastCall.h"

namespace CallHistoryReader {

// What a working copy of CallHistory.sqlite holds, those without a date first, then the
// oldest first. Tables and columns that are not there leave their fields empty.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase.
std::vector<PastCall> load(const std::filesystem::path& copiedDatabase);

inline constexpr std::size_t mostParticipants = 1'000;  // of one call

}  // namespace CallHistoryReader
