#include "TidewellCore/Export/ExportPlanner.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include "TidewellCore/Destination/EarlierCopies.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/UsedNames.h"

namespace {

using ExportPlanner::Ground;
using ExportPlanner::LeftoverFolders;
using ExportPlanner::PlannedCopy;
using ExportPlanner::Request;

// What one folder holds, and what of it is already spoken for.
struct FolderState {
  FolderState(const DestinationIndex::Files& files, const KnownFiles& known)
      : earlier(files, [&](const DestinationIndex::FileEntry& file) { return known.isTaken(file); }) {
    for (const auto& [key, file] : files) {
      // One without content is what a power cut left of a copy: it is replaced, unless it is known.
      if (file.size > 0 || known.isTaken(file)) used.take(file.name);
    }
  }

  EarlierCopies earlier;
  UsedNames used;  // names of files with content on disk, and names given out
};

struct PlaceHash {
  std::size_t operator()(const ExportPlace& place) const {
    const std::hash<std::string> hash;
    return hash(place.folder) * 31 + hash(place.name);
  }
};

class Planner {
 public:
  explicit Planner(const Ground& ground) : ground_(ground) {}

  // The name of the copy that is there already under the very name that an export gives it today.
  std::optional<std::string> presentItself(const Request& request, const std::string& desired) {
    FolderState& state = stateOf(ground_.folders.at(request.chatJID));
    auto name = state.earlier.takeItself(inForm(desired), request.sourceSize);
    if (name) state.used.take(*name);
    return name;
  }

  // The same, or that of a variant. To be asked when every request knows what is there
  // itself: a file may be called what another's variant would be.
  std::optional<std::string> present(const Request& request, const std::string& desired) {
    FolderState& state = stateOf(ground_.folders.at(request.chatJID));
    auto name = state.earlier.take(inForm(desired), request.sourceSize);
    if (name) state.used.take(*name);
    return name;
  }

  // To be asked when every request knows what is `present`, so that none takes another's.
  PlannedCopy plan(Request& request, const std::string& desired, std::optional<std::string> present) {
    const std::string& folder = ground_.folders.at(request.chatJID);
    FolderState& state = stateOf(folder);
    if (!present) present = takeInOtherForm(state, request, desired);
    ExportPlanner::Fate fate = present ? ExportPlanner::Present() : fateOfAbsent(request, desired);
    PlannedCopy copy = copyOf(request);
    copy.desiredName = inForm(desired);
    copy.fate = std::move(fate);
    if (copy.standsThere()) copy.soundness = ExportPlanner::Soundness::unknown;
    copy.dest = {.folder = folder, .name = present ? std::move(*present) : state.used.uniquify(copy.desiredName)};
    return copy;
  }

  // The same of one that is known. The first that it is known to be moves a file; the others find it where it was.
  PlannedCopy planKnown(Request& request, const KnownMedium& known) {
    PlannedCopy copy = copyOf(request);
    copy.desiredName = known.place.name;
    copy.sourceSize = known.size;
    copy.dest = known.place;
    copy.fate = ExportPlanner::Present();
    if (known.isDoubtful) copy.soundness = ExportPlanner::Soundness::doubtful;
    const std::string& folder = ground_.folders.at(copy.chatJID);
    if (!planned_.insert(known.place).second) return copy;
    if (folder == known.place.folder || !isFormer(known.place.folder, copy.chatJID)) return copy;
    UsedNames& used = stateOf(folder).used;
    copy.dest.folder = folder;
    if (!used.take(copy.dest.name)) copy.dest.name = used.uniquify(copy.desiredName);
    copy.fate = ExportPlanner::Moved{.from = known.place};
    return copy;
  }

 private:
  std::string inForm(const std::string& desired) const {
    return PortableNames::inForm(desired, ground_.index.nameForm);
  }

  // What was copied when the export stood on a drive of another kind.
  std::optional<std::string> takeInOtherForm(FolderState& state, const Request& request,
                                             const std::string& desired) const {
    const std::string portable = PortableNames::portable(desired);
    if (portable == desired) return std::nullopt;
    const bool isPortable = ground_.index.nameForm == NameForm::portable;
    return state.earlier.take(isPortable ? desired : portable, request.sourceSize);
  }

  FolderState& stateOf(const std::string& folder) {
    const auto known = states_.find(folder);
    if (known != states_.end()) return known->second;
    const DestinationIndex::Files* files = ground_.index.filesIn(folder);
    const DestinationIndex::Files none;
    return states_.try_emplace(folder, files == nullptr ? none : *files, ground_.knownFiles).first->second;
  }

  bool isFormer(const std::string& folder, const CanonicalJID& jid) const {
    return std::ranges::any_of(std::array{&ground_.leftovers, &ground_.remembered}, [&](const auto* foldersByOwner) {
      const auto former = foldersByOwner->find(jid);
      return former != foldersByOwner->end() && std::ranges::find(former->second, folder) != former->second.end();
    });
  }

  // Leaves nothing in the request.
  static PlannedCopy copyOf(Request& request) {
    return {.source = std::move(request.source),
            .date = request.date,
            .relativePath = std::move(request.relativePath),
            .chatJID = std::move(request.chatJID),
            .kind = request.kind,
            .sourceSize = request.sourceSize,
            .encryptionKey = std::move(request.encryptionKey)};
  }

  ExportPlanner::Fate fateOfAbsent(const Request& request, const std::string& desired) {
    if (auto from = takeLeftover(request, desired)) return ExportPlanner::Moved{.from = std::move(*from)};
    if (request.sourceSize < 0) return ExportPlanner::Lost();
    return ExportPlanner::Restored();
  }

  // Takes the file of a former folder, when one holds it.
  std::optional<ExportPlace> takeLeftover(const Request& request, const std::string& desired) {
    const auto former = ground_.leftovers.find(request.chatJID);
    if (former == ground_.leftovers.end()) return std::nullopt;
    for (const std::string& folder : former->second) {
      FolderState& state = stateOf(folder);
      auto name = state.earlier.take(inForm(desired), request.sourceSize);
      if (!name) name = takeInOtherForm(state, request, desired);
      if (name) return ground_.index.place(folder, *name);
    }
    return std::nullopt;
  }

  const Ground& ground_;
  std::map<std::string, FolderState> states_;
  std::unordered_set<ExportPlace, PlaceHash> planned_;  // of files that are known
};

// Every name that ties a folder to a chat: what was remembered for any of its
// JIDs, and the folders that were called after them.
std::vector<std::string> formerNames(const CanonicalJID& jid, const ExportPlanner::LeftoverSearch& search) {
  std::vector<std::string> jids = search.snapshot.aliasJIDs(jid.text());
  if (const auto paths = search.pathJIDs.find(jid); paths != search.pathJIDs.end()) {
    std::ranges::copy(paths->second, std::back_inserter(jids));
  }
  std::vector<std::string> names;
  for (const std::string& alias : jids) {
    if (const auto folder = search.persisted.find(alias); folder != search.persisted.end())
      names.push_back(folder->second);
    names.push_back(FileNaming::sanitizeFolderName(alias));
  }
  return names;
}

}  // namespace

std::vector<PlannedCopy> ExportPlanner::plan(const Task& task, const Ground& ground,
                                             const CancellationCheck& isCancelled) {
  const auto& [requests, known, names] = task;
  CancellationPoint cancellation(isCancelled);
  Planner planner(ground);
  std::vector<std::optional<std::string>> present(requests.size());
  for (std::size_t place = 0; place < requests.size(); ++place) {
    cancellation.step();
    if (!known[place]) present[place] = planner.presentItself(requests[place], names[place]);
  }
  for (std::size_t place = 0; place < requests.size(); ++place) {
    cancellation.step();
    if (!known[place] && !present[place]) present[place] = planner.present(requests[place], names[place]);
  }
  std::vector<PlannedCopy> copies;
  copies.reserve(requests.size());
  for (std::size_t place = 0; place < requests.size(); ++place) {
    cancellation.step();
    copies.push_back(known[place] ? planner.planKnown(requests[place], *known[place])
                                  : planner.plan(requests[place], names[place], std::move(present[place])));
  }
  return copies;
}

LeftoverFolders ExportPlanner::leftoverFoldersByOwner(const LeftoverSearch& search) {
  std::set<std::string> current;
  for (const auto& [jid, folder] : search.folderNames) current.insert(FileNaming::normalizedKey(folder));
  LeftoverFolders leftovers;
  for (const auto& [jid, folder] : search.folderNames) {
    std::vector<std::string> found;
    for (const std::string& name : formerNames(jid, search)) {
      const auto onDisk = search.index.diskFolder(name);
      if (!onDisk || current.contains(FileNaming::normalizedKey(name))) continue;
      if (std::ranges::find(found, *onDisk) == found.end()) found.push_back(*onDisk);
    }
    if (!found.empty()) leftovers.emplace(jid, std::move(found));
  }
  return leftovers;
}
