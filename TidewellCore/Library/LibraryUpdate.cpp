#include "TidewellCore/Library/LibraryUpdate.h"

#include <algorithm>
#include <chrono>
#include <set>

#include "TidewellCore/Library/ArchiveOwner.h"
#include "TidewellCore/Library/ChatPast.h"
#include "TidewellCore/Library/KeptExports.h"
#include "TidewellCore/Library/MessageUnion.h"
#include "TidewellCore/Library/ToldChat.h"
#include "TidewellCore/Library/ToldPeople.h"

namespace {

using Value = SQLiteStatement::Value;

template <typename Number>
Value valueOf(const std::optional<Number>& value) {
  return value ? Value(*value) : Value(SQLiteNull{});
}
Value valueOf(std::string_view text) { return text.empty() ? Value(SQLiteNull{}) : Value(text); }
Value valueOf(const std::optional<std::string>& text) {
  return text ? Value(std::string_view(*text)) : Value(SQLiteNull{});
}

// One that takes no texts has no row of its own, but may have changed chats.
std::int64_t nextExport(const Library& library) {
  std::int64_t last = 0;
  library.database().forEachRow("SELECT max(id) FROM export",
                                [&](const SQLiteRowView& row) { last = row.integer(0).value_or(0); });
  for (const KeptChat& chat : library.chats()) last = std::max(last, chat.changed);
  return last + 1;
}

// Of those that were taken whole.
double newestBackup(const SQLiteDB& database) {
  double newest = 0;
  database.forEachRow("SELECT max(backup_at) FROM export",
                      [&](const SQLiteRowView& row) { newest = row.number(0).value_or(0); });
  return newest;
}

// One taking in, from its first row to its last.
class Update {
 public:
  explicit Update(Library& library)
      : library_(library),
        transaction_(library.database()),
        writeMessage_(library.database(),
                      "INSERT OR REPLACE INTO message (chat, key, time, place, from_me, last_told, said_at, "
                      "deleted_later, sender,"
                      " stanza, text, medium, facts, page) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        export_(nextExport(library)),
        newestBackup_(newestBackup(library.database())),
        saved_(library.chats()) {}

  void takeEarlier(const LibraryUpdate::EarlierChat& earlier) {
    const std::vector<std::size_t> known = library_.chatsOf({earlier.chat.jid});
    const std::size_t place = known.empty() ? library_.add(earlier.chat) : known.front();
    unite(place, {earlier.messages.list});
    if (known.empty()) touch(place);
  }

  void take(const LibraryUpdate::Source& source, const CancellationCheck& isCancelled) {
    backupDate_ = source.backup.backupDate ? unixTime(*source.backup.backupDate) : 0;
    const bool isNewest = backupDate_ >= newestBackup_;
    if (ToldPeople::take(source.snapshot, source.scope, library_.people(), isNewest)) touchAll();
    takeOwner(source.snapshot);
    const ToldJIDs told = find(source);
    for (const auto& [number, jids] : told) {
      throwIfCancelled(isCancelled);
      takeChat(source, placeOf(number), jids);
    }
    for (std::size_t place = 0; isNewest && place < library_.chats().size(); ++place) {
      KeptChat& chat = library_.chat(place);
      const bool isGone = !told.contains(chat.id) && (chat.isGone || lacks(source.scope, chat));
      if (chat.isGone == isGone) continue;
      chat.isGone = isGone;
      touch(place);
    }
  }

  // Whether a backup that does not tell a chat would, if it were still there. A part of a newer one may have told it.
  bool lacks(const Scope& scope, const KeptChat& chat) const {
    return scope.isEverything() && KeptChats::lastTold(library_.database(), chat) <= backupDate_;
  }

  void takeOwner(const ChatStorageSnapshot& snapshot) {
    hasChanged_ |= ArchiveOwner::enter(library_.database(), snapshot.ownJIDs());
  }

  void takePictures(const std::map<std::string, std::string>& pictures) {
    for (std::size_t place = 0; place < library_.chats().size(); ++place) {
      const auto picture = pictures.find(library_.chats()[place].page);
      if (picture != pictures.end()) library_.chat(place).avatar = picture->second;
    }
  }

  void commit(const LibraryUpdate::Source* source) {
    touchChatsOf(library_.media().displaced());
    hasChanged_ |= library_.media().save(library_.database());
    hasChanged_ |= library_.people().save(library_.database());
    noteToldAgain();
    if (source != nullptr && (hasChanged_ || isNewest(*source) || speaksAnew(*source))) writeExport(*source);
    saveChats();
    transaction_.commit();
  }

 private:
  // A backup that knows less of people than the library may tell of one chat twice.
  using ToldJIDs = std::map<std::int64_t, std::vector<CanonicalJID>>;  // by the chat's number

  ToldJIDs find(const LibraryUpdate::Source& source) {
    for (const CanonicalJID& jid : source.chats) enter(source, jid);
    // Only now: a later JID may have joined the chat of an earlier one to another.
    ToldJIDs told;
    for (const CanonicalJID& jid : source.chats) {
      const std::size_t place = library_.chatsOf({jid.text()}).front();
      told[library_.chats()[place].id].push_back(jid);
    }
    return told;
  }

  std::size_t placeOf(std::int64_t number) const {
    return static_cast<std::size_t>(std::ranges::lower_bound(library_.chats(), number, {}, &KeptChat::id) -
                                    library_.chats().begin());
  }

  void takeChat(const LibraryUpdate::Source& source, std::size_t place, const std::vector<CanonicalJID>& jids) {
    ToldChat told = ToldChat::of(source.snapshot, source.scope, jids, library_.people(), library_.media());
    KeptChat& chat = library_.chat(place);
    const bool isPart = !source.scope.hasAllTime();
    if (!isPart && chat.told == told.digest) {
      if (backupDate_ > chat.toldAt) toldAgain_.push_back(place);
      return;
    }
    const KeptChat before = chat;
    const double lastTold = KeptChats::lastTold(library_.database(), chat);
    const bool hasNews = unite(place, {told.messages.list, backupDate_, isPart});
    const bool isNewest = backupDate_ >= lastTold;
    bool isPastNew = ChatPast::takeTitle(library_.database(), chat.id, told.title);
    if (!isPart) {
      isPastNew |= ChatPast::takeMembers(library_.database(), chat.id, {told.members, backupDate_, isNewest}, lastTold);
    }
    hasChanged_ |= isPastNew;
    if (isNewest) nameAfter(jids.front().text(), told, chat);
    // A digest stands for all that is known here, which is more than this once a part of a newer backup was told.
    if (isPart && (hasNews || isPastNew || chat != before)) chat.told.clear();
    if (!isPart && backupDate_ >= chat.toldAt) {
      chat.told = isNewest ? std::move(told.digest) : Bytes();
      chat.toldAt = backupDate_;
    }
    if (chat != before) touch(place);
  }

  static void nameAfter(const std::string& jid, const ToldChat& told, KeptChat& chat) {
    chat.jid = jid;
    chat.name = told.title;
    chat.partner = told.partner;
  }

  // Chats that this backup knows for one become one.
  void enter(const LibraryUpdate::Source& source, const CanonicalJID& jid) {
    const ChatStorageSnapshot& snapshot = source.snapshot;
    std::vector<std::string> jids = snapshot.aliasJIDs(jid.text());
    if (std::ranges::find(jids, jid.text()) == jids.end()) jids.push_back(jid.text());
    std::vector<std::size_t> known = library_.chatsOf(jids);
    if (known.empty()) {
      known.push_back(library_.add({.jid = jid.text(),
                                    .name = snapshot.chatTitle(jid.text()),
                                    .page = source.pageIDOf(jid.text()),
                                    .partner = snapshot.partnerName(jid.text()),
                                    .isGone = backupDate_ < newestBackup_}));
      touch(known.front());
    }
    for (; known.size() > 1; known.pop_back()) join(known.back(), known.front());
    for (const std::string& alias : jids) {
      if (library_.identify(known.front(), alias)) touch(known.front());
    }
  }

  void join(std::size_t place, std::size_t other) {
    const KeptChat joined = library_.chats()[place];
    const KeptMessages messages = KeptChats::messages(library_.database(), joined.id);
    unite(other, {messages.list, joined.toldAt});
    ChatPast::join(library_.database(), joined.id, library_.chats()[other].id);
    library_.joinInto(place, other);
    KeptChat& both = library_.chat(other);
    if (joined.toldAt > both.toldAt) {
      both.jid = joined.jid;
      both.name = joined.name;
      both.partner = joined.partner;
      both.toldAt = joined.toldAt;
    }
    if (!both.avatar) both.avatar = joined.avatar;
    both.isGone = both.isGone && joined.isGone;
    both.told.clear();
    std::erase_if(saved_, [&](const KeptChat& chat) { return chat.id == joined.id; });
    touch(other);
  }

  // Tells whether there was anything new.
  bool unite(std::size_t place, const MessageUnion::Side& told) {
    const std::int64_t chat = library_.chats()[place].id;
    const double keptAt = library_.chats()[place].toldAt;
    const KeptMessages kept = KeptChats::messages(library_.database(), chat);
    const auto hasFile = [this](std::int64_t number) {
      const KeptMedium* medium = library_.media().medium(number);
      return medium != nullptr && medium->place;
    };
    TextArena texts;
    bool hasNews = false;
    MessageUnion::changes({kept.list, keptAt}, told, texts, hasFile, [&](const KeptMessage& message) {
      write(chat, message);
      hasNews = true;
    });
    if (hasNews) touch(place);
    return hasNews;
  }

  void write(std::int64_t chat, const KeptMessage& message) {
    writeMessage_.run({chat, message.key, valueOf(message.time), message.placeInSecond, std::int64_t{message.isFromMe},
                       valueOf(message.lastTold), valueOf(message.saidAt), std::int64_t{message.isDeletedLater},
                       valueOf(message.sender), valueOf(message.stanzaID), valueOf(message.text),
                       valueOf(message.medium), valueOf(message.facts), valueOf(message.page)});
  }

  // An older backup that is taken later has to know.
  bool isNewest(const LibraryUpdate::Source& source) const {
    return source.scope.isEverything() && backupDate_ > newestBackup_;
  }

  // Pages in another zone or language than those before: whoever makes them again has to know.
  bool speaksAnew(const LibraryUpdate::Source& source) const {
    const auto last = KeptExports::lastSpeech(library_.database());
    return last && *last != KeptExports::Speech{.timeZone = source.timeZone, .locale = source.locale};
  }

  void writeExport(const LibraryUpdate::Source& source) {
    const SQLiteStatement write(library_.database(),
                                "INSERT INTO export (id, at, device, device_name, backup_at, zone, locale)"
                                " VALUES (?, ?, ?, ?, ?, ?, ?)");
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    // A part says nothing of what it lacks, so no date is compared with its.
    const Value date = source.scope.isEverything() ? Value(backupDate_) : Value(SQLiteNull{});
    write.run({export_, now.count(), valueOf(source.backup.uniqueIdentifier), valueOf(source.backup.deviceName), date,
               std::string_view(source.timeZone.identifier), std::string_view(source.locale.identifier)});
  }

  void touch(std::size_t place) {
    library_.chat(place).changed = export_;
    hasChanged_ = true;
  }
  // The pages of chats lead to their files.
  void touchChatsOf(const std::set<std::int64_t>& media) {
    if (media.empty()) return;
    std::set<std::int64_t> chats;
    library_.database().forEachRow("SELECT chat, medium FROM message WHERE medium IS NOT NULL",
                                   [&](const SQLiteRowView& row) {
                                     if (media.contains(row.integer(1).value_or(-1))) chats.insert(*row.integer(0));
                                   });
    for (std::size_t place = 0; place < library_.chats().size(); ++place) {
      if (chats.contains(library_.chats()[place].id)) touch(place);
    }
  }
  void touchAll() {
    for (std::size_t place = 0; place < library_.chats().size(); ++place) touch(place);
  }

  // A date alone is no news to the pages.
  void noteToldAgain() {
    for (const std::size_t place : toldAgain_) library_.chat(place).toldAt = backupDate_;
  }

  void saveChats() {
    const SQLiteStatement write(
        library_.database(),
        "INSERT INTO chat (id, jid, name, page, partner, avatar, gone, told_at, told, changed)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT (id) DO UPDATE SET jid = excluded.jid,"
        " name = excluded.name, page = excluded.page, partner = excluded.partner, avatar = excluded.avatar,"
        " gone = excluded.gone, told_at = excluded.told_at, told = excluded.told, changed = excluded.changed");
    for (const KeptChat& chat : library_.chats()) {
      const auto saved = std::ranges::find(saved_, chat.id, &KeptChat::id);
      if (saved != saved_.end() && *saved == chat) continue;
      write.run({chat.id, std::string_view(chat.jid), std::string_view(chat.name), std::string_view(chat.page),
                 std::string_view(chat.partner), valueOf(chat.avatar), std::int64_t{chat.isGone}, chat.toldAt,
                 ByteView(chat.told), chat.changed});
    }
  }

  Library& library_;
  SQLiteTransaction transaction_;
  SQLiteStatement writeMessage_;
  const std::int64_t export_;  // the number that this export gets when it changes anything
  const double newestBackup_;  // the date of the newest backup taken before, in seconds since 1970
  double backupDate_ = 0;
  bool hasChanged_ = false;
  std::vector<std::size_t> toldAgain_;  // the places of chats of which this backup tells what an older one did
  std::vector<KeptChat> saved_;         // the chats as the file has them
};

}  // namespace

void LibraryUpdate::take(Library& library, const EarlierChats& earlier, const Source& source,
                         const CancellationCheck& isCancelled) {
  Update update(library);
  if (earlier) {
    earlier([&](const EarlierChat& chat) {
      throwIfCancelled(isCancelled);
      update.takeEarlier(chat);
    });
  }
  update.take(source, isCancelled);
  update.commit(&source);
}

void LibraryUpdate::takePages(Library& library, const Pages& pages) {
  Update update(library);
  update.takePictures(pages.pictures);
  pages.renderings.save(library.database());
  update.commit(nullptr);
}

void LibraryUpdate::takeMedia(Library& library, const ChatStorageSnapshot& snapshot) {
  Update update(library);
  update.takeOwner(snapshot);
  update.commit(nullptr);
}
