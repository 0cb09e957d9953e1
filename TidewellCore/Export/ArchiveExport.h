#pragma once

#include <vector>

#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/PlannedChat.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/Library/LibraryUpdate.h"
#include "TidewellCore/MessageFormat.h"

// The part of an export that people read: the transcripts in the chats'
// folders, the profile pictures and the Chat Archive.
namespace ArchiveExport {

struct Source {
  const BackupSource& backup;             // for the profile pictures
  const std::vector<PlannedChat>& chats;  // for the chats' folders
  const Library& library;                 // for all that is told
};

struct Setting {
  ChatArchiveWriter::Setting archive;
  Locale locale;            // of the dates in transcripts
  const MediaKinds& kinds;  // that the export was asked for
  const MessageFormats& formats;
};

struct Outcome {
  std::int64_t transcriptCount = 0;  // files that stand, be they new or not
  std::filesystem::path page;
  LibraryUpdate::Pages pages;            // for the library to keep
  std::int64_t unresolvedLinkCount = 0;  // messages with a medium of a wanted kind that is not in the export
};

// Makes the pages of the chats that changed since the library was told of theirs, and of those whose files do not
// stand as they were left. Holds one chat's messages in memory at a time. What cannot be written of one
// chat, or is no longer in the backup, is recorded in `failures`; what concerns the whole
// archive is thrown as the file system reports it. Throws TidewellError::cancelled.
Outcome write(const Source& source, const Setting& setting, FailureLog& failures, const CancellationCheck& isCancelled,
              ProgressReporter& progress);

}  // namespace ArchiveExport
