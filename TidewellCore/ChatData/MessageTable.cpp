#include "TidewellCore/ChatData/MessageTable.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/MessageDecoder.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/OwnJID.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/ChatData/StoredNumber.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/ProtobufReader.h"
#include "TidewellCore/TidewellError.h"

namespace {

using Column = TableReader::Column;

std::string textOf(const SQLiteRowView& row, Column column) { return std::string(row.text(column.place).value_or("")); }

// What the phone knows of the addresses in a message's text, as long as it can be shown.
struct LinkRow {
  std::string url;
  std::string title;
  std::string summary;
};
using LinkRows = std::unordered_map<std::int64_t, LinkRow>;  // by the message's key

// A cut address leads nowhere, so that one which is longer than any is none.
std::string addressIn(std::optional<std::string_view> text) {
  constexpr std::size_t longestAddress = 4'096;
  return std::string(text && text->size() <= longestAddress ? *text : std::string_view());
}

// What messages have besides is told of as damage where it cannot be read, and messages go on without.
template <typename Read>
void readBeside(ChatTables& tables, Read read) {
  try {
    read();
  } catch (const TidewellError& error) {
    if (!DatabaseCheck::isOfItsDatabase(error)) throw;
    tables.unread.isPartial = true;
  }
}

LinkRows readLinks(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWAMESSAGEDATAITEM");
  const Column message = table.select({"ZMESSAGE"});
  const Column url = table.select({"ZMATCHEDTEXT"});
  const Column title = table.select({"ZTITLE"});
  const Column summary = table.select({"ZSUMMARY"});
  LinkRows links;
  readBeside(tables, [&] {
    table.forEachRow([&](const SQLiteRowView& row) {
      const auto key = row.integer(message.place);
      LinkRow link{.url = addressIn(row.text(url.place)),
                   .title = BlobText::shortWords(row.text(title.place)).value_or(""),
                   .summary = BlobText::shortWords(row.text(summary.place)).value_or("")};
      const bool saysSomething = !link.url.empty() || !link.title.empty() || !link.summary.empty();
      if (key && saysSomething) links.try_emplace(*key, std::move(link));
    });
  });
  return links;
}

using Creators = std::map<std::int64_t, std::string>;  // of groups, by the key of the chat's record

Creators readCreators(const SQLiteDB& database, ChatTables& tables) {
  TableReader table(database, "ZWACHATSESSION");
  const TableReader::Along group = table.along("ZWAGROUPINFO", "ZGROUPINFO", "ZCHATSESSION");
  const Column pk = table.select({"Z_PK"});
  const Column creator = table.select(group, {"ZCREATORJID"});
  Creators creators;
  readBeside(tables, [&] {
    table.forEachRow([&](const SQLiteRowView& row) {
      std::string jid = textOf(row, creator);
      if (const auto key = row.integer(pk.place); key && !jid.empty()) creators.try_emplace(*key, std::move(jid));
    });
  });
  return creators;
}

// Groups, lists and channels are no people.
std::optional<std::string> personJID(std::string_view stored) {
  const auto jid = StoredJID::checked(stored);
  return jid && (JID::hasServer(*jid, UserJIDSuffix) || JID::isLID(*jid)) ? jid : std::nullopt;
}

// The owner's JIDs: notices and group events that come in are addressed to them, and the owner's
// messages name them in place of a name. A phone has one, or one of each kind, so the first rows tell.
std::vector<std::string> readOwnJIDs(const SQLiteDB& database) {
  constexpr const char* firstRows = " IS NOT NULL LIMIT 64";
  const std::set<std::string> columns = database.columns("ZWAMESSAGE");
  const auto areThere = [&](const char* a, const char* b) { return columns.contains(a) && columns.contains(b); };
  std::vector<std::string> jids;
  const auto add = [&](std::optional<std::string> jid) {
    if (jid && std::ranges::find(jids, *jid) == jids.end()) jids.push_back(std::move(*jid));
  };
  if (areThere("ZTOJID", "ZMESSAGETYPE") && columns.contains("ZISFROMME")) {
    database.forEachRow(
        std::string("SELECT ZTOJID FROM ZWAMESSAGE WHERE ZMESSAGETYPE IN (6, 10) AND ZISFROMME = 0 AND ZTOJID") +
            firstRows,
        [&](const SQLiteRowView& row) { add(personJID(row.text(0).value_or(""))); });
  }
  if (areThere("ZPUSHNAME", "ZISFROMME")) {
    database.forEachRow(std::string("SELECT ZPUSHNAME FROM ZWAMESSAGE WHERE ZISFROMME = 1 AND ZPUSHNAME") + firstRows,
                        [&](const SQLiteRowView& row) { add(OwnJID::inPushName(row.text(0).value_or(""))); });
  }
  return jids;
}

std::int64_t rowCount(const SQLiteDB& database, const std::string& table) {
  std::int64_t count = 0;
  if (!database.tableExists(table)) return count;
  database.forEachRow("SELECT count(*) FROM " + table,
                      [&](const SQLiteRowView& row) { count = row.integer(0).value_or(0); });
  return count;
}

// Whether reactions and votes are read along.
enum class Info { read, passedOver };

class Reading {
 public:
  Reading(const SQLiteDB& database, const MediaPaths::Lookup& hasFile, ChatTables& tables, Info info)
      : database_(database), hasFile_(hasFile), table_(database, "ZWAMESSAGE"), tables_(tables), reads_(info) {}

  void run() {
    const auto isMissing = [](Column column) { return !column.isThere(); };
    if (std::ranges::any_of(std::array{sent_, isFromMe_, fromJID_, groupMember_}, isMissing)) {
      tables_.unread.isPartial = true;
    }
    if (!pk_.isThere() || !chat_.isThere()) {
      tables_.unread.withoutChat = rowCount(database_, "ZWAMESSAGE");
      return;
    }
    links_ = readLinks(database_, tables_);
    creators_ = readCreators(database_, tables_);
    tables_.ownJIDs = readOwnJIDs(database_);
    table_.forEachRow([this](const SQLiteRowView& row) { read(row); });
  }

 private:
  void read(const SQLiteRowView& row) {
    const auto key = row.integer(pk_.place);
    const auto chat = row.integer(chat_.place);
    const bool isTextLost = !text_.isThere() || !row.blob(text_.place).value_or(ByteView()).empty();
    if (key && chat) {
      if (isTextLost) ++tables_.unread.withoutText;
      add(row, *key, *chat);
    } else if (key && !isTextLost && row.text(text_.place).value_or("").empty()) {
      tables_.silentMessages.insert(*key);
    } else {
      ++tables_.unread.withoutChat;
    }
  }

  // A row with several media items comes once with each; the first one tells what it is.
  void add(const SQLiteRowView& row, std::int64_t key, std::int64_t chat) {
    if (!tables_.messages.empty() && tables_.messages.back().pk == key) return;
    noteUnfoundItem(row, key);
    const MessageRow stored = messageRow(row, key, chat);
    DecodedMessage decoded = MessageDecoder::decode(stored);
    if (decoded.isHidden) return;
    tables_.messages.push_back({.pk = key,
                                .chatPK = chat,
                                .date = dateOf(row),
                                .sort = sortOf(row),
                                .text = kept(decoded.text),
                                .isFromMe = stored.isFromMe && !decoded.isIncoming,
                                .fromJID = keptOnce(row.text(fromJID_.place)),
                                .pushName = pushNameOf(row),
                                .groupMemberPK = row.integer(groupMember_.place),
                                .stanzaID = kept(row.text(stanzaID_.place))});
    if (decoded.details) tables_.details.emplace_back(key, *std::move(decoded.details));
  }

  void noteUnfoundItem(const SQLiteRowView& row, std::int64_t key) {
    const auto named = row.integer(namedItem_.place);
    if (named && !row.integer(itemKey_.place)) tables_.unfoundItems.emplace(*named, key);
  }

  MessageRow messageRow(const SQLiteRowView& row, std::int64_t key, std::int64_t chat) const {
    const GroupMemberRecord* member = tables_.directory.groupMember(row.integer(groupMember_.place));
    MessageRow stored{.type = row.integer(type_.place).value_or(0),
                      .eventType = row.integer(eventType_.place).value_or(0),
                      .flags = row.integer(flags_.place).value_or(0),
                      .isFromMe = row.integer(isFromMe_.place).value_or(0) != 0,
                      .isStarred = row.integer(starred_.place) == 1,
                      .text = row.text(text_.place),
                      .ownJIDs = tables_.ownJIDs,
                      .receiptInfo = row.blob(receiptInfo_.place).value_or(ByteView())};
    if (member != nullptr && member->jid) stored.memberJID = *member->jid;
    if (const auto creator = creators_.find(chat); creator != creators_.end()) stored.creatorJID = creator->second;
    readItem(row, stored);
    if (const auto link = links_.find(key); link != links_.end()) {
      stored.linkURL = link->second.url;
      stored.linkTitle = link->second.title;
      stored.linkSummary = link->second.summary;
    }
    return stored;
  }

  void readItem(const SQLiteRowView& row, MessageRow& stored) const {
    const std::string_view path = row.text(path_.place).value_or("");
    stored.namesFile = !path.empty();
    stored.hasFile = hasFile(path);
    stored.title = row.text(title_.place);
    stored.vCardName = row.text(vCardName_.place);
    stored.vCardString = row.text(vCardString_.place);
    stored.mediaURL = row.text(mediaURL_.place);
    stored.authorName = row.text(authorName_.place);
    stored.latitude = StoredNumber::real(row, latitude_);
    stored.longitude = StoredNumber::real(row, longitude_);
    stored.duration = StoredNumber::seconds(row, duration_);
    stored.mediaOrigin = row.integer(mediaOrigin_.place).value_or(0);
    stored.metadata = row.blob(metadata_.place).value_or(ByteView());
  }

  bool hasFile(std::string_view localPath) const {
    return MediaPaths::isOfFile(localPath) && (!hasFile_ || hasFile_(MediaPaths::inBackup(localPath)));
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

  const SQLiteDB& database_;
  const MediaPaths::Lookup& hasFile_;
  TableReader table_;
  ChatTables& tables_;
  Info reads_;
  LinkRows links_;
  Creators creators_;
  std::string cut_;

  const Column pk_ = table_.select({"Z_PK"});
  const Column chat_ = table_.select({"ZCHATSESSION"});
  const Column sent_ = table_.select({"ZMESSAGEDATE", "ZDATE"});
  const Column text_ = table_.select({"ZTEXT", "ZMESSAGETEXT"});
  const Column isFromMe_ = table_.select({"ZISFROMME", "ZFROMMe"});
  const Column fromJID_ = table_.select({"ZFROMJID", "ZSENDERJID"});
  const Column pushName_ = table_.select({"ZPUSHNAME"});
  const Column groupMember_ = table_.select({"ZGROUPMEMBER"});
  const Column sort_ = table_.select({"ZSORT"});
  const Column type_ = table_.select({"ZMESSAGETYPE"});
  const Column eventType_ = table_.select({"ZGROUPEVENTTYPE"});
  const Column flags_ = table_.select({"ZFLAGS"});
  const Column starred_ = table_.select({"ZSTARRED"});
  const Column stanzaID_ = table_.select({"ZSTANZAID"});

  const Column namedItem_ = table_.select({"ZMEDIAITEM"});

  const TableReader::Along item_ = table_.along("ZWAMEDIAITEM", "ZMEDIAITEM", "ZMESSAGE");
  const Column itemKey_ = table_.select(item_, {"Z_PK"});
  const Column path_ = table_.select(item_, {"ZMEDIALOCALPATH", "ZLOCALPATH"});
  const Column title_ = table_.select(item_, {"ZTITLE"});
  const Column vCardName_ = table_.select(item_, {"ZVCARDNAME"});
  const Column vCardString_ = table_.select(item_, {"ZVCARDSTRING"});
  const Column mediaURL_ = table_.select(item_, {"ZMEDIAURL"});
  const Column authorName_ = table_.select(item_, {"ZAUTHORNAME"});
  const Column latitude_ = table_.select(item_, {"ZLATITUDE"});
  const Column longitude_ = table_.select(item_, {"ZLONGITUDE"});
  const Column duration_ = table_.select(item_, {"ZMOVIEDURATION"});
  const Column mediaOrigin_ = table_.select(item_, {"ZMEDIAORIGIN"});
  const Column metadata_ = table_.selectBytes(item_, "ZMETADATA", ProtobufLimits::bytes);

  const TableReader::Along info_ =
      reads_ == Info::read ? table_.along("ZWAMESSAGEINFO", "ZMESSAGEINFO", "ZMESSAGE") : TableReader::Along();
  const Column receiptInfo_ = table_.selectBytes(info_, "ZRECEIPTINFO", ProtobufLimits::bytes);
};

}  // namespace

void MessageTable::load(const SQLiteDB& database, const MediaPaths::Lookup& hasFile, ChatTables& tables) {
  const UnreadMessages before = tables.unread;
  try {
    return Reading(database, hasFile, tables, Info::read).run();
  } catch (const TidewellError& error) {
    if (!DatabaseCheck::isOfItsDatabase(error)) throw;
  }
  tables.messages.clear();
  tables.details.clear();
  tables.silentMessages.clear();
  tables.unfoundItems.clear();
  tables.unread = before;
  Reading(database, hasFile, tables, Info::passedOver).run();
  tables.unread.isPartial = true;
}
