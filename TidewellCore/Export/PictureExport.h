#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Library/Library.h"

// The part of an export that copies profile pictures for the chats of the library.
namespace PictureExport {

// Where the picture of each chat stands now that the backup has one of: paths from the content root, by the chat's
// page ID.
using Pictures = std::map<std::string, std::string>;

struct Outcome {
  Pictures pictures;
  std::vector<std::string> doubtful;  // as in ProfilePictures::Outcome
};

struct Place {
  const std::filesystem::path& destination;
  const std::filesystem::path& contentRoot;
};

// A picture that a newer backup brought stays. What cannot be read or written is recorded in `failures`. Throws
// TidewellError::cancelled, and TidewellError::ioFailure for a backup that was taken away.
Outcome copy(const BackupSource& backup, const Library& library, const Place& place, FailureLog& failures,
             const CancellationCheck& isCancelled);

}  // namespace PictureExport
