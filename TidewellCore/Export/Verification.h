#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "TidewellCore/Crypto/BackupUnlockReport.h"
#include "TidewellCore/Crypto/PasswordKey.h"
#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/ExportProgress.h"

// What is to be verified.
struct VerifyJob {
  std::filesystem::path destination;
  std::optional<std::filesystem::path> backup;  // all of which is to be in the archive
  std::optional<std::string_view> password;     // of the backup; the caller's; must outlive the unlock
  const PasswordKey* passwordKey = nullptr;     // of an earlier scan; the caller's; must outlive the run
  UnlockObserver unlockReport;                  // as of a scan
};

// Looks at all of an export: whether every file of the ledger stands where it says with the bytes that it
// had, every chat's pages are what was written and tell as many messages as the library has, and the chat list
// names all chats and blocks; with a backup, whether all of its media and messages are there.
namespace Verification {

// The bytes of a medium are right when their digest is WhatsApp's own. Else they are compared with what the first
// verification of it found; this is kept in the library, and nothing else is changed. A file that differs from
// WhatsApp's digest the first time is not called damaged for that, since the digest may be of what was sent before the
// phone edited or transcoded it; with a backup that has a file of its size, it has to have that one's bytes. Throws
// TidewellError::ioFailure when there is no export with a library or another run works on it, TidewellError::cancelled,
// and what the database reports; what was found of media until then is kept. Of a backup it throws what an export of it
// does before it writes, TidewellError::foreignArchive among it. A damaged library is the only finding where there is
// one, and the backup is not asked then.
VerifySummary run(const VerifyJob& job, const RunControl& control = {});

}  // namespace Verification
