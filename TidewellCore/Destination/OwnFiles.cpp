#include "TidewellCore/Destination/OwnFiles.h"

#include <algorithm>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"

namespace {

constexpr std::array<std::string_view, 4> transcripts{FolderNames::textTranscript, FolderNames::htmlTranscript,
                                                      FolderNames::jsonMessages, FolderNames::csvMessages};

}  // namespace

OwnFiles::Kind OwnFiles::kindOf(std::string_view name) {
  if (std::ranges::find(transcripts, name) != transcripts.end()) return Kind::transcript;
  if (std::ranges::find(memories, name) != memories.end()) return Kind::memory;
  if (name == cleanUpJournal || name == LibraryFile::journalName) return Kind::journal;
  if (name.starts_with(Files::partialPrefix)) return Kind::partial;
  return name == ".DS_Store" ? Kind::fileManagers : Kind::none;
}

bool OwnFiles::isMadeForChats(std::string_view name) {
  return kindOf(name) == Kind::transcript || FileNaming::hasExportStamp(name);
}
