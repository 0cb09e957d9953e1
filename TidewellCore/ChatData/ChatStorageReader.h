#pragma once

#include <filesystem>

#include "TidewellCore/ChatData/ChatTables.h"
#include "TidewellCore/ChatData/MediaPaths.h"
#include "TidewellCore/Platform/Cancellation.h"

namespace ChatStorageReader {

// What a chat database is read with.
struct Setting {
  MediaPaths::Lookup hasFile;
  CancellationCheck isCancelled;
};

// Reads a working copy of ChatStorage.sqlite (docs/formats/chat-schema.md).
// A missing table leaves its part empty; what is not read of the messages is counted. Throws
// TidewellError::chatStorageUnreadable, ::invalidDatabase and ::cancelled.
ChatTables load(const std::filesystem::path& copiedDatabase, const Setting& setting = {});

}  // namespace ChatStorageReader
