#pragma once

#include "TidewellCore/ChatData/ChatTables.h"
#include "TidewellCore/ChatData/MediaPaths.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// The table of messages, read with what hangs on each row. Blobs are decoded row
// by row and not kept (docs/formats/messages.md).
namespace MessageTable {

// Adds the messages to tables whose chats and directory have been read. What is not
// read of them is counted. Throws TidewellError::invalidDatabase and ::cancelled.
void load(const SQLiteDB& database, const MediaPaths::Lookup& hasFile, ChatTables& tables);

}  // namespace MessageTable
