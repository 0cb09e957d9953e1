#pragma once

#include <filesystem>
#include <string>

#include "TidewellCore/Platform/Cancellation.h"

namespace FileDigest {

// SHA-256 of a file's bytes in Base64. Throws std::filesystem::filesystem_error and TidewellError::cancelled.
std::string of(const std::filesystem::path& file, const CancellationCheck& isCancelled = {});

}  // namespace FileDigest
