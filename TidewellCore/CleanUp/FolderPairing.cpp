#include "TidewellCore/CleanUp/FolderPairing.h"

#include <algorithm>
#include <tuple>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/PortableNames.h"

namespace {

using FolderPairing::Evidence;
using FolderPairing::FolderListing;
using FolderPairing::Outcome;
using Names = std::set<std::string>;
// What one source says: the JIDs of each folder.
using Claims = std::map<std::string, Names>;

// The JID with its server in lower case.
std::string comparable(std::string_view jid) {
  const std::string user(JID::userPart(jid));
  return user + Text::lowercased(jid.substr(user.size()));
}

Claims claimsOf(const FolderAssignment& manifest) {
  Claims claims;
  for (const auto& [jid, folder] : manifest) claims[folder].insert(comparable(jid));
  return claims;
}

Claims claimsOf(const std::vector<ArchiveRelocation::ChatReference>& archive) {
  Claims claims;
  for (const auto& [jid, folder] : archive) claims[folder].insert(comparable(jid));
  return claims;
}

// Which LID is whose phone's, as far as one folder was given to both.
class Aliases {
 public:
  void learn(const Claims& claims) {
    for (const auto& [folder, jids] : claims) {
      if (jids.size() != 2) continue;
      const auto& [first, second] = std::pair(*jids.begin(), *jids.rbegin());
      if (JID::isLID(first) && JID::hasServer(second, UserJIDSuffix)) link(first, second);
      if (JID::isLID(second) && JID::hasServer(first, UserJIDSuffix)) link(second, first);
    }
  }

  // The phone's JID where one LID and one phone are known for each other; else the JID.
  std::string chat(const std::string& jid) const {
    const auto phones = phonesOfLID_.find(jid);
    if (phones == phonesOfLID_.end() || phones->second.size() != 1) return jid;
    const std::string& phone = *phones->second.begin();
    return lidsOfPhone_.at(phone).size() == 1 ? phone : jid;
  }

 private:
  void link(const std::string& lid, const std::string& phone) {
    phonesOfLID_[lid].insert(phone);
    lidsOfPhone_[phone].insert(lid);
  }

  std::map<std::string, Names> phonesOfLID_;
  std::map<std::string, Names> lidsOfPhone_;
};

class Pairing {
 public:
  Pairing(const Evidence& evidence, const std::function<FolderListing(const std::string&)>& list)
      : evidence_(evidence), list_(list) {
    const Claims manifest = claimsOf(evidence.manifest);
    const Claims archive = claimsOf(evidence.archive);
    aliases_.learn(manifest);
    aliases_.learn(archive);
    for (const std::string& folder : evidence.folders) {
      foldersByKey_[FileNaming::normalizedKey(folder)].push_back(folder);
      if (const auto jid = FolderPairing::jidIfLegacyFolder(folder)) chats_[folder].insert(comparable(*jid));
    }
    for (auto& [folder, chats] : chats_) chats = {aliases_.chat(*chats.begin())};
    take(manifest, namedByManifest_);
    take(archive, namedByArchive_);
  }

  Outcome run() {
    std::map<std::string, Names> foldersOfChat;
    for (const auto& [folder, chats] : chats_) {
      if (chats.size() > 1) ++outcome_.skippedAmbiguousCount;
      if (isCertain(folder)) foldersOfChat[*chats.begin()].insert(folder);
    }
    for (const auto& [chat, folders] : foldersOfChat) pair(chat, folders);
    std::ranges::stable_sort(outcome_.pairs, {},
                             [](const auto& pair) { return std::tie(pair.canonicalFolder, pair.duplicateFolder); });
    return std::move(outcome_);
  }

 private:
  using FoldersByChat = std::map<std::string, Names>;

  void take(const Claims& claims, FoldersByChat& named) {
    for (const auto& [name, jids] : claims) {
      const auto folder = onDisk(name);
      if (!folder) continue;
      for (const std::string& jid : jids) {
        const std::string chat = aliases_.chat(jid);
        chats_[*folder].insert(chat);
        named[chat].insert(*folder);
      }
    }
  }

  // The folder as it is spelt on disk, where a drive may have asked for the name's portable form.
  std::optional<std::string> onDisk(const std::string& name) const {
    const bool isThere = foldersByKey_.contains(FileNaming::normalizedKey(name));
    return spelling(isThere ? name : PortableNames::portable(name));
  }

  // Absent when two folders have the name's key.
  std::optional<std::string> spelling(const std::string& name) const {
    const auto found = foldersByKey_.find(FileNaming::normalizedKey(name));
    if (found == foldersByKey_.end()) return std::nullopt;
    const std::vector<std::string>& folders = found->second;
    if (std::ranges::find(folders, name) != folders.end()) return name;
    return folders.size() == 1 ? std::optional(folders.front()) : std::nullopt;
  }

  bool isCertain(const std::string& folder) const { return chats_.at(folder).size() == 1; }

  void pair(const std::string& chat, const Names& folders) {
    Names candidates = folders;
    for (const FoldersByChat* named : {&namedByArchive_, &namedByManifest_}) {
      if (const auto found = named->find(chat); found != named->end()) candidates = found->second;
    }
    if (!std::ranges::all_of(candidates, [this](const std::string& folder) { return isCertain(folder); })) {
      outcome_.skippedAmbiguousCount += static_cast<std::int64_t>(folders.size());
      return;
    }
    const std::string canonical = candidates.size() == 1 ? *candidates.begin() : best(candidates, folders);
    for (const std::string& folder : folders) {
      if (folder != canonical) outcome_.pairs.push_back({canonical, folder, chat});
    }
  }

  std::string best(const Names& candidates, const Names& folders) const {
    std::map<std::string, FolderListing> listings;
    for (const std::string& folder : folders) listings.emplace(folder, list_(folder));
    const auto rank = [&](const std::string& candidate) {
      std::int64_t shared = 0;
      for (const auto& [folder, listing] : listings) {
        if (folder == candidate) continue;
        shared = saturatingAdd(shared, FolderPairing::overlapBytes(listings.at(candidate), listing));
      }
      return std::tuple(-shared, FolderAllocator::isLegacyFolderName(candidate), candidate);
    };
    return std::ranges::min(candidates, {}, rank);
  }

  const Evidence& evidence_;
  const std::function<FolderListing(const std::string&)>& list_;
  Aliases aliases_;
  std::map<std::string, std::vector<std::string>> foldersByKey_;
  std::map<std::string, Names> chats_;  // by folder
  FoldersByChat namedByManifest_;
  FoldersByChat namedByArchive_;
  Outcome outcome_;
};

}  // namespace

Outcome FolderPairing::find(const Evidence& evidence, const std::function<FolderListing(const std::string&)>& list) {
  return Pairing(evidence, list).run();
}

std::optional<std::string> FolderPairing::jidIfLegacyFolder(std::string_view folder) {
  return FolderAllocator::isNamedLikeJID(folder) ? std::optional(std::string(folder)) : std::nullopt;
}

std::int64_t FolderPairing::overlapBytes(const FolderListing& a, const FolderListing& b) {
  std::int64_t bytes = 0;
  for (const auto& [key, size] : a) {
    const auto other = b.find(key);
    if (size >= 0 && other != b.end() && other->second == size) bytes = saturatingAdd(bytes, size);
  }
  return bytes;
}
