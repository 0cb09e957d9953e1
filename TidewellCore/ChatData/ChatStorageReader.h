#pragma once

#include <filesystem>

#include "TidewellCore/ChatData/ChatTables.h"

namespace ChatStorageReader {

// Reads a working copy of ChatStorage.sqlite (docs/formats/chat-schema.md).
// A missing table leaves its part empty; what is not read of the messages is counted. Throws
// TidewellError::chatStorageUnreadable and TidewellError::invalidDatabase.
ChatTables load(const std::filesystem::path& copiedDatabase);

}  // namespace ChatStorageReader
