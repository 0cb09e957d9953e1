#include "TidewellCore/Destination/OwnFiles.h"

#include <algorithm>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"

OwnFiles::Kind OwnFiles::kindOf(std::string_view name) {
  if (name == FolderNames::textTranscript || name == FolderNames::htmlTranscript) return Kind::transcript;
  if (std::ranges::find(memories, name) != memories.end()) return Kind::memory;
  if (name == cleanUpJournal || name == LibraryFile::journalName) return Kind::journal;
  if (name.starts_with(Files::partialPrefix)) return Kind::partial;
  return name == ".DS_Store" ? Kind::fileManagers : Kind::none;
}

bool OwnFiles::isMadeForChats(std::string_view name) {
  return kindOf(name) == Kind::transcript || FileNaming::hasExportStamp(name);
}
