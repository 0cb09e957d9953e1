#include "TidewellCore/ChatData/ChatStorageReader.h"

#include <initializer_list>
#include <string_view>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/MediaPaths.h"
#include "TidewellCore/ChatData/MessageColumns.h"
#include "TidewellCore/ChatData/MessageTable.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

SQLiteDB open(const std::filesystem::path& copiedDatabase) {
  try {
    return {PathText::text(copiedDatabase), SQLiteDB::OpenMode::writableCopy};
  } catch (const TidewellError& error) {
    throw TidewellError::chatStorageUnreadable(error.errorDescription());
  }
}

using Column = TableReader::Column;

std::optional<std::string> owned(const std::optional<std::string_view>& text) {
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

std::optional<std::string> nameOf(const SQLiteRowView& row, Column column) {
  return NameResolver::cut(owned(row.text(column.place)));
}

std::optional<std::string> plausible(std::optional<std::string> name) {
  if (!name || !NameResolver::isPlausibleDisplayName(*name)) return std::nullopt;
  return name;
}

// Every version of WhatsApp has one of the candidates of such a column.
void noteColumns(std::initializer_list<Column> selected, ChatTables& tables) {
  if (!areThere(selected)) tables.unread.isPartial = true;
}

void loadChats(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWACHATSESSION");
  const Column pk = table.select({"Z_PK"});
  const Column jid = table.select({"ZCONTACTJID", "ZJID", "ZPARTNERJID"});
  const Column name = table.select({"ZPARTNERNAME", "ZPARTNER", "ZCONTACTNAME"});
  const Column identifier = table.select({"ZCONTACTIDENTIFIER"});
  noteColumns({pk, jid, name}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(pk.place);
    if (!key) return;
    ChatRecord chat{.pk = *key, .jid = nameOf(row, jid).value_or(""), .name = nameOf(row, name).value_or("")};
    const std::string other = nameOf(row, identifier).value_or("");
    if (JID::isLID(chat.jid) && JID::hasServer(other, UserJIDSuffix)) tables.directory.link(chat.jid, other);
    tables.chats.insert_or_assign(*key, std::move(chat));
  });
}

void loadGroupMembers(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAGROUPMEMBER");
  const Column pk = table.select({"Z_PK"});
  const Column contactName = table.select({"ZCONTACTNAME", "ZNAME", "ZMEMBERNAME"});
  const Column firstName = table.select({"ZFIRSTNAME"});
  const Column jid = table.select({"ZMEMBERJID", "ZJID"});
  const Column chat = table.select({"ZCHATSESSION"});
  const Column isActive = table.select({"ZISACTIVE"});
  noteColumns({pk, jid}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(pk.place);
    if (!key) return;
    tables.directory.groupMembers.insert_or_assign(*key,
                                                   GroupMemberRecord{.pk = *key,
                                                                     .jid = nameOf(row, jid),
                                                                     .contactName = plausible(nameOf(row, contactName)),
                                                                     .firstName = plausible(nameOf(row, firstName)),
                                                                     .chatPK = row.integer(chat.place),
                                                                     .isActive = row.integer(isActive.place) != 0});
  });
}

void loadProfilePushNames(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAPROFILEPUSHNAME");
  const Column jid = table.select({"ZJID", "ZCONTACTJID"});
  const Column name = table.select({"ZPUSHNAME", "ZNAME"});
  // Not every version has the table.
  if (jid.isThere() || name.isThere()) noteColumns({jid, name}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const std::string owner = nameOf(row, jid).value_or("");
    const auto pushName = plausible(NameResolver::cut(owned(textOrUTF8(row, name))));
    if (!owner.empty() && pushName) tables.directory.addPushName(owner, *pushName);
  });
}

void loadLIDPairs(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAPHONENUMBERLIDPAIR");
  const Column lid = table.select({"ZLID"});
  const Column phone = table.select({"ZPHONENUMBER"});
  // Not every version has the table.
  if (lid.isThere() || phone.isThere()) noteColumns({lid, phone}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto identity = NameResolver::trimmedNonEmpty(nameOf(row, lid));
    const auto number = NameResolver::trimmedNonEmpty(nameOf(row, phone));
    if (identity && number) {
      tables.directory.link(NameResolver::lidJID(*identity), NameResolver::whatsAppJID(*number));
    }
  });
}

// A page whose rows are out of order hides them from whoever looks for their keys.
bool isHiddenItemOf(const ChatTables& tables, std::optional<std::int64_t> key, std::optional<std::int64_t> message) {
  const auto named = key ? tables.unfoundItems.find(*key) : tables.unfoundItems.end();
  return named != tables.unfoundItems.end() && message.value_or(named->second) == named->second;
}

// WhatsApp's own digest of a file, where other items have a name or an address: SHA-256 in Base64, and nothing else.
std::string_view sentDigest(std::optional<std::string_view> stored, TextArena& texts) {
  constexpr std::size_t digestSize = 32;   // bytes
  constexpr std::size_t encodedSize = 44;  // of so many bytes
  if (!stored || stored->size() != encodedSize) return {};
  const std::optional<Bytes> digest = Base64::decode(*stored);
  const bool isDigest = digest && digest->size() == digestSize && Base64::encode(*digest) == *stored;
  return isDigest ? texts.add(*stored) : std::string_view();
}

// To be read after the messages.
void loadMedia(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAMEDIAITEM");
  const Column pk = table.select({"Z_PK"});
  const Column message = table.select({"ZMESSAGE"});
  const Column path = table.select({"ZMEDIALOCALPATH", "ZLOCALPATH"});
  const Column digest = table.select({"ZVCARDNAME"});
  noteColumns({message, path}, tables);
  if (!areThere({message, path})) return;
  std::int64_t items = 0;
  table.forEachRow([&](const SQLiteRowView& row) {
    ++items;
    const auto owner = row.integer(message.place);
    if (isHiddenItemOf(tables, row.integer(pk.place), owner)) tables.unread.isPartial = true;
    const auto localPath = row.text(path.place);
    if (!localPath || !MediaPaths::isOfFile(*localPath)) return;
    tables.media.push_back({.messagePK = owner,
                            .localPath = tables.texts.add(MediaPaths::inBackup(*localPath)),
                            .sentDigest = sentDigest(row.text(digest.place), tables.texts)});
  });
  if (tables.media.empty()) tables.unread.namelessItems = items;
}

}  // namespace

ChatTables ChatStorageReader::load(const std::filesystem::path& copiedDatabase, const Setting& setting) {
  SQLiteDB database = open(copiedDatabase);
  database.cancelWhen(setting.isCancelled);
  ChatTables tables;
  loadChats(database, tables);
  loadGroupMembers(database, tables);
  loadProfilePushNames(database, tables);
  loadLIDPairs(database, tables);
  if (!MessageColumns::areWhole(database)) tables.unread.isPartial = true;
  MessageTable::load(database, setting.hasFile, tables);
  loadMedia(database, tables);
  return tables;
}
