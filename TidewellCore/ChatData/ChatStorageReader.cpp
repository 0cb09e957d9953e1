#include "TidewellCore/ChatData/ChatStorageReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_set>

#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/TableReader.h"
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

std::optional<std::string> nameOf(const SQLiteRow& row, const std::string& column) {
  return NameResolver::cut(row.textValue(column));
}

std::optional<std::string> plausible(std::optional<std::string> name) {
  if (!name || !NameResolver::isPlausibleDisplayName(*name)) return std::nullopt;
  return name;
}

// Every version of WhatsApp has one of the candidates of such a column.
void noteColumns(std::initializer_list<std::string_view> selected, ChatStorageSnapshot& snapshot) {
  if (std::ranges::any_of(selected, &std::string_view::empty)) snapshot.unread.isPartial = true;
}

void loadChats(const SQLiteDB& database, ChatStorageSnapshot& snapshot) {
  TableReader table(database, "ZWACHATSESSION");
  const std::string pk = table.select({"Z_PK"});
  const std::string jid = table.select({"ZCONTACTJID", "ZJID", "ZPARTNERJID"});
  const std::string name = table.select({"ZPARTNERNAME", "ZPARTNER", "ZCONTACTNAME"});
  noteColumns({pk, jid, name}, snapshot);
  if (pk.empty()) return;
  table.forEachRow([&](const SQLiteRow& row) {
    const auto key = row.intValue(pk);
    if (!key) return;
    snapshot.chats.insert_or_assign(
        *key, ChatRecord{.pk = *key, .jid = nameOf(row, jid).value_or(""), .name = nameOf(row, name).value_or("")});
  });
  for (const auto& [key, chat] : snapshot.chats) {
    if (!chat.jid.empty()) snapshot.chatsByJID.insert_or_assign(chat.jid, chat);
  }
}

void loadGroupMembers(const SQLiteDB& database, ChatStorageSnapshot& snapshot, ContactDirectory& directory) {
  TableReader table(database, "ZWAGROUPMEMBER");
  const std::string pk = table.select({"Z_PK"});
  const std::string contactName = table.select({"ZCONTACTNAME", "ZNAME", "ZMEMBERNAME"});
  const std::string firstName = table.select({"ZFIRSTNAME"});
  const std::string jid = table.select({"ZMEMBERJID", "ZJID"});
  noteColumns({pk, jid}, snapshot);
  if (pk.empty()) return;
  table.forEachRow([&](const SQLiteRow& row) {
    const auto key = row.intValue(pk);
    if (!key) return;
    directory.groupMembers.insert_or_assign(*key, GroupMemberRecord{.pk = *key,
                                                                    .jid = nameOf(row, jid),
                                                                    .contactName = plausible(nameOf(row, contactName)),
                                                                    .firstName = plausible(nameOf(row, firstName))});
  });
}

void loadProfilePushNames(const SQLiteDB& database, ChatStorageSnapshot& snapshot, ContactDirectory& directory) {
  TableReader table(database, "ZWAPROFILEPUSHNAME");
  const std::string jid = table.select({"ZJID", "ZCONTACTJID"});
  const std::string name = table.select({"ZPUSHNAME", "ZNAME"});
  // Not every version has the table.
  if (!jid.empty() || !name.empty()) noteColumns({jid, name}, snapshot);
  if (jid.empty() || name.empty()) return;
  table.forEachRow([&](const SQLiteRow& row) {
    const std::string owner = nameOf(row, jid).value_or("");
    const auto pushName = plausible(NameResolver::cut(textOrUTF8(row.value(name))));
    if (!owner.empty() && pushName) directory.addPushName(owner, *pushName);
  });
}

void loadLIDPairs(const SQLiteDB& database, ChatStorageSnapshot& snapshot, ContactDirectory& directory) {
  TableReader table(database, "ZWAPHONENUMBERLIDPAIR");
  const std::string lid = table.select({"ZLID"});
  const std::string phone = table.select({"ZPHONENUMBER"});
  // Not every version has the table.
  if (!lid.empty() || !phone.empty()) noteColumns({lid, phone}, snapshot);
  if (lid.empty() || phone.empty()) return;
  table.forEachRow([&](const SQLiteRow& row) {
    const auto identity = NameResolver::trimmedNonEmpty(nameOf(row, lid));
    const auto number = NameResolver::trimmedNonEmpty(nameOf(row, phone));
    if (identity && number) directory.link(NameResolver::lidJID(*identity), NameResolver::whatsAppJID(*number));
  });
}

std::optional<double> realNumber(const SQLiteValue* value) {
  if (value == nullptr) return std::nullopt;
  if (const auto* integer = std::get_if<std::int64_t>(value)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(value)) return *real;
  const auto* text = std::get_if<std::string>(value);
  if (text == nullptr) return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  return error == std::errc() && end == text->data() + text->size() ? std::optional(number) : std::nullopt;
}

std::optional<Date> date(const SQLiteValue* value) {
  const auto seconds = realNumber(value);
  if (!seconds || !std::isfinite(*seconds)) return std::nullopt;
  return dateFromAppleTime(*seconds);
}

// A name stored as text is kept as it is; one stored as bytes only when it reads like a name.
std::optional<std::string> messagePushName(const SQLiteValue* value) {
  const bool isBlob = value != nullptr && std::holds_alternative<Bytes>(*value);
  std::optional<std::string> name = NameResolver::cut(textOrUTF8(value));
  return isBlob ? plausible(std::move(name)) : name;
}

constexpr double beforeAll = -std::numeric_limits<double>::infinity();

// A message and its place among those of its date, which counts only until they are in order.
struct PlacedMessage {
  MessageRecord message;
  double sort = beforeAll;
};

double sortOf(const SQLiteValue* value) {
  const bool isText = value == nullptr || std::holds_alternative<std::string>(*value);
  return isText ? beforeAll : realNumber(value).value_or(beforeAll);
}

auto place(const PlacedMessage& placed) {
  const MessageRecord& message = placed.message;
  return std::tuple(message.date ? unixTime(*message.date) : beforeAll, placed.sort, message.pk);
}

std::vector<MessageRecord> inOrder(std::vector<PlacedMessage> placed) {
  std::ranges::sort(placed, {}, place);
  std::vector<MessageRecord> messages;
  messages.reserve(placed.size());
  for (PlacedMessage& each : placed) messages.push_back(std::move(each.message));
  return messages;
}

std::int64_t rowCount(const SQLiteDB& database, const std::string& table) {
  std::int64_t count = 0;
  if (!database.tableExists(table)) return count;
  database.query("SELECT count(*) AS n FROM " + table, {},
                 [&](const SQLiteRow& row) { count = row.intValue("n").value_or(0); });
  return count;
}

bool holdsBytes(const SQLiteValue* value) {
  const auto* bytes = value == nullptr ? nullptr : std::get_if<Bytes>(value);
  return bytes != nullptr && !bytes->empty();
}

// Keys of messages that say no chat and hold no text; whether they are missed is for their files to say.
using SilentMessages = std::unordered_set<std::int64_t>;

class MessageTable {
 public:
  MessageTable(const SQLiteDB& database, ChatStorageSnapshot& snapshot)
      : table_(database, "ZWAMESSAGE"), snapshot_(snapshot) {}

  SilentMessages load(const SQLiteDB& database) {
    noteColumns({sent_, isFromMe_, fromJID_, groupMember_}, snapshot_);
    if (pk_.empty() || chat_.empty()) {
      snapshot_.unread.withoutChat = rowCount(database, "ZWAMESSAGE");
      return {};
    }
    table_.forEachRow([this](const SQLiteRow& row) { read(row); });
    for (auto& [chat, messages] : messagesByChat_) snapshot_.messagesByChat[chat] = inOrder(std::move(messages));
    return std::move(silent_);
  }

 private:
  void read(const SQLiteRow& row) {
    const auto key = row.intValue(pk_);
    const auto chat = row.intValue(chat_);
    const bool isTextLost = text_.empty() || holdsBytes(row.value(text_));
    std::optional<std::string> text = row.textValue(text_);
    if (key && chat) {
      if (isTextLost) ++snapshot_.unread.withoutText;
      messagesByChat_[*chat].push_back(placed(row, *key, *chat, std::move(text)));
    } else if (key && !isTextLost && text.value_or("").empty()) {
      silent_.insert(*key);
    } else {
      ++snapshot_.unread.withoutChat;
    }
  }

  std::optional<Date> dateOf(const SQLiteRow& row) {
    const SQLiteValue* value = row.value(sent_);
    const std::optional<Date> sent = date(value);
    const bool isNull = value == nullptr || std::holds_alternative<SQLiteNull>(*value);
    if (!sent && !isNull) snapshot_.unread.isPartial = true;
    return sent;
  }

  PlacedMessage placed(const SQLiteRow& row, std::int64_t key, std::int64_t chat, std::optional<std::string> text) {
    return {.message = {.pk = key,
                        .chatPK = chat,
                        .date = dateOf(row),
                        .text = std::move(text),
                        .isFromMe = row.intValue(isFromMe_).value_or(0) != 0,
                        .fromJID = nameOf(row, fromJID_),
                        .pushName = messagePushName(row.value(pushName_)),
                        .groupMemberPK = row.intValue(groupMember_)},
            .sort = sortOf(row.value(sort_))};
  }

  TableReader table_;
  ChatStorageSnapshot& snapshot_;
  const std::string pk_ = table_.select({"Z_PK"});
  const std::string chat_ = table_.select({"ZCHATSESSION"});
  const std::string sent_ = table_.select({"ZMESSAGEDATE", "ZDATE"});
  const std::string text_ = table_.select({"ZTEXT", "ZMESSAGETEXT"});
  const std::string isFromMe_ = table_.select({"ZISFROMME", "ZFROMMe"});
  const std::string fromJID_ = table_.select({"ZFROMJID", "ZSENDERJID"});
  const std::string pushName_ = table_.select({"ZPUSHNAME"});
  const std::string groupMember_ = table_.select({"ZGROUPMEMBER"});
  const std::string sort_ = table_.select({"ZSORT"});
  std::map<std::int64_t, std::vector<PlacedMessage>> messagesByChat_;
  SilentMessages silent_;
};

std::unordered_map<std::int64_t, ChatStorageSnapshot::MessagePosition> positionsByPK(
    const ChatStorageSnapshot& snapshot) {
  std::unordered_map<std::int64_t, ChatStorageSnapshot::MessagePosition> positions;
  for (const auto& [chatPK, messages] : snapshot.messagesByChat) {
    for (std::size_t index = 0; index < messages.size(); ++index) positions[messages[index].pk] = {chatPK, index};
  }
  return positions;
}

void attachMediaPaths(const SQLiteDB& database, SilentMessages silent, ChatStorageSnapshot& snapshot) {
  TableReader table(database, "ZWAMEDIAITEM");
  const std::string message = table.select({"ZMESSAGE"});
  const std::string path = table.select({"ZMEDIALOCALPATH", "ZLOCALPATH"});
  noteColumns({message, path}, snapshot);
  if (message.empty() || path.empty()) return;
  const auto positions = positionsByPK(snapshot);
  const auto attach = [&](const SQLiteRow& row) {
    const auto key = row.intValue(message);
    std::string relativePath = row.textValue(path).value_or("");
    const auto position = key ? positions.find(*key) : positions.end();
    if (relativePath.empty()) return;
    if (position == positions.end()) {
      const bool isOfSilent = key && silent.erase(*key) > 0;
      ++(isOfSilent ? snapshot.unread.withoutChat : snapshot.unread.ofFiles);
      return;
    }
    if (!relativePath.starts_with("Message/")) relativePath.insert(0, "Message/");
    const auto& [chatPK, index] = position->second;
    snapshot.messagesByChat[chatPK][index].mediaLocalPath = relativePath;
    snapshot.mediaByRelativePath.insert_or_assign(std::move(relativePath), position->second);
  };
  table.forEachRow(attach, path + " LIKE 'Media/%'");
  const bool isAnyNamed = !snapshot.mediaByRelativePath.empty() || snapshot.unread.ofFiles > 0;
  if (!isAnyNamed) snapshot.unread.namelessItems = rowCount(database, "ZWAMEDIAITEM");
}

}  // namespace

ChatStorageSnapshot ChatStorageReader::load(const std::filesystem::path& copiedDatabase) {
  const SQLiteDB database = open(copiedDatabase);
  ChatStorageSnapshot snapshot;
  loadChats(database, snapshot);
  ContactDirectory directory;
  loadGroupMembers(database, snapshot, directory);
  loadProfilePushNames(database, snapshot, directory);
  loadLIDPairs(database, snapshot, directory);
  snapshot.setDirectory(std::move(directory));
  attachMediaPaths(database, MessageTable(database, snapshot).load(database), snapshot);
  return snapshot;
}
