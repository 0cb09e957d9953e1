#include "TidewellCore/ChatData/ChatStorageReader.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/StoredNumber.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"
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
  if (!std::ranges::all_of(selected, &Column::isThere)) tables.unread.isPartial = true;
}

void loadChats(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWACHATSESSION");
  const Column pk = table.select({"Z_PK"});
  const Column jid = table.select({"ZCONTACTJID", "ZJID", "ZPARTNERJID"});
  const Column name = table.select({"ZPARTNERNAME", "ZPARTNER", "ZCONTACTNAME"});
  noteColumns({pk, jid, name}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(pk.place);
    if (!key) return;
    tables.chats.insert_or_assign(
        *key, ChatRecord{.pk = *key, .jid = nameOf(row, jid).value_or(""), .name = nameOf(row, name).value_or("")});
  });
}

void loadGroupMembers(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAGROUPMEMBER");
  const Column pk = table.select({"Z_PK"});
  const Column contactName = table.select({"ZCONTACTNAME", "ZNAME", "ZMEMBERNAME"});
  const Column firstName = table.select({"ZFIRSTNAME"});
  const Column jid = table.select({"ZMEMBERJID", "ZJID"});
  noteColumns({pk, jid}, tables);
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(pk.place);
    if (!key) return;
    tables.directory.groupMembers.insert_or_assign(*key,
                                                   GroupMemberRecord{.pk = *key,
                                                                     .jid = nameOf(row, jid),
                                                                     .contactName = plausible(nameOf(row, contactName)),
                                                                     .firstName = plausible(nameOf(row, firstName))});
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
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto identity = NameResolver::trimmedNonEmpty(nameOf(row, lid));
    const auto number = NameResolver::trimmedNonEmpty(nameOf(row, phone));
    if (identity && number) {
      tables.directory.link(NameResolver::lidJID(*identity), NameResolver::whatsAppJID(*number));
    }
  });
}

std::int64_t rowCount(const SQLiteDB& database, const std::string& table) {
  std::int64_t count = 0;
  if (!database.tableExists(table)) return count;
  database.forEachRow("SELECT count(*) FROM " + table,
                      [&](const SQLiteRowView& row) { count = row.integer(0).value_or(0); });
  return count;
}

class MessageTable {
 public:
  MessageTable(const SQLiteDB& database, ChatTables& tables) : table_(database, "ZWAMESSAGE"), tables_(tables) {}

  void load(const SQLiteDB& database) {
    noteColumns({sent_, isFromMe_, fromJID_, groupMember_}, tables_);
    if (!pk_.isThere() || !chat_.isThere()) {
      tables_.unread.withoutChat = rowCount(database, "ZWAMESSAGE");
      return;
    }
    table_.forEachRow([this](const SQLiteRowView& row) { read(row); });
  }

 private:
  void read(const SQLiteRowView& row) {
    const auto key = row.integer(pk_.place);
    const auto chat = row.integer(chat_.place);
    const bool isTextLost = !text_.isThere() || !row.blob(text_.place).value_or(ByteView()).empty();
    const auto text = row.text(text_.place);
    if (key && chat) {
      if (isTextLost) ++tables_.unread.withoutText;
      tables_.messages.push_back(record(row, *key, *chat));
    } else if (key && !isTextLost && text.value_or("").empty()) {
      tables_.silentMessages.insert(*key);
    } else {
      ++tables_.unread.withoutChat;
    }
  }

  MessageRecord record(const SQLiteRowView& row, std::int64_t key, std::int64_t chat) {
    return {.pk = key,
            .chatPK = chat,
            .date = dateOf(row),
            .sort = sortOf(row),
            .text = kept(row.text(text_.place)),
            .isFromMe = row.integer(isFromMe_.place).value_or(0) != 0,
            .fromJID = keptOnce(row.text(fromJID_.place)),
            .pushName = pushNameOf(row),
            .groupMemberPK = row.integer(groupMember_.place)};
  }

  std::optional<Date> dateOf(const SQLiteRowView& row) {
    const std::optional<Date> sent = StoredNumber::date(row, sent_);
    if (!sent && row.type(sent_.place) != SQLiteRowView::Type::null) tables_.unread.isPartial = true;
    return sent;
  }

  double sortOf(const SQLiteRowView& row) const {
    const bool isText = row.type(sort_.place) == SQLiteRowView::Type::text;
    return (isText ? std::nullopt : row.number(sort_.place)).value_or(MessageRecord().sort);
  }

  // A name stored as text is kept as it is; one stored as bytes only when it reads like a name.
  std::optional<std::string_view> pushNameOf(const SQLiteRowView& row) {
    const auto name = textOrUTF8(row, pushName_);
    if (!name) return std::nullopt;
    const bool isBlob = row.type(pushName_.place) == SQLiteRowView::Type::blob;
    if (isBlob && !NameResolver::isPlausibleDisplayName(*name)) return std::nullopt;
    return tables_.texts.add(cut(*name));
  }

  std::optional<std::string_view> kept(const std::optional<std::string_view>& text) {
    return text ? std::optional(tables_.texts.add(*text)) : std::nullopt;
  }

  std::optional<std::string_view> keptOnce(const std::optional<std::string_view>& name) {
    return name ? std::optional(tables_.texts.addOnce(cut(*name))) : std::nullopt;
  }

  // Good until the next is cut.
  std::string_view cut(std::string_view name) {
    if (name.size() <= NameResolver::longestName) return name;
    return cut_ = NameResolver::cut(std::string(name)).value_or("");
  }

  TableReader table_;
  ChatTables& tables_;
  const Column pk_ = table_.select({"Z_PK"});
  const Column chat_ = table_.select({"ZCHATSESSION"});
  const Column sent_ = table_.select({"ZMESSAGEDATE", "ZDATE"});
  const Column text_ = table_.select({"ZTEXT", "ZMESSAGETEXT"});
  const Column isFromMe_ = table_.select({"ZISFROMME", "ZFROMMe"});
  const Column fromJID_ = table_.select({"ZFROMJID", "ZSENDERJID"});
  const Column pushName_ = table_.select({"ZPUSHNAME"});
  const Column groupMember_ = table_.select({"ZGROUPMEMBER"});
  const Column sort_ = table_.select({"ZSORT"});
  std::string cut_;
};

// Only what stands in WhatsApp's own folder of media is a file of the backup; letter case does not matter.
bool isMediaPath(std::string_view path) {
  constexpr std::string_view folder = "MEDIA/";
  return path.size() > folder.size() && Text::uppercasedASCII(path.substr(0, folder.size())) == folder;
}

void loadMedia(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAMEDIAITEM");
  const Column message = table.select({"ZMESSAGE"});
  const Column path = table.select({"ZMEDIALOCALPATH", "ZLOCALPATH"});
  noteColumns({message, path}, tables);
  if (!message.isThere() || !path.isThere()) return;
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto localPath = row.text(path.place);
    if (!localPath || !isMediaPath(*localPath)) return;
    tables.media.push_back(
        {.messagePK = row.integer(message.place), .localPath = tables.texts.add("Message/" + std::string(*localPath))});
  });
}

}  // namespace

ChatTables ChatStorageReader::load(const std::filesystem::path& copiedDatabase) {
  const SQLiteDB database = open(copiedDatabase);
  ChatTables tables;
  loadChats(database, tables);
  loadGroupMembers(database, tables);
  loadProfilePushNames(database, tables);
  loadLIDPairs(database, tables);
  MessageTable(database, tables).load(database);
  loadMedia(database, tables);
  return tables;
}
