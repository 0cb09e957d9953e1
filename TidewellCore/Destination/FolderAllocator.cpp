#include "TidewellCore/Destination/FolderAllocator.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>
#include <utility>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using FolderAllocator::Choice;

constexpr int lastNameVariant = 16;

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
  Assigner(const Choice& choice, const CancellationCheck& isCancelled)
      : choice_(choice), cancellation_(isCancelled), jids_(choice.jids.begin(), choice.jids.end()) {
    jids_.erase(CanonicalJID());
    for (const std::string_view name : FolderNames::reserved) used_.insert(std::string(name));
    for (const auto& [folder, contents] : choice.existing) {
      existingByKey_[FileNaming::normalizedKey(folder)].push_back(folders_.size());
      folders_.push_back(&folder);
    }
    counts_.resize(folders_.size());
    isGiven_.resize(folders_.size());
  }

  ChatFolders run() {
    forEachChatWithoutFolder([this](const CanonicalJID& jid) { takePersisted(jid); });
    takeKept();
    forEachChatWithoutFolder([this](const CanonicalJID& jid) { takeByContent(jid); });
    forEachChatWithoutFolder([this](const CanonicalJID& jid) { takeByName(jid); });
    forEachChatWithoutFolder([this](const CanonicalJID& jid) { makeNew(jid); });
    return result_;
  }

 private:
  template <typename Pass>
  void forEachChatWithoutFolder(Pass pass) {
    for (const CanonicalJID& jid : jids_) {
      cancellation_.step();
      if (!result_.contains(jid)) pass(jid);
    }
  }

  bool isUsed(const std::string& folder) const { return used_.contains(FileNaming::normalizedKey(folder)); }

  std::string inForm(const std::string& name) const { return PortableNames::inForm(name, choice_.nameForm); }

  // The spelling on disk of a folder with this name's key, else the name.
  std::string resolved(const std::string& name) const {
    const auto found = existingByKey_.find(FileNaming::normalizedKey(name));
    if (found == existingByKey_.end()) return name;
    const auto isName = [&](std::size_t folder) { return *folders_[folder] == name; };
    return std::ranges::any_of(found->second, isName) ? name : *folders_[found->second.front()];
  }

  void give(const CanonicalJID& jid, const std::string& name) {
    use(FileNaming::normalizedKey(name));
    result_.emplace(jid, resolved(name));
  }

  void use(const std::string& key) {
    used_.insert(key);
    const auto found = existingByKey_.find(key);
    if (found == existingByKey_.end()) return;
    for (const std::size_t folder : found->second) isGiven_[folder] = true;
  }

  void takePersisted(const CanonicalJID& jid) {
    const auto folder = choice_.persisted.find(jid.text());
    if (folder == choice_.persisted.end() || folder->second.empty()) return;
    const std::string name = inForm(folder->second);
    if (!isUsed(name)) give(jid, name);
  }

  // A folder of nobody here is a new name to nobody.
  void takeKept() {
    for (const auto& [key, folders] : existingByKey_) {
      if (choice_.kept.contains(key)) use(key);
    }
  }

  void takeByContent(const CanonicalJID& jid) {
    const auto planned = choice_.exportFileNames.find(jid);
    if (planned == choice_.exportFileNames.end() || planned->second.empty()) return;
    readContents();
    std::vector<std::size_t> found;
    for (const std::string& name : planned->second) {
      cancellation_.step();
      const auto folders = foldersByFileKey_.find(FileNaming::normalizedKey(name));
      if (folders == foldersByFileKey_.end()) continue;
      for (const std::size_t folder : folders->second) {
        if (!isGiven_[folder] && counts_[folder]++ == 0) found.push_back(folder);
      }
    }
    if (const std::string* best = bestOf(found, jid)) give(jid, *best);
    for (const std::size_t folder : found) counts_[folder] = 0;
  }

  // Asked for by few exports but the first: where chats have their folders, nobody looks into them.
  void readContents() {
    if (std::exchange(areContentsRead_, true)) return;
    std::size_t folder = 0;
    for (const auto& [name, contents] : choice_.existing) {
      for (const std::string_view file : contents) foldersByFileKey_[file].push_back(folder);
      ++folder;
    }
  }

  // Of those with the highest count the first by name; null when the chat may have none of them.
  const std::string* bestOf(const std::vector<std::size_t>& folders, const CanonicalJID& jid) const {
    const auto rank = [&](std::size_t folder) { return std::pair(-counts_[folder], folder); };
    std::optional<std::size_t> best;
    for (const std::size_t folder : folders) {
      if ((!best || rank(folder) < rank(*best)) && choice_.canAdopt(*folders_[folder], jid)) best = folder;
    }
    return best ? folders_[*best] : nullptr;
  }

  void takeByName(const CanonicalJID& jid) {
    if (existingByKey_.empty()) return;
    std::vector<std::string> names{choice_.desiredName(jid)};
    std::ranges::copy(choice_.historicalNames(jid), std::back_inserter(names));
    for (const std::string& name : bothForms(names)) {
      for (const std::string& candidate : FileNaming::collisionVariants(inForm(name), lastNameVariant)) {
        if (!existingByKey_.contains(FileNaming::normalizedKey(candidate)) || isUsed(candidate)) continue;
        if (choice_.canAdopt(resolved(candidate), jid)) return give(jid, candidate);
      }
    }
  }

  void makeNew(const CanonicalJID& jid) {
    const std::string title = choice_.desiredName(jid);
    const std::string name = inForm(FileNaming::sanitizeFolderName(title.empty() ? jid.text() : title));
    // A name that is another's may still be somebody's, so only what is used is passed over for good.
    int& firstFree = firstFree_.try_emplace(name, 1).first->second;
    for (int index = firstFree;; ++index) {
      const std::string candidate = FileNaming::variant(name, index);
      const bool isFree = !isUsed(candidate);
      if (!isFree && index == firstFree) ++firstFree;
      if (isFree && !isOthers(candidate, jid)) return give(jid, candidate);
    }
  }

  // Whether a folder with this name's key is on disk and is not for this chat.
  bool isOthers(const std::string& name, const CanonicalJID& jid) const {
    return existingByKey_.contains(FileNaming::normalizedKey(name)) && !choice_.canAdopt(resolved(name), jid);
  }

  const Choice& choice_;
  CancellationPoint cancellation_;
  std::set<CanonicalJID> jids_;
  ChatFolders result_;
  std::set<std::string> used_;                                     // keys
  std::map<std::string, std::vector<std::size_t>> existingByKey_;  // as positions in `folders_`
  std::unordered_map<std::string, int> firstFree_;  // by the name wanted, its first variant that may be free
  std::vector<const std::string*> folders_;         // those on disk, in ascending order
  std::vector<bool> isGiven_;                       // by position: nobody else's any more
  std::vector<int> counts_;                         // by position: what the chat that is looked at has there
  std::unordered_map<std::string_view, std::vector<std::size_t>> foldersByFileKey_;  // as positions
  bool areContentsRead_ = false;
};

// The keys of folders that are remembered for chats without files in this backup, and under other JIDs of those with.
std::set<std::string> keysToKeep(const FolderAllocator::Wish& wish, const ChatStorageSnapshot& snapshot) {
  std::set<std::string> keys;
  for (const auto& [jid, folder] : wish.persisted) {
    const CanonicalJID canonical = snapshot.canonicalChatJID(jid);
    if (canonical.text() == jid && wish.exportFileNames.contains(canonical)) continue;
    keys.insert(FileNaming::normalizedKey(PortableNames::inForm(folder, wish.nameForm)));
  }
  return keys;
}

}  // namespace

ChatFolders FolderAllocator::assign(const Choice& choice, const CancellationCheck& isCancelled) {
  return Assigner(choice, isCancelled).run();
}

ChatFolders FolderAllocator::allocate(Wish wish, const ChatStorageSnapshot& snapshot,
                                      const CancellationCheck& isCancelled) {
  std::set<std::string> kept = keysToKeep(wish, snapshot);
  Choice choice{.persisted = std::move(wish.persisted),
                .existing = std::move(wish.existing),
                .exportFileNames = std::move(wish.exportFileNames),
                .desiredName = [&](const CanonicalJID& jid) { return snapshot.chatTitle(jid.text()); },
                .historicalNames = [&](const CanonicalJID& jid) { return historicalNames(jid.text(), snapshot); },
                .canAdopt = [](const std::string& folder,
                               const CanonicalJID& jid) { return isAdoptableFolder(folder, jid.text()); },
                .kept = std::move(kept),
                .nameForm = wish.nameForm};
  for (const auto& [jid, names] : choice.exportFileNames) choice.jids.push_back(jid);
  return assign(choice, isCancelled);
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

bool FolderAllocator::isNamedLikeJID(std::string_view folder) {
  constexpr std::array<std::string_view, 3> suffixes{LIDJIDSuffix, UserJIDSuffix, GroupJIDSuffix};
  const std::string lower = Text::lowercased(folder);
  return std::ranges::any_of(suffixes,
                             [&](std::string_view suffix) { return lower.find(suffix) != std::string::npos; });
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

FolderAssignment FolderAllocator::expandPersisted(FolderAssignment persisted, const std::vector<CanonicalJID>& jids,
                                                  const ChatStorageSnapshot& snapshot) {
  const FolderAssignment remembered = persisted;
  for (const auto& [jid, folder] : remembered) persisted.emplace(snapshot.canonicalChatJID(jid).text(), folder);
  for (const CanonicalJID& jid : jids) {
    const std::vector<std::string> aliases = snapshot.aliasJIDs(jid.text());
    const auto known =
        std::ranges::find_if(aliases, [&](const std::string& alias) { return persisted.contains(alias); });
    if (known == aliases.end()) continue;
    const std::string folder = persisted.at(*known);
    for (const std::string& alias : aliases) persisted.emplace(alias, folder);
  }
  return persisted;
}
