#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Export/KnownFiles.h"
#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/Bytes.h"

// Decides, before a byte is copied, where every file goes and what is there already.
namespace ExportPlanner {

// A media file that the export wants.
struct Request {
  std::string source;        // its path in the backup, as text for a tenth of the memory; empty when it has none
  std::string relativePath;  // "Message/Media/…"
  CanonicalJID chatJID;
  MediaKind kind = MediaKind::documents;
  std::int64_t sourceSize = 0;  // bytes of plaintext; negative when the stored file is missing or cut short
  std::optional<Date> date;
  std::optional<Bytes> encryptionKey;  // wrapped; absent for what is stored plain, empty when the backup has lost it
  bool isShorterThanRecorded = false;  // by the phone: it may have lost its end

  bool operator==(const Request&) const = default;
};

// The name, in its plain form, that an export gives the file of a request today.
using Naming = std::function<std::string(const Request&)>;

// Copied out of the backup.
struct Restored {
  bool operator==(const Restored&) const = default;
};
// Moved out of a former folder of its chat, where an earlier export put it.
struct Moved {
  ExportPlace from;

  bool operator==(const Moved&) const = default;
};
// There already, by an earlier export.
struct Present {
  bool operator==(const Present&) const = default;
};
// Not to be had: the backup holds no whole file of it.
struct Lost {
  bool operator==(const Lost&) const = default;
};
using Fate = std::variant<Restored, Moved, Present, Lost>;

// What is known of a file that an earlier export copied.
enum class Soundness {
  known,    // its end was as that of a whole file
  unknown,  // as after an export that was broken off
  doubtful  // its end was not
};

// What becomes of a request.
struct PlannedCopy {
  std::string source;  // as in the request
  ExportPlace dest;    // named as desired, as a variant of that, or as an earlier export named it
  std::optional<Date> date;
  std::string relativePath;
  std::string desiredName;  // in the form that the destination takes; what it is called already when it is known
  CanonicalJID chatJID;
  MediaKind kind = MediaKind::documents;
  std::int64_t sourceSize = 0;
  std::optional<Bytes> encryptionKey;
  Fate fate;
  Soundness soundness = Soundness::known;  // of what is there already

  bool alreadyPresent() const { return std::holds_alternative<Present>(fate); }
  // In its place or in another, by an earlier export.
  bool standsThere() const { return alreadyPresent() || std::holds_alternative<Moved>(fate); }

  bool operator==(const PlannedCopy&) const = default;
};

// Folders that were a chat's in an earlier export and are not now, by the chat's JID.
using LeftoverFolders = std::map<CanonicalJID, std::vector<std::string>>;

// Requests, which the plan empties, and for each of them, in their order, the file that was taken for it as known, and
// its name where none was.
struct Task {
  std::vector<Request>& requests;
  const std::vector<std::optional<KnownMedium>>& known;
  const std::vector<std::string>& names;
};

// What stands at the destination, and whose it is.
struct Ground {
  const ChatFolders& folders;         // one for every chat of the requests
  const LeftoverFolders& leftovers;   // what is found there is moved
  const LeftoverFolders& remembered;  // for a chat, be they another's now: what is known to be there is moved
  const DestinationIndex& index;
  const KnownFiles& knownFiles;  // of `index`
};

// One copy for each request, in their order, named in the index's form; what was
// copied under a name of the other form is there as well. What is known is there
// under any name, and stays where it is outside of the chat's folders. Throws
// TidewellError::cancelled.
std::vector<PlannedCopy> plan(const Task& task, const Ground& ground, const CancellationCheck& isCancelled = {});

// The JID folders of each chat's media paths, by the chat's JID.
using PathJIDs = std::map<CanonicalJID, std::set<std::string>>;

struct LeftoverSearch {
  const ChatFolders& folderNames;  // this run's, for the chats to search for
  const PathJIDs& pathJIDs;
  const FolderAssignment& persisted;
  const ChatStorageSnapshot& snapshot;
  const DestinationIndex& index;
};
LeftoverFolders leftoverFoldersByOwner(const LeftoverSearch& search);

}  // namespace ExportPlanner
