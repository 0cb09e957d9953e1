#pragma once

#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Export/FailureLog.h"
#include "TidewellCore/Export/LibraryFolders.h"
#include "TidewellCore/Export/PictureExport.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/Library/LibraryUpdate.h"
#include "TidewellCore/MessageFormat.h"

// The part of an export that people read: the transcripts in the chats'
// folders and the Chat Archive. It is made from the library alone.
namespace ArchiveExport {

struct Source {
  const Library& library;                   // for all that is told
  const LibraryFolders::Folders& folders;   // of its chats
  const PictureExport::Pictures& pictures;  // that were copied since the library was told of pictures
};

struct Setting {
  ChatArchiveWriter::Setting archive;
  const FlushPoint& disk;         // of the destination
  const MediaKinds& kinds;        // that the export was asked for
  const MessageFormats& formats;  // that are asked for; those that stand are kept as well
  bool isAllStale = false;        // every page is made, and written where the file has other bytes
};

struct Outcome {
  std::int64_t transcriptCount = 0;  // files that stand, be they new or not
  std::filesystem::path page;
  LibraryUpdate::Pages pages;            // for the library to keep
  std::int64_t unresolvedLinkCount = 0;  // messages with a medium of a wanted kind that is not in the export
};

// Makes the pages of the chats that changed since the library was told of theirs, and of those whose files do not
// stand as they were left. Holds one chat's messages in memory at a time. What cannot be written of one
// chat is recorded in `failures`; what concerns the whole
// archive is thrown as the file system reports it. `progress` is in a phase of one unit for each chat. Throws
// TidewellError::cancelled.
Outcome write(const Source& source, const Setting& setting, FailureLog& failures, const CancellationCheck& isCancelled,
              ProgressReporter& progress);

}  // namespace ArchiveExport
