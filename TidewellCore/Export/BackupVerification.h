#pragma once

#include <functional>
#include <vector>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Export/VerifySummary.h"
#include "TidewellCore/Library/Library.h"

// Whether every message, as a backup has it, and every medium of it is in an archive. Nothing is written: what the
// backup tells is united with what the library keeps in memory alone.
namespace BackupVerification {

struct Ground {
  const BackupSource& backup;
  const Library& library;
  const std::filesystem::path& contentRoot;
};

// Called before each step with the name of what is looked at; what it throws is passed on.
using Step = std::function<void(const std::string& name)>;

// How often `compare` calls its step, at most.
std::int64_t stepCount(const BackupSource& backup);

struct Outcome {
  std::vector<VerifySummary::Finding> findings;
  // The library's places of chats that lack what their digest says was told: an export would pass them over.
  std::vector<std::size_t> forgetfulChats;
};

// One finding for the messages that a chat lacks, one for those of which it says less than the backup, and one for its
// media of a kind, in the order of the chats' JIDs; one for each medium whose file in the archive has another size.
// What the ledger says is there is not looked for on the disk, since the verification of the archive does. A medium
// that the backup has no file of is none. Throws what `step` and the library's database do.
Outcome compare(const Ground& ground, const Step& step);

}  // namespace BackupVerification
