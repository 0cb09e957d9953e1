#include "TidewellCore/Export/FolderAllocator.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using FolderAllocator::Choice;

constexpr int lastNameVariant = 16;
constexpr std::array<std::string_view, 3> jidSuffixes{LIDJIDSuffix, UserJIDSuffix, GroupJIDSuffix};

bool isNamedLikeJID(std::string_view folder) {
  const std::string lower = Text::lowercased(folder);
  return std::ranges::any_of(jidSuffixes,
                             [&](std::string_view suffix) { return lower.find(suffix) != std::string::npos; });
}

// Each name as given and as a folder would be called, empty ones and repeats left out.
std::vector<std::string> bothForms(const std::vector<std::string>& names) {
  std::vector<std::string> forms;
  const auto add = [&](const std::string& name) {
    if (std::ranges::find(forms, name) == forms.end()) forms.push_back(name);
  };
  for (const std::string& name : names) {
    if (name.empty()) continue;
    add(name);
    add(FileNaming::sanitizeFolderName(name));
  }
  return forms;
}

// The four passes over the chats, each in ascending order of their JIDs.
class Assigner {
 public:
  explicit Assigner(const Choice& choice) : choice_(choice), jids_(choice.jids.begin(), choice.jids.end()) {
    jids_.erase("");
    for (const std::string_view name : FolderNames::reserved) used_.insert(std::string(name));
    for (const auto& [folder, contents] : choice.existing) {
      existingByKey_[FileNaming::normalizedKey(folder)].push_back(folder);
      for (const std::string& file : contents) foldersByFileKey_[file].push_back(&folder);
    }
  }

  FolderAssignment run() {
    forEachChatWithoutFolder([this](const std::string& jid) { takePersisted(jid); });
    forEachChatWithoutFolder([this](const std::string& jid) { takeByContent(jid); });
    forEachChatWithoutFolder([this](const std::string& jid) { takeByName(jid); });
    forEachChatWithoutFolder([this](const std::string& jid) { makeNew(jid); });
    return result_;
  }

 private:
  template <typename Pass>
  void forEachChatWithoutFolder(Pass pass) {
    for (const std::string& jid : jids_) {
      if (!result_.contains(jid)) pass(jid);
    }
  }

  bool isUsed(const std::string& folder) const { return used_.contains(FileNaming::normalizedKey(folder)); }

  // The spelling on disk of a folder with this name's key, else the name.
  std::string resolved(const std::string& name) const {
    const auto found = existingByKey_.find(FileNaming::normalizedKey(name));
    if (found == existingByKey_.end() || std::ranges::find(found->second, name) != found->second.end()) return name;
    return found->second.front();
  }

  void give(const std::string& jid, const std::string& name) {
    used_.insert(FileNaming::normalizedKey(name));
    result_.emplace(jid, resolved(name));
  }

  void takePersisted(const std::string& jid) {
    const auto folder = choice_.persisted.find(jid);
    if (folder != choice_.persisted.end() && !folder->second.empty() && !isUsed(folder->second))
      give(jid, folder->second);
  }

  void takeByContent(const std::string& jid) {
    const auto planned = choice_.exportFileNames.find(jid);
    if (planned == choice_.exportFileNames.end()) return;
    std::map<std::string, int> counts;  // in ascending order, so of equal counts the first wins
    for (const std::string& name : planned->second) {
      const auto folders = foldersByFileKey_.find(FileNaming::normalizedKey(name));
      if (folders == foldersByFileKey_.end()) continue;
      for (const std::string* folder : folders->second) ++counts[*folder];
    }
    std::erase_if(counts,
                  [&](const auto& entry) { return isUsed(entry.first) || !choice_.canAdopt(entry.first, jid); });
    const auto best = std::ranges::max_element(counts, {}, [](const auto& entry) { return entry.second; });
    if (best != counts.end()) give(jid, best->first);
  }

  void takeByName(const std::string& jid) {
    std::vector<std::string> names{choice_.desiredName(jid)};
    std::ranges::copy(choice_.historicalNames(jid), std::back_inserter(names));
    for (const std::string& name : bothForms(names)) {
      for (const std::string& candidate : FileNaming::collisionVariants(name, lastNameVariant)) {
        if (!existingByKey_.contains(FileNaming::normalizedKey(candidate)) || isUsed(candidate)) continue;
        if (choice_.canAdopt(resolved(candidate), jid)) return give(jid, candidate);
      }
    }
  }

  void makeNew(const std::string& jid) {
    const std::string title = choice_.desiredName(jid);
    const std::string name = FileNaming::sanitizeFolderName(title.empty() ? jid : title);
    for (int index = 1;; ++index) {
      const std::string candidate = FileNaming::variant(name, index);
      if (!isUsed(candidate) && !isOthers(candidate, jid)) return give(jid, candidate);
    }
  }

  // Whether a folder with this name's key is on disk and is not for this chat.
  bool isOthers(const std::string& name, const std::string& jid) const {
    return existingByKey_.contains(FileNaming::normalizedKey(name)) && !choice_.canAdopt(resolved(name), jid);
  }

  const Choice& choice_;
  std::set<std::string> jids_;
  FolderAssignment result_;
  std::set<std::string> used_;  // keys
  std::map<std::string, std::vector<std::string>> existingByKey_;
  std::unordered_map<std::string, std::vector<const std::string*>> foldersByFileKey_;
};

// The keys of folders that are remembered for chats without files in this backup.
std::set<std::string> keysOfAbsentChats(const FolderAssignment& persisted,
                                        const FolderAllocator::PlannedNames& exportFileNames,
                                        const ChatStorageSnapshot& snapshot) {
  std::set<std::string> keys;
  for (const auto& [jid, folder] : persisted) {
    if (!exportFileNames.contains(snapshot.canonicalChatJID(jid))) keys.insert(FileNaming::normalizedKey(folder));
  }
  return keys;
}

}  // namespace

FolderAssignment FolderAllocator::assign(const Choice& choice) { return Assigner(choice).run(); }

FolderAssignment FolderAllocator::allocate(const PlannedNames& exportFileNames, const FolderContents& existing,
                                           const FolderAssignment& persisted, const ChatStorageSnapshot& snapshot) {
  const std::set<std::string> kept = keysOfAbsentChats(persisted, exportFileNames, snapshot);
  Choice choice{.persisted = persisted,
                .existing = existing,
                .exportFileNames = exportFileNames,
                .desiredName = [&](const std::string& jid) { return snapshot.chatTitle(jid); },
                .historicalNames = [&](const std::string& jid) { return historicalNames(jid, snapshot); },
                .canAdopt =
                    [&](const std::string& folder, const std::string& jid) {
                      return isAdoptableFolder(folder, jid) && !kept.contains(FileNaming::normalizedKey(folder));
                    }};
  for (const auto& [jid, names] : exportFileNames) choice.jids.push_back(jid);
  return assign(choice);
}

FolderAssignment FolderAllocator::withAbsentChats(const FolderAssignment& assigned, const FolderAssignment& persisted,
                                                  const ChatStorageSnapshot& snapshot) {
  FolderAssignment all = assigned;
  for (const auto& [jid, folder] : persisted) {
    if (!assigned.contains(snapshot.canonicalChatJID(jid))) all.emplace(jid, folder);
  }
  return all;
}

std::vector<std::string> FolderAllocator::existingChatFolders(const std::filesystem::path& contentRoot) {
  std::vector<std::string> folders;
  if (Files::kindOf(contentRoot) == Files::Kind::nothing) return folders;
  for (const Files::Entry& entry : Files::list(contentRoot)) {
    // A name that is no text is none of an export's making, and fits no data file.
    const bool isVisible = !entry.name.starts_with('.') && Text::isValid(entry.name);
    if (entry.isFolder && isVisible && !isReserved(entry.name)) folders.push_back(entry.name);
  }
  return folders;
}

bool FolderAllocator::isReserved(std::string_view folder) {
  return std::ranges::find(FolderNames::reserved, Text::lowercased(folder)) != FolderNames::reserved.end();
}

bool FolderAllocator::isLegacyFolderName(std::string_view folder) {
  return isNamedLikeJID(folder) || NameResolver::isPlaceholderPartnerName(folder);
}

bool FolderAllocator::isAdoptableFolder(std::string_view folder, std::string_view jid) {
  return !isNamedLikeJID(folder) || FileNaming::namesMatch(folder, jid);
}

std::vector<std::string> FolderAllocator::historicalNames(std::string_view jid, const ChatStorageSnapshot& snapshot) {
  std::vector<std::string> names;
  if (const ChatRecord* chat = snapshot.chat(jid)) names.push_back(chat->name);
  std::ranges::copy(snapshot.aliasJIDs(jid), std::back_inserter(names));
  names.emplace_back(jid);
  names.push_back(NameResolver::formattedPhone(jid).value_or(""));
  names.push_back(snapshot.chatTitle(jid));
  return bothForms(names);
}

FolderAssignment FolderAllocator::expandPersisted(FolderAssignment persisted, const std::vector<std::string>& jids,
                                                  const ChatStorageSnapshot& snapshot) {
  const FolderAssignment remembered = persisted;
  for (const auto& [jid, folder] : remembered) persisted.emplace(snapshot.canonicalChatJID(jid), folder);
  for (const std::string& jid : jids) {
    const std::vector<std::string> aliases = snapshot.aliasJIDs(jid);
    const auto known =
        std::ranges::find_if(aliases, [&](const std::string& alias) { return persisted.contains(alias); });
    if (known == aliases.end()) continue;
    const std::string folder = persisted.at(*known);
    for (const std::string& alias : aliases) persisted.emplace(alias, folder);
  }
  return persisted;
}
