#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// Whose archive it is (docs/formats/library.md, "Whose archive").
namespace ArchiveOwner {

using JIDs = std::set<std::string, std::less<>>;  // canonical

// All that the library knows the owner by; empty where it does not know. Throws as SQLiteDB::forEachRow.
JIDs known(const SQLiteDB& database);
// Enters what it lacks of them. Tells whether there was anything.
bool enter(const SQLiteDB& database, const JIDs& own);

// Throws TidewellError::foreignArchive when a backup's owner is another than the library's. Numbers are compared with
// numbers and LIDs with LIDs alone, so that nothing is thrown where either side does not know its own.
void requireSame(const SQLiteDB& database, const ChatStorageSnapshot& snapshot);
// The same of the library in a content root, before anything there is changed; one that cannot be read so is
// anybody's.
void requireSame(const std::filesystem::path& contentRoot, const ChatStorageSnapshot& snapshot);

}  // namespace ArchiveOwner
