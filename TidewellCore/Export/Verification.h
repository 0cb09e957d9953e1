#pragma once

#include <filesystem>

#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/ExportProgress.h"

// Looks at all of an export: whether every file of the ledger stands where it says with the bytes that it
// had, every chat's pages are what was written and tell as many messages as the library has, and the chat list
// names all chats and blocks.
namespace Verification {

// The bytes of a medium are compared with what the first verification of it found; this is kept in the library, and
// nothing else is changed. Throws TidewellError::ioFailure when there is no export with a library or another run works
// on it, TidewellError::cancelled, and what the database reports; what was found of media until then is kept.
VerifySummary run(const std::filesystem::path& destination, const RunControl& control = {});

}  // namespace Verification
