#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveRelocation.h"
#include "TidewellCore/Destination/FolderManifest.h"

// Which folders of an export hold one chat between them.
//
// A folder is tied to a chat by its own name when that is a JID, by the folder
// manifest, and by the archive's chat list. Two JIDs are one chat when they
// differ in the letter case of the server alone, or when the manifest or the
// archive gives both, a phone's and a LID, one folder. A folder tied to two
// chats is ambiguous: it is never merged.
//
// The canonical folder of a chat is the one that the manifest names; else the
// one that the archive names; else, and among several so named, the one that
// shares the most bytes with the chat's other folders, then one that is not
// named after a JID, then the one that sorts first.
namespace FolderPairing {

// The sizes of a folder's files, by the key of their name.
using FolderListing = std::map<std::string, std::int64_t>;

struct Evidence {
  std::vector<std::string> folders;  // of the content root
  FolderAssignment manifest;
  std::vector<ArchiveRelocation::ChatReference> archive;
};

struct Pair {
  std::string canonicalFolder;
  std::string duplicateFolder;
  std::string jid;  // the phone's where a LID is known for it

  bool operator==(const Pair&) const = default;
};

struct Outcome {
  std::vector<Pair> pairs;  // by the canonical, then by the duplicate folder
  // The ambiguous folders, and those whose canonical folder is one of them or a link.
  std::int64_t skippedAmbiguousCount = 0;

  bool operator==(const Outcome&) const = default;
};

// `list` is asked about the folders of chats for which neither source decides.
Outcome find(const Evidence& evidence, const std::function<FolderListing(const std::string& folder)>& list);

// The JID that a folder's name is.
std::optional<std::string> jidIfLegacyFolder(std::string_view folder);
// The bytes of the files that both hold, by name and size. Negative sizes match nothing.
std::int64_t overlapBytes(const FolderListing& a, const FolderListing& b);

}  // namespace FolderPairing
