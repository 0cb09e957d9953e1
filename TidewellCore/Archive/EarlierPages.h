#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "TidewellCore/Library/LibraryUpdate.h"

// What the pages of an export tell that has no library yet, or has lost it
// (docs/formats/chat-archive.md). They may be somebody's: what is not as it should be is passed over,
// and nothing outside the content root is looked at.
class EarlierPages {
 public:
  // `folders` are those that the export remembers, by JID: a chat that no list names any more may still have its file.
  EarlierPages(std::filesystem::path contentRoot, std::map<std::string, std::string> folders)
      : contentRoot_(std::move(contentRoot)), folders_(std::move(folders)) {}

  // Hands over one chat after another, its media entered into `ledger`, which knows this export's already. Of a
  // chat's file that was cut, what stands before, and from the blocks what they have of the rest. Files that cannot
  // be read get another name, so that no new page takes their place. Returns sentences for people, in English, of
  // what may be missing. Throws what `take` does, and what gives no file another name.
  std::vector<std::string> forEachChat(MediaLedger& ledger,
                                       const std::function<void(const LibraryUpdate::EarlierChat&)>& take) const;

 private:
  std::filesystem::path contentRoot_;
  std::map<std::string, std::string> folders_;
};
