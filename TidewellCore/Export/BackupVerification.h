#pragma once

#include <functional>
#include <vector>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/Library/Library.h"

// Whether every message and every medium of a backup is in an archive. Nothing is written: what the backup tells is
// united with what the library keeps in memory alone.
namespace BackupVerification {

struct Ground {
  const BackupSource& backup;
  const Library& library;
  const std::filesystem::path& contentRoot;
};

// Called before each step with the name of what is looked at; what it throws is passed on.
using Step = std::function<void(const std::string& name)>;

// How often `findings` calls its step, at most.
std::int64_t stepCount(const BackupSource& backup);

// One finding for the messages of a chat, and one for its media of a kind, in the order of the chats' JIDs; one for
// each medium whose file in the archive has another size. What the ledger says is there is not looked for on the disk,
// since the verification of the archive does. A medium that the backup has no file of is none. Throws what `step` and
// the library's database do.
std::vector<VerifySummary::Finding> findings(const Ground& ground, const Step& step);

}  // namespace BackupVerification
