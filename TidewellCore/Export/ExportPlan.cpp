#include "TidewellCore/Export/ExportPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

using KnownCopies = std::vector<std::optional<KnownMedium>>;

// Of those that are not known.
std::vector<std::string> namesOf(const std::vector<ExportPlanner::Request>& requests, const KnownCopies& known,
                                 const ExportPlanner::Naming& naming) {
  std::vector<std::string> names(requests.size());
  for (std::size_t i = 0; i < requests.size(); ++i) {
    if (!known[i]) names[i] = naming(requests[i]);
  }
  return names;
}

// Of what is known the name that it has, which need not be the one that it would get today.
FolderAllocator::PlannedNames namesByChat(const ExportPlan::Wish& wish, const ExportPlanner::Task& wanted,
                                          NameForm form) {
  FolderAllocator::PlannedNames names;
  for (const CanonicalJID& jid : wish.jidsOfTranscripts) names[jid];
  for (std::size_t i = 0; i < wanted.requests.size(); ++i) {
    const auto& known = wanted.known[i];
    names[wanted.requests[i].chatJID].push_back(known ? known->place.name
                                                      : PortableNames::inForm(wanted.names[i], form));
  }
  return names;
}

// The same for the chats of which this export takes nothing, in whose folders it puts nothing.
FolderAllocator::PlannedNames namesOfOthers(const ExportPlan::Wish& wish, const FolderAllocator::PlannedNames& names,
                                            NameForm form) {
  FolderAllocator::PlannedNames others;
  for (const CanonicalJID& jid : wish.jidsLeftOut) {
    if (!names.contains(jid)) others[jid];
  }
  for (const ExportPlanner::Request& request : wish.leftOut) {
    if (names.contains(request.chatJID)) continue;
    others[request.chatJID].push_back(PortableNames::inForm(wish.naming(request), form));
  }
  return others;
}

// The folder of every chat that has one, of this export or an earlier one.
ChatFolders knownFolders(const std::vector<PlannedChat>& chats) {
  ChatFolders folders;
  for (const PlannedChat& chat : chats) {
    if (!chat.folder.empty()) folders.emplace(chat.jid, chat.folder);
  }
  return folders;
}

// What is wanted counts as known when its size is the known one, or the backup cannot tell it. Of two requests of one
// path the one with the size goes first.
KnownCopies takeWanted(const std::vector<ExportPlanner::Request>& requests, KnownFiles& known) {
  KnownCopies copies(requests.size());
  for (const bool isLost : {false, true}) {
    for (std::size_t i = 0; i < requests.size(); ++i) {
      const ExportPlanner::Request& request = requests[i];
      if ((request.sourceSize < 0) != isLost) continue;
      copies[i] = known.take(request.relativePath, isLost ? std::nullopt : std::optional(request.sourceSize));
    }
  }
  return copies;
}

// What is only linked may have got another size on the phone since.
KnownCopies takeLinked(const std::vector<ExportPlanner::Request>& requests, KnownFiles& known) {
  KnownCopies copies;
  copies.reserve(requests.size());
  for (const ExportPlanner::Request& request : requests) copies.push_back(known.take(request.relativePath));
  return copies;
}

std::vector<ExportPlanner::Request> ofChatsIn(const ChatFolders& folders,
                                              std::vector<ExportPlanner::Request> requests) {
  std::erase_if(requests, [&](const ExportPlanner::Request& request) { return !folders.contains(request.chatJID); });
  return requests;
}

// What an earlier export copied is there wherever it stands; it is to be moved by one that wants it.
bool isThere(ExportPlanner::PlannedCopy& copy) {
  if (const auto* moved = std::get_if<ExportPlanner::Moved>(&copy.fate)) {
    copy.dest = ExportPlace(moved->from);
    copy.fate = ExportPlanner::Present();
  }
  return copy.alreadyPresent();
}

// Those of the requests that an earlier export carried out.
std::vector<ExportPlanner::PlannedCopy> carriedOutBefore(const ExportPlanner::Task& task,
                                                         const ExportPlanner::Ground& ground,
                                                         const CancellationCheck& isCancelled) {
  std::vector<ExportPlanner::PlannedCopy> copies = ExportPlanner::plan(task, ground, isCancelled);
  std::erase_if(copies, [](ExportPlanner::PlannedCopy& copy) { return !isThere(copy); });
  return copies;
}

ExportPlace keyOf(const ExportPlace& place) {
  return {.folder = FileNaming::normalizedKey(place.folder), .name = FileNaming::normalizedKey(place.name)};
}

// The files at the destination that the plan needs for something.
using NeededFiles = std::unordered_set<const DestinationIndex::FileEntry*>;

NeededFiles neededFiles(const ExportPlan& plan, const DestinationIndex& index) {
  NeededFiles files;
  const auto add = [&](const ExportPlace& place) {
    if (const DestinationIndex::FileEntry* file = index.file(place.folder, place.name)) files.insert(file);
  };
  for (const auto* copies : {&plan.copies, &plan.earlier}) {
    for (const ExportPlanner::PlannedCopy& copy : *copies) {
      add(copy.dest);
      if (const auto* moved = std::get_if<ExportPlanner::Moved>(&copy.fate)) add(moved->from);
    }
  }
  return files;
}

// What the plan moves away stands there no more.
void leaveOutMoved(std::vector<ExportPlanner::PlannedCopy>& earlier,
                   const std::vector<ExportPlanner::PlannedCopy>& copies) {
  std::set<ExportPlace> left;
  for (const ExportPlanner::PlannedCopy& copy : copies) {
    if (const auto* moved = std::get_if<ExportPlanner::Moved>(&copy.fate)) left.insert(keyOf(moved->from));
  }
  std::erase_if(earlier, [&](const ExportPlanner::PlannedCopy& copy) { return left.contains(keyOf(copy.dest)); });
}

// In either form of its name; absent when there is none.
std::optional<ExportPlace> copyOfLostFile(const DestinationIndex& index, std::string_view folder,
                                          std::string_view name) {
  auto place = index.place(folder, name);
  return place ? place : index.place(folder, PortableNames::portable(name));
}

// The folder of each chat of this plan, then its former ones in the order in which they are searched.
std::map<CanonicalJID, std::vector<std::string>> foldersToSearch(const std::vector<PlannedChat>& chats) {
  std::map<CanonicalJID, std::vector<std::string>> folders;
  for (const PlannedChat& chat : chats) {
    if (!chat.isInExport) continue;
    std::vector<std::string>& names = folders[chat.jid];
    names.push_back(chat.folder);
    for (const PlannedChat::FormerFolder& former : chat.formerFolders) names.push_back(former.name);
  }
  return folders;
}

// Takes the first of a lost file's name that is not taken.
std::optional<KnownMedium> takeByName(const std::vector<std::string>& folders, std::string_view name,
                                      const DestinationIndex& index, NeededFiles& taken) {
  for (const std::string& folder : folders) {
    const auto place = copyOfLostFile(index, folder, name);
    const DestinationIndex::FileEntry* file = place ? index.file(place->folder, place->name) : nullptr;
    if (file != nullptr && taken.insert(file).second) return KnownMedium{.place = *place, .size = file->size};
  }
  return std::nullopt;
}

// A lost file's size is not known, so its copy is the one that is known, else
// the one of the very name that an export gives it, unless that is another's.
void addCopiesOfLostFiles(ExportPlan& plan, const ExportPlanner::Task& lost, const ExportPlanner::Ground& ground) {
  const auto folders = foldersToSearch(plan.chats);
  NeededFiles taken = neededFiles(plan, ground.index);
  for (const auto& known : lost.known) {
    if (!known) continue;
    if (const auto* file = ground.index.file(known->place.folder, known->place.name)) taken.insert(file);
  }
  for (std::size_t i = 0; i < lost.requests.size(); ++i) {
    const ExportPlanner::Request& request = lost.requests[i];
    const auto search = folders.find(request.chatJID);
    if (search == folders.end()) continue;
    std::optional<KnownMedium> copy = lost.known[i];
    // The plan has it already where the file is in the backup and cannot be restored.
    if (!copy && ground.knownFiles.hasTaken(request.relativePath)) continue;
    if (!copy) copy = takeByName(search->second, lost.names[i], ground.index, taken);
    if (!copy) continue;
    plan.earlier.push_back(
        {.dest = copy->place,
         .date = request.date,
         .relativePath = request.relativePath,
         .chatJID = request.chatJID,
         .kind = request.kind,
         .sourceSize = copy->size,
         .fate = ExportPlanner::Present(),
         .soundness = copy->isDoubtful ? ExportPlanner::Soundness::doubtful : ExportPlanner::Soundness::known});
  }
}

ExportPlanner::PathJIDs pathJIDsByChat(const std::vector<ExportPlanner::Request>& requests) {
  ExportPlanner::PathJIDs jids;
  for (const ExportPlanner::Request& request : requests) {
    if (auto jid = FileNaming::chatJID(request.relativePath)) jids[request.chatJID].insert(std::move(*jid));
  }
  return jids;
}

std::vector<CanonicalJID> keysOf(const FolderAllocator::PlannedNames& names) {
  std::vector<CanonicalJID> jids;
  for (const auto& [jid, files] : names) jids.push_back(jid);
  return jids;
}

// A file's path may lead to the folder of another chat, which is not to be
// removed with what it holds of that chat.
void addFormerFolders(const ExportPlanner::LeftoverFolders& leftovers, const ChatStorageSnapshot& snapshot,
                      std::vector<PlannedChat>& chats) {
  std::set<std::string> rememberedKeys;
  for (const auto& [jid, folder] : PlannedChats::toRemember(chats)) {
    rememberedKeys.insert(FileNaming::normalizedKey(folder));
  }
  for (PlannedChat& chat : chats) {
    const auto found = leftovers.find(chat.jid);
    if (found == leftovers.end()) continue;
    const std::vector<std::string> aliases = snapshot.aliasJIDs(chat.jid.text());
    for (const std::string& folder : found->second) {
      const auto isOwners = [&](const std::string& jid) { return FolderAllocator::isAdoptableFolder(folder, jid); };
      const bool isRemovable =
          !rememberedKeys.contains(FileNaming::normalizedKey(folder)) && std::ranges::any_of(aliases, isOwners);
      chat.formerFolders.push_back({.name = folder, .isRemovable = isRemovable});
    }
  }
}

// As they are spelt on disk.
ExportPlanner::LeftoverFolders rememberedFolders(const std::vector<PlannedChat>& chats, const DestinationIndex& index) {
  ExportPlanner::LeftoverFolders folders;
  for (const PlannedChat& chat : chats) {
    for (const auto& [jid, name] : chat.remembered) {
      if (auto folder = index.diskFolder(name)) folders[chat.jid].push_back(std::move(*folder));
    }
  }
  return folders;
}

// What stands in such a folder is not known, so that nothing there is linked which the backup does not hold.
void warnOfUnreadableFolders(ExportPlan& plan, const DestinationIndex& index) {
  std::set<std::string> folders;
  for (const PlannedChat& chat : plan.chats) {
    if (!chat.isInExport) continue;
    folders.insert(chat.folder);
    for (const PlannedChat::FormerFolder& former : chat.formerFolders) folders.insert(former.name);
  }
  for (const std::string& folder : folders) {
    if (!index.unreadableFolders.contains(folder)) continue;
    plan.warnings.push_back(fmt::format(
        "The folder “{}” could not be read, so files that stand there and that the backup does not hold may "
        "be missing from the chat’s pages. Check the drive and the folder’s permissions, then export again.",
        folder));
  }
}

}  // namespace

ExportPlan ExportPlan::make(Wish wish, const Found& found, const ChatStorageSnapshot& snapshot,
                            const CancellationCheck& isCancelled) {
  const auto& [index, remembered, knownMedia] = found;
  KnownFiles known(knownMedia, index);
  const KnownCopies ofRequests = takeWanted(wish.requests, known);
  const std::vector<std::string> desired = namesOf(wish.requests, ofRequests, wish.naming);
  const ExportPlanner::Task requests{.requests = wish.requests, .known = ofRequests, .names = desired};
  FolderAllocator::PlannedNames names = namesByChat(wish, requests, index.nameForm);
  const std::vector<CanonicalJID> wanted = keysOf(names);
  // A chat gets the folder that it would have if nothing was left out, and no other chat's.
  names.merge(namesOfOthers(wish, names, index.nameForm));
  const FolderAssignment persisted = FolderAllocator::expandPersisted(remembered, keysOf(names), snapshot);
  ChatFolders folders = FolderAllocator::allocate({.exportFileNames = std::move(names),
                                                   .existing = index.mediaNameSets(),
                                                   .persisted = persisted,
                                                   .nameForm = index.nameForm},
                                                  snapshot, isCancelled);
  std::erase_if(folders, [&](const auto& chat) { return !std::ranges::binary_search(wanted, chat.first); });
  const auto leftovers = ExportPlanner::leftoverFoldersByOwner({.folderNames = folders,
                                                                .pathJIDs = pathJIDsByChat(wish.requests),
                                                                .persisted = persisted,
                                                                .snapshot = snapshot,
                                                                .index = index});
  ExportPlan plan{.chats = PlannedChats::of(folders, remembered, snapshot)};
  addFormerFolders(leftovers, snapshot, plan.chats);
  const ChatFolders allFolders = knownFolders(plan.chats);
  std::vector<ExportPlanner::Request> leftOut = ofChatsIn(allFolders, std::move(wish.leftOut));
  const KnownCopies ofLeftOut = takeLinked(leftOut, known);
  const KnownCopies ofLost = takeLinked(wish.lost, known);
  const ExportPlanner::LeftoverFolders formerly = rememberedFolders(plan.chats, index);
  const ExportPlanner::Ground ground{
      .folders = allFolders, .leftovers = leftovers, .remembered = formerly, .index = index, .knownFiles = known};
  const std::vector<std::string> leftOutNames = namesOf(leftOut, ofLeftOut, wish.naming);
  plan.earlier =
      carriedOutBefore({.requests = leftOut, .known = ofLeftOut, .names = leftOutNames}, ground, isCancelled);
  plan.copies = ExportPlanner::plan(requests, ground, isCancelled);
  leaveOutMoved(plan.earlier, plan.copies);
  throwIfCancelled(isCancelled);
  const std::vector<std::string> lostNames = namesOf(wish.lost, ofLost, wish.naming);
  addCopiesOfLostFiles(plan, {.requests = wish.lost, .known = ofLost, .names = lostNames}, ground);
  warnOfUnreadableFolders(plan, index);
  return plan;
}

std::int64_t ExportPlan::bytesToCopy() const {
  std::int64_t bytes = 0;
  for (const ExportPlanner::PlannedCopy& copy : copies) {
    if (std::holds_alternative<ExportPlanner::Restored>(copy.fate)) bytes = saturatingAdd(bytes, copy.sourceSize);
  }
  return bytes;
}
