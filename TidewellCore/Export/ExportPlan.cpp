#include "TidewellCore/Export/ExportPlan.h"

#include <algorithm>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/SaturatingAdd.h"

namespace {

FolderAllocator::PlannedNames namesByChat(const std::vector<ExportPlanner::Request>& requests) {
  FolderAllocator::PlannedNames names;
  for (const ExportPlanner::Request& request : requests) names[request.chatJID].push_back(request.desiredName);
  return names;
}

ExportPlanner::PathJIDs pathJIDsByChat(const std::vector<ExportPlanner::Request>& requests) {
  ExportPlanner::PathJIDs jids;
  for (const ExportPlanner::Request& request : requests) {
    if (auto jid = FileNaming::chatJID(request.relativePath)) jids[request.chatJID].insert(std::move(*jid));
  }
  return jids;
}

std::vector<std::string> keysOf(const FolderAllocator::PlannedNames& names) {
  std::vector<std::string> jids;
  for (const auto& [jid, files] : names) jids.push_back(jid);
  return jids;
}

// A file's path may lead to the folder of another chat, which is not to be
// removed with what it holds of that chat.
ExportPlanner::LeftoverFolders withoutOthersFolders(ExportPlanner::LeftoverFolders leftovers,
                                                    const FolderAssignment& remembered,
                                                    const ChatStorageSnapshot& snapshot) {
  std::set<std::string> rememberedKeys;
  for (const auto& [jid, folder] : remembered) rememberedKeys.insert(FileNaming::normalizedKey(folder));
  for (auto& [owner, folders] : leftovers) {
    const std::vector<std::string> aliases = snapshot.aliasJIDs(owner);
    std::erase_if(folders, [&](const std::string& folder) {
      const auto isOwners = [&](const std::string& jid) { return FolderAllocator::isAdoptableFolder(folder, jid); };
      return rememberedKeys.contains(FileNaming::normalizedKey(folder)) || std::ranges::none_of(aliases, isOwners);
    });
  }
  return leftovers;
}

}  // namespace

ExportPlan ExportPlan::make(const std::vector<ExportPlanner::Request>& requests, const ChatStorageSnapshot& snapshot,
                            const std::filesystem::path& destination, const std::filesystem::path& contentRoot) {
  ExportPlan plan{.index = DestinationIndex::load(contentRoot)};
  const FolderAssignment loaded = FolderManifest::load(destination);
  const FolderAllocator::PlannedNames names = namesByChat(requests);
  const FolderAssignment persisted = FolderAllocator::expandPersisted(loaded, keysOf(names), snapshot);
  plan.folders = FolderAllocator::allocate(names, plan.index.mediaNameSets(), persisted, snapshot);
  plan.remembered = FolderAllocator::withAbsentChats(plan.folders, loaded, snapshot);
  plan.rememberedMeanwhile = plan.remembered;
  plan.rememberedMeanwhile.insert(loaded.begin(), loaded.end());
  plan.leftovers = ExportPlanner::leftoverFoldersByOwner({.folderNames = plan.folders,
                                                          .pathJIDs = pathJIDsByChat(requests),
                                                          .persisted = persisted,
                                                          .snapshot = snapshot,
                                                          .index = plan.index});
  plan.removable = withoutOthersFolders(plan.leftovers, plan.remembered, snapshot);
  plan.copies = ExportPlanner::plan(requests, plan.folders, plan.leftovers, plan.index);
  return plan;
}

std::int64_t ExportPlan::bytesToCopy() const {
  std::int64_t bytes = 0;
  for (const ExportPlanner::PlannedCopy& copy : copies) {
    if (!copy.alreadyPresent && !copy.leftoverFolder) bytes = saturatingAdd(bytes, copy.sourceSize);
  }
  return bytes;
}
