#include "TidewellCore/Export/BackupVerification.h"

#include <fmt/format.h>

#include <map>
#include <set>
#include <unordered_map>
#include <utility>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Library/MessageMatching.h"
#include "TidewellCore/Library/MessageUnion.h"
#include "TidewellCore/Library/ToldChat.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

using BackupVerification::Ground;
using BackupVerification::Step;
using Finding = VerifySummary::Finding;

constexpr const char* adviceToExport = "Export again.";
constexpr const char* adviceForBackup =
    "The backup holds no whole file of it. Make a new backup with the iPhone and export that.";
constexpr const char* adviceForBackupOfMany =
    "The backup holds no whole files of them. Make a new backup with the iPhone and export that.";

// "1 photo of “Ana” is not in the archive."
std::string absence(std::int64_t count, std::string_view things, std::string_view chat) {
  if (count > 1) return fmt::format("{} {} of “{}” are not in the archive.", count, things, chat);
  return fmt::format("1 {} of “{}” is not in the archive.", things.substr(0, things.size() - 1), chat);
}

std::string poverty(std::int64_t count, std::string_view chat) {
  if (count > 1) return fmt::format("{} messages of “{}” say more in the backup than in the archive.", count, chat);
  return fmt::format("1 message of “{}” says more in the backup than in the archive.", chat);
}

// What files of a kind are called within a sentence, in the plural.
std::string_view wordOf(MediaKind kind) {
  switch (kind.value()) {
    case MediaKind::photos:
      return "photos";
    case MediaKind::videos:
      return "videos";
    case MediaKind::voiceNotes:
      return "voice notes";
    case MediaKind::stickers:
      return "stickers";
    case MediaKind::documents:
      break;
  }
  return "documents";
}

double dateOf(const BackupInfo& backup) { return backup.backupDate ? unixTime(*backup.backupDate) : 0; }

class Comparison {
 public:
  Comparison(const Ground& ground, const Step& step)
      : backup_(ground.backup),
        library_(ground.library),
        contentRoot_(ground.contentRoot),
        step_(step),
        backupDate_(dateOf(ground.backup.opened.info())),
        people_(library_.database()),
        ledger_(library_.database()) {
    for (const KeptMedium& medium : ledger_.media()) {
      if (medium.place) mediaByPath_[medium.path].push_back(&medium);
    }
  }

  BackupVerification::Outcome run() {
    for (const ManifestFile& file : backup_.media()) {
      step_(std::string(PathText::lastComponent(file.relativePath)));
      lookAt(file);
    }
    tellAbsentMedia();
    lookAtChats();
    return {.findings = std::move(findings_), .forgetfulChats = std::move(forgetfulChats_)};
  }

 private:
  // Media of one chat and kind that are not in the archive.
  struct Absent {
    std::int64_t whole = 0;    // which an export would bring
    std::int64_t damaged = 0;  // which the backup does not have whole
  };

  void find(const std::string& place, std::string message) {
    findings_.push_back({.kind = VerifySummary::Kind::notArchived, .place = place, .message = std::move(message)});
  }

  void lookAt(const ManifestFile& file) {
    const std::optional<std::int64_t> size = backup_.opened.provenSize(file);
    const auto known = mediaByPath_.find(file.relativePath);
    const KeptMedium* standing = nullptr;
    if (known != mediaByPath_.end()) {
      for (const KeptMedium* medium : known->second) {
        if (!stands(*medium)) continue;
        if (!size || *size == medium->size) return;
        standing = medium;
      }
    }
    if (standing != nullptr) {
      const std::string place = standing->place->relativePath();
      find(place, fmt::format("“{}” has {} bytes, and {} in the backup. Export again: the backup’s is put beside it.",
                              place, standing->size, *size));
      return;
    }
    Absent& absent = absentMedia_[{ownerOf(file), MediaKind::classify(PathText::extension(file.relativePath))}];
    ++(size ? absent.whole : absent.damaged);
  }

  // One that stood there when the last export ended is looked at with the archive.
  bool stands(const KeptMedium& medium) const {
    const auto size = [&] {
      return Files::regularFileSize(contentRoot_ / PathText::path(medium.place->relativePath()));
    };
    return medium.isThere || size() == medium.size;
  }

  CanonicalJID ownerOf(const ManifestFile& file) const {
    return backup_.snapshot.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath));
  }

  void tellAbsentMedia() {
    for (const auto& [place, absent] : absentMedia_) {
      const std::string chat = backup_.snapshot.chatTitle(place.first.text());
      const std::string_view word = wordOf(place.second);
      if (absent.whole > 0) find(chat, fmt::format("{} {}", absence(absent.whole, word, chat), adviceToExport));
      if (absent.damaged == 0) continue;
      find(chat, fmt::format("{} {}", absence(absent.damaged, word, chat),
                             absent.damaged == 1 ? adviceForBackup : adviceForBackupOfMany));
    }
  }

  // Those that the library knows for one are looked at as one.
  void lookAtChats() {
    std::map<std::size_t, std::vector<CanonicalJID>> known;
    for (const ChatStorageSnapshot::Chat& chat : backup_.snapshot.chats()) {
      if (chat.messageCount == 0) continue;
      const std::vector<std::size_t> places = placesOf(chat.jid);
      places.empty() ? lookAtChat({chat.jid}) : known[places.front()].push_back(chat.jid);
    }
    for (const auto& [place, jids] : known) lookAtChat(jids);
  }

  std::vector<std::size_t> placesOf(const CanonicalJID& jid) const {
    std::vector<std::string> jids = backup_.snapshot.aliasJIDs(jid.text());
    jids.push_back(jid.text());
    return library_.chatsOf(jids);
  }

  // Under all of its JIDs, as an export would take it in.
  void lookAtChat(const std::vector<CanonicalJID>& jids) {
    const std::string name = backup_.snapshot.chatTitle(jids.front().text());
    step_(name);
    const ToldChat told = ToldChat::of(backup_.snapshot, Scope{}, jids, people_, ledger_);
    const std::vector<std::size_t> places = allPlacesOf(jids);
    const Difference difference = places.size() == 1 ? differenceOf(places.front(), told.messages)
                                                     : Difference{.absent = newMessages(places, told.messages)};
    if (difference.absent > 0) {
      find(name, fmt::format("{} {}", absence(difference.absent, "messages", name), adviceToExport));
    }
    if (difference.poorer > 0) find(name, fmt::format("{} {}", poverty(difference.poorer, name), adviceToExport));
    const bool isWhole = difference.absent == 0 && difference.poorer == 0;
    for (const std::size_t place : places) {
      if (!isWhole && library_.chats()[place].told == told.digest) forgetfulChats_.push_back(place);
    }
  }

  // How many messages an export would add to a chat, and to how many it would add something.
  struct Difference {
    std::int64_t absent = 0;
    std::int64_t poorer = 0;
  };

  Difference differenceOf(std::size_t place, const KeptMessages& told) const {
    const KeptChat& chat = library_.chats()[place];
    const KeptMessages kept = KeptChats::messages(library_.database(), chat.id);
    std::unordered_map<std::int64_t, const KeptMessage*> byKey;
    for (const KeptMessage& message : kept.list) byKey.emplace(message.key, &message);
    const auto hasFile = [this](std::int64_t number) {
      const KeptMedium* medium = ledger_.medium(number);
      return medium != nullptr && medium->place;
    };
    TextArena texts;
    Difference difference;
    MessageUnion::changes({kept.list, chat.toldAt}, {told.list, backupDate_}, texts, hasFile,
                          [&](const KeptMessage& message) {
                            const auto known = byKey.find(message.key);
                            if (known == byKey.end()) {
                              ++difference.absent;
                            } else if (saysMore(message, *known->second)) {
                              ++difference.poorer;
                            }
                          });
    return difference;
  }

  // More than from when it is. A medium under another number is one that the ledger lacks, and found as such.
  static bool saysMore(const KeptMessage& message, const KeptMessage& kept) {
    return message.text != kept.text || message.facts != kept.facts || (message.medium && !kept.medium) ||
           (message.sender && !kept.sender) || message.isDeletedLater != kept.isDeletedLater;
  }

  // Of chats that an export would make one.
  std::int64_t newMessages(const std::vector<std::size_t>& places, const KeptMessages& told) const {
    const std::vector<KeptMessages> kept = messagesOf(places);
    std::vector<KeptMessage> all;
    for (const KeptMessages& messages : kept) all.insert(all.end(), messages.list.begin(), messages.list.end());
    return MessageMatching(all, told.list).newCount();
  }

  std::vector<std::size_t> allPlacesOf(const std::vector<CanonicalJID>& jids) const {
    std::set<std::size_t> places;
    for (const CanonicalJID& jid : jids) {
      const std::vector<std::size_t> known = placesOf(jid);
      places.insert(known.begin(), known.end());
    }
    return {places.begin(), places.end()};
  }

  std::vector<KeptMessages> messagesOf(const std::vector<std::size_t>& places) const {
    std::vector<KeptMessages> messages;
    messages.reserve(places.size());
    for (const std::size_t place : places) {
      messages.push_back(KeptChats::messages(library_.database(), library_.chats()[place].id));
    }
    return messages;
  }

  const BackupSource& backup_;
  const Library& library_;
  const std::filesystem::path& contentRoot_;
  const Step& step_;
  const double backupDate_;  // in seconds since 1970; 0 when it is not known
  KeptPeople people_;        // the library's, to which what the backup tells is added in memory
  MediaLedger ledger_;       // likewise
  std::unordered_map<std::string_view, std::vector<const KeptMedium*>> mediaByPath_;  // those that have a place
  std::map<std::pair<CanonicalJID, MediaKind>, Absent> absentMedia_;
  std::vector<Finding> findings_;
  std::vector<std::size_t> forgetfulChats_;
};

}  // namespace

std::int64_t BackupVerification::stepCount(const BackupSource& backup) {
  return std::ssize(backup.media()) + std::ssize(backup.snapshot.chats());
}

BackupVerification::Outcome BackupVerification::compare(const Ground& ground, const Step& step) {
  return Comparison(ground, step).run();
}
