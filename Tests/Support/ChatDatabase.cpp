#include "Tests/Support/ChatDatabase.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tests/Support/ChatSchema.h"
#include "Tests/Support/PlistWriter.h"

namespace Fixture {

namespace {

enum class Part { settled, pending };

// Core Data's entity numbers, one per table.
enum Entity : std::int64_t {
  chatEntity = 4,
  infoEntity,
  memberEntity,
  mediaEntity,
  messageEntity,
  linkEntity,
  receiptEntity,
  pushNameEntity
};

// A chat's place among the rows that are written in two parts.
template <typename Record, typename Write>
void eachOf(const std::vector<Record>& records, Part part, Write write) {
  const std::size_t settled = settledCount(records.size());
  const std::size_t first = part == Part::settled ? 0 : settled;
  const std::size_t last = part == Part::settled ? settled : records.size();
  for (std::size_t index = first; index < last; ++index) write(records[index], static_cast<std::int64_t>(index + 1));
}

std::int64_t keyOr(std::int64_t pk, std::int64_t position) { return pk == 0 ? position : pk; }

bool isGroupJID(const SQLValue& jid) {
  const auto* text = std::get_if<std::string>(&jid);
  return text != nullptr && text->ends_with("@g.us");
}

// Media rows come from the files that messages carry, then from the items given by hand.
std::vector<MediaItem> allMediaItems(const WhatsAppContents& app) {
  std::vector<MediaItem> items;
  for (const MediaFile& file : app.mediaFiles) {
    if (!file.message) continue;
    items.push_back({.message = *file.message,
                     .localPath = file.localPath,
                     .title = file.title,
                     .fileSize = static_cast<std::int64_t>(file.content.size()),
                     .duration = file.duration,
                     .thumbnailPath = file.thumbnailPath,
                     .vCard = file.mimeType,
                     .vCardName = file.digest,
                     .metadata = file.metadata});
  }
  items.insert(items.end(), app.mediaItems.begin(), app.mediaItems.end());
  return items;
}

// Writes the rows of one chat database, once for each part.
class ChatStorageRows {
 public:
  ChatStorageRows(const WhatsAppContents& app, DatabaseWriter& writer)
      : app_(app), writer_(writer), mediaItems_(allMediaItems(app)) {
    for (std::size_t index = 0; index < mediaItems_.size(); ++index) {
      const auto* message = std::get_if<std::int64_t>(&mediaItems_[index].message);
      if (message != nullptr) mediaOfMessage_[*message] = static_cast<std::int64_t>(index + 1);
    }
  }

  void write(Part part) {
    eachOf(app_.chats, part, [&](const Chat& chat, std::int64_t position) { add(chat, position); });
    eachOf(app_.members, part, [&](const GroupMember& member, std::int64_t position) { add(member, position); });
    eachOf(app_.pushNames, part, [&](const PushName& name, std::int64_t position) { add(name, position); });
    eachOf(app_.messages, part, [&](const Message& message, std::int64_t position) { add(message, position); });
    eachOf(mediaItems_, part, [&](const MediaItem& item, std::int64_t position) { add(item, position); });
    eachOf(app_.linkItems, part, [&](const LinkItem& link, std::int64_t position) { add(link, position); });
    if (app_.lidPairs) {
      eachOf(*app_.lidPairs, part, [&](const LidPair& pair, std::int64_t position) { add(pair, position); });
    }
  }

 private:
  void add(const Chat& chat, std::int64_t position) {
    const std::int64_t pk = keyOr(chat.pk, position);
    const bool group = isGroupJID(chat.jid);
    SQLValue groupInfo;
    if (group) groupInfo = pk;
    writer_.insert("ZWACHATSESSION", {{"Z_PK", pk},
                                      {"Z_ENT", chatEntity},
                                      {"Z_OPT", 12},
                                      {"ZARCHIVED", chat.archived ? 1 : 0},
                                      {"ZFLAGS", 0},
                                      {"ZHIDDEN", 0},
                                      {"ZREMOVED", 0},
                                      {"ZSESSIONTYPE", chat.sessionType.value_or(group ? 1 : 0)},
                                      {"ZUNREADCOUNT", 0},
                                      {"ZGROUPINFO", groupInfo},
                                      {"ZCONTACTJID", chat.jid},
                                      {"ZPARTNERNAME", chat.name}});
    if (group) {
      writer_.insert("ZWAGROUPINFO", {{"Z_PK", pk},
                                      {"Z_ENT", infoEntity},
                                      {"Z_OPT", 1},
                                      {"ZSTATE", 0},
                                      {"ZCHATSESSION", pk},
                                      {"ZCREATORJID", chat.creatorJID}});
    }
  }

  void add(const GroupMember& member, std::int64_t position) {
    writer_.insert("ZWAGROUPMEMBER", {{"Z_PK", keyOr(member.pk, position)},
                                      {"Z_ENT", memberEntity},
                                      {"Z_OPT", 3},
                                      {"ZISACTIVE", 1},
                                      {"ZISADMIN", position % 7 == 1 ? 1 : 0},
                                      {"ZCHATSESSION", member.chat},
                                      {"ZCONTACTNAME", member.contactName},
                                      {"ZFIRSTNAME", member.firstName},
                                      {"ZMEMBERJID", member.jid}});
  }

  void add(const PushName& name, std::int64_t position) {
    writer_.insert(
        "ZWAPROFILEPUSHNAME",
        {{"Z_PK", position}, {"Z_ENT", pushNameEntity}, {"Z_OPT", 1}, {"ZJID", name.jid}, {"ZPUSHNAME", name.name}});
  }

  void add(const Message& message, std::int64_t position) {
    const std::int64_t pk = keyOr(message.pk, position);
    SQLValue mediaItem;
    if (const auto found = mediaOfMessage_.find(pk); found != mediaOfMessage_.end()) mediaItem = found->second;
    SQLValue messageInfo;
    if (message.receiptInfo != SQLValue()) messageInfo = pk;
    writer_.insert("ZWAMESSAGE", {{"Z_PK", pk},
                                  {"Z_ENT", messageEntity},
                                  {"Z_OPT", 4},
                                  {"ZDATAITEMVERSION", 3},
                                  {"ZFLAGS", message.flags},
                                  {"ZGROUPEVENTTYPE", message.event},
                                  {"ZISFROMME", message.isFromMe},
                                  {"ZMESSAGEERRORSTATUS", 0},
                                  {"ZMESSAGESTATUS", 8},
                                  {"ZMESSAGETYPE", message.type},
                                  {"ZSORT", message.sort.value_or(pk)},
                                  {"ZSTARRED", message.starred ? 1 : 0},
                                  {"ZCHATSESSION", message.chat},
                                  {"ZGROUPMEMBER", message.member},
                                  {"ZMEDIAITEM", mediaItem},
                                  {"ZMESSAGEINFO", messageInfo},
                                  {"ZMESSAGEDATE", message.date},
                                  {"ZSENTDATE", message.date},
                                  {"ZFROMJID", message.fromJID},
                                  {"ZPUSHNAME", message.pushName},
                                  {"ZSTANZAID", message.stanzaID.value_or(stanzaIDOf(pk))},
                                  {"ZTEXT", message.text},
                                  {"ZTOJID", message.toJID}});
    if (messageInfo == SQLValue()) return;
    writer_.insert("ZWAMESSAGEINFO", {{"Z_PK", messageInfo},
                                      {"Z_ENT", receiptEntity},
                                      {"Z_OPT", 1},
                                      {"ZMESSAGE", pk},
                                      {"ZRECEIPTINFO", message.receiptInfo}});
  }

  void add(const MediaItem& item, std::int64_t position) {
    writer_.insert("ZWAMEDIAITEM", {{"Z_PK", position},
                                    {"Z_ENT", mediaEntity},
                                    {"Z_OPT", 2},
                                    {"ZCLOUDSTATUS", 4},
                                    {"ZFILESIZE", item.fileSize},
                                    {"ZMEDIAORIGIN", item.origin},
                                    {"ZMOVIEDURATION", item.duration},
                                    {"ZMESSAGE", item.message},
                                    {"ZLATITUDE", item.latitude},
                                    {"ZLONGITUDE", item.longitude},
                                    {"ZAUTHORNAME", item.authorName},
                                    {"ZMEDIALOCALPATH", item.localPath},
                                    {"ZMEDIAURL", item.mediaURL},
                                    {"ZTITLE", item.title},
                                    {"ZVCARDNAME", item.vCardName},
                                    {"ZVCARDSTRING", item.vCard},
                                    {"ZXMPPTHUMBPATH", item.thumbnailPath},
                                    {"ZMETADATA", item.metadata}});
  }

  void add(const LinkItem& link, std::int64_t position) {
    writer_.insert("ZWAMESSAGEDATAITEM", {{"Z_PK", position},
                                          {"Z_ENT", linkEntity},
                                          {"Z_OPT", 1},
                                          {"ZINDEX", 0},
                                          {"ZMESSAGE", link.message},
                                          {"ZMATCHEDTEXT", link.matchedText},
                                          {"ZTITLE", link.title},
                                          {"ZSUMMARY", link.summary}});
  }

  void add(const LidPair& pair, std::int64_t position) {
    writer_.insert(
        "ZWAPHONENUMBERLIDPAIR",
        {{"Z_PK", position}, {"Z_ENT", 16}, {"Z_OPT", 1}, {"ZLID", pair.lid}, {"ZPHONENUMBER", pair.phoneNumber}});
  }

  const WhatsAppContents& app_;
  DatabaseWriter& writer_;
  std::vector<MediaItem> mediaItems_;
  std::map<std::int64_t, std::int64_t> mediaOfMessage_;
};

void addBookkeeping(DatabaseWriter& writer, const std::vector<std::pair<std::int64_t, const char*>>& entities) {
  for (const auto& [number, name] : entities) {
    writer.insert("Z_PRIMARYKEY", {{"Z_ENT", number}, {"Z_NAME", name}, {"Z_SUPER", 0}, {"Z_MAX", 0}});
  }
  writer.insert(
      "Z_METADATA",
      {{"Z_VERSION", 1},
       {"Z_UUID", "5C2E6F0A-91C4-4C1B-8B0E-2B7A3D1E9F44"},
       {"Z_PLIST", binaryPlist(PlistDictionary{{"NSPersistenceFrameworkVersion", 1327}, {"NSStoreType", "SQLite"}})}});
}

void addContact(DatabaseWriter& writer, const Contact& contact, std::int64_t position) {
  writer.insert("ZWAADDRESSBOOKCONTACT", {{"Z_PK", position},
                                          {"Z_ENT", 1},
                                          {"Z_OPT", 2},
                                          {"ZSORT", position},
                                          {"ZBUSINESSNAME", contact.businessName},
                                          {"ZFULLNAME", contact.fullName},
                                          {"ZGIVENNAME", contact.givenName},
                                          {"ZHIGHLIGHTEDNAME", contact.fullName},
                                          {"ZLASTNAME", contact.lastName},
                                          {"ZLID", contact.lid},
                                          {"ZLOCALIZEDPHONENUMBER", contact.localizedPhoneNumber},
                                          {"ZPHONENUMBER", contact.phoneNumber},
                                          {"ZWHATSAPPID", contact.whatsAppID}});
}

}  // namespace

DatabaseFiles writeChatStorage(const WhatsAppContents& app) {
  DatabaseWriter writer(app.journal);
  writer.execute(chatStorageSchema);
  if (app.lidPairs) writer.execute(lidPairSchema);
  addBookkeeping(writer, {{chatEntity, "WAChatSession"},
                          {infoEntity, "WAGroupInfo"},
                          {memberEntity, "WAGroupMember"},
                          {mediaEntity, "WAMediaItem"},
                          {messageEntity, "WAMessage"},
                          {linkEntity, "WAMessageDataItem"},
                          {receiptEntity, "WAMessageInfo"},
                          {pushNameEntity, "WAProfilePushName"}});
  ChatStorageRows rows(app, writer);
  rows.write(Part::settled);
  writer.checkpoint();
  rows.write(Part::pending);
  writer.execute(
      "UPDATE ZWACHATSESSION SET ZMESSAGECOUNTER = "
      "(SELECT count(*) FROM ZWAMESSAGE WHERE ZCHATSESSION = ZWACHATSESSION.Z_PK)");
  if (!app.chatStorageSQL.empty()) writer.execute(app.chatStorageSQL);
  return writer.finish();
}

DatabaseFiles writeContacts(const WhatsAppContents& app) {
  DatabaseWriter writer(app.journal);
  writer.execute(contactsSchema);
  addBookkeeping(writer, {{1, "WAAddressBookContact"}});
  const auto add = [&](const Contact& contact, std::int64_t position) { addContact(writer, contact, position); };
  eachOf(app.contacts, Part::settled, add);
  writer.checkpoint();
  eachOf(app.contacts, Part::pending, add);
  if (!app.contactsSQL.empty()) writer.execute(app.contactsSQL);
  return writer.finish();
}

}  // namespace Fixture
