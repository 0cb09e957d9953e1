#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/KeyBagBuilder.h"
#include "Tests/Support/SQLValue.h"

// What a backup shall hold, as plain records with defaults: name what a test is about, leave the rest.
namespace Fixture {

inline constexpr std::string_view consumerDomain = "AppDomainGroup-group.net.whatsapp.WhatsApp.shared";
inline constexpr std::string_view businessDomain = "AppDomainGroup-group.net.whatsapp.WhatsAppSMB.shared";

// Where a database's newest rows stand.
enum class Journal {
  rollback,           // all in the main file, its header says "delete"
  walHeader,          // all in the main file, its header says "wal", no companions
  walWithPendingRows  // the last rows only in the -wal file, which lies beside the database with its -shm
};

// A row of ZWACHATSESSION. A `pk` of 0 means the row's position, counted from 1; so in all tables here.
struct Chat {
  std::int64_t pk = 0;
  SQLValue jid;
  SQLValue name;
  bool archived = false;
  // ZSESSIONTYPE when it is not the one of a group or a person.
  std::optional<std::int64_t> sessionType;
  // ZCREATORJID of a group.
  SQLValue creatorJID;
};

// A row of ZWAMESSAGE. `date` is in seconds since 2001-01-01 UTC.
struct Message {
  std::int64_t pk = 0;
  SQLValue chat;
  SQLValue date;
  SQLValue text;
  SQLValue isFromMe = 0;
  SQLValue fromJID;
  SQLValue toJID;
  SQLValue pushName;
  SQLValue member;
  std::int64_t type = 0;
  // ZSORT when it is not the message's own `pk`.
  std::optional<SQLValue> sort;
  // ZGROUPEVENTTYPE: what a group event or a notice tells.
  std::int64_t event = 0;
  std::int64_t flags = 0;
  bool starred = false;
  // ZSTANZAID when it does not follow from the `pk`.
  std::optional<SQLValue> stanzaID;
  // ZRECEIPTINFO; the row of ZWAMESSAGEINFO is there only when this is not NULL.
  SQLValue receiptInfo;
};

// What ZSTANZAID of a message holds that is given none.
std::string stanzaIDOf(std::int64_t pk);

// A row of ZWAGROUPMEMBER.
struct GroupMember {
  std::int64_t pk = 0;
  SQLValue chat;
  SQLValue jid;
  SQLValue contactName;
  SQLValue firstName;
};

// A row of ZWAPROFILEPUSHNAME.
struct PushName {
  SQLValue jid;
  SQLValue name;
};

// A row of ZWAMEDIAITEM that stands for itself; a MediaFile with a message makes its own.
struct MediaItem {
  SQLValue message;
  SQLValue localPath;
  SQLValue title;
  SQLValue fileSize;
  SQLValue duration;
  SQLValue thumbnailPath;
  // ZVCARDSTRING, which holds a file's MIME type too.
  SQLValue vCard;
  SQLValue vCardName;
  SQLValue latitude;
  SQLValue longitude;
  SQLValue mediaURL;
  SQLValue authorName;
  SQLValue origin = 0;
  SQLValue metadata;
};

// A row of ZWAMESSAGEDATAITEM: what is known of an address in a message's text.
struct LinkItem {
  SQLValue message;
  SQLValue matchedText;
  SQLValue title;
  SQLValue summary;
};

// A row of ZWAADDRESSBOOKCONTACT in ContactsV2.sqlite.
struct Contact {
  SQLValue fullName;
  SQLValue givenName;
  SQLValue lastName;
  SQLValue businessName;
  SQLValue whatsAppID;
  SQLValue lid;
  SQLValue phoneNumber;
  SQLValue localizedPhoneNumber;
};

// A row of ZWAPHONENUMBERLIDPAIR, a table that only newer databases have.
struct LidPair {
  SQLValue lid;
  SQLValue phoneNumber;
};

// A row of ZWAZACCOUNT in LID.sqlite.
struct LinkedAccount {
  SQLValue lid;
  SQLValue phoneNumber;
  SQLValue displayName;
};

// A call of CallHistory.sqlite, with the row of its list and its participants.
struct Call {
  SQLValue id;
  // In seconds since 2001-01-01 UTC.
  SQLValue date;
  // In seconds.
  SQLValue duration = 0.0;
  bool incoming = true;
  bool video = false;
  bool missed = false;
  // 0 ended, 1 missed, 2 failed, 4 rejected.
  std::int64_t outcome = 0;
  // JIDs; a group's among them tells where the call was.
  std::vector<std::string> participants;
};

// How a file is stored and what the index says of it. The defaults tell the truth.
struct StorageOptions {
  // The size in the file's record when it is not the true one.
  std::optional<std::int64_t> recordedSize;
  bool withoutSize = false;
  // Stored in clear, without a key in its record.
  bool withoutKey = false;
  // The `file` column is NULL.
  bool withoutRecord = false;
  // The bytes of the `file` column when they are not a well-formed record.
  std::optional<Bytes> record;
  std::uint32_t protectionClass = 3;
  // Listed in the index, absent from the folder.
  bool missing = false;
  // The stored file is cut to so many bytes.
  std::optional<std::size_t> truncatedTo;
  // Instead of the SHA-1 of domain, "-" and path; nothing is stored when it cannot name a file.
  std::optional<std::string> fileID;
};

// Any file of the backup. An empty domain stands for the one of the app that holds it.
struct BackupFile {
  std::string domain;
  std::string relativePath;
  Bytes content;
  StorageOptions storage;
};

// A media file of a chat. `localPath` begins with "Media/" as in the chat database.
struct MediaFile {
  std::string localPath;
  Bytes content;
  // The message that carries it; absent, the file stands in the index alone.
  std::optional<std::int64_t> message;
  SQLValue title;
  SQLValue duration;
  SQLValue thumbnailPath;
  SQLValue mimeType;
  // ZVCARDNAME: WhatsApp's own digest.
  SQLValue digest;
  SQLValue metadata;
  StorageOptions storage;
};

// A row of the index without a stored file: `flags` 2 for a folder, 4 for a link.
struct IndexRow {
  std::string domain;
  std::string relativePath;
  std::int64_t flags = 2;
};

// What one of the two apps left in its shared container.
struct WhatsAppContents {
  std::string domain = std::string(consumerDomain);
  bool withChatStorage = true;
  bool withContacts = true;
  std::vector<Chat> chats;
  std::vector<Message> messages;
  std::vector<GroupMember> members;
  std::vector<PushName> pushNames;
  std::vector<MediaItem> mediaItems;
  std::vector<LinkItem> linkItems;
  // Absent: the table is absent.
  std::optional<std::vector<LidPair>> lidPairs;
  std::vector<Contact> contacts;
  // Absent: the database is absent.
  std::optional<std::vector<LinkedAccount>> linkedAccounts;
  std::optional<std::vector<Call>> calls;
  std::vector<MediaFile> mediaFiles;
  // Thumbnails, profile pictures and whatever else the container holds.
  std::vector<BackupFile> files;
  Journal journal = Journal::walWithPendingRows;
  // Statements run on the finished databases, e.g. to drop a column.
  std::string chatStorageSQL;
  std::string contactsSQL;
  // By relative path, e.g. "ChatStorage.sqlite-wal".
  std::map<std::string, StorageOptions> databaseStorage;
};

struct Encryption {
  KeyBagOptions keyBag = {.password = "correct horse"};
  std::uint32_t manifestClass = 3;
  bool withoutKeyBag = false;
  bool withoutManifestKey = false;
};

struct BackupContents {
  std::string deviceName = "Ana's iPhone";
  std::string productType = "iPhone14,5";
  std::string iosVersion = "17.5.1";
  // Unix seconds.
  std::int64_t backupTime = 1'717'243'200;
  std::string uniqueIdentifier = "00008110-000A1B2C3D4E5F60";
  std::optional<Encryption> encryption;
  WhatsAppContents whatsApp;
  // Give it `.domain = std::string(businessDomain)`.
  std::optional<WhatsAppContents> businessApp;
  std::vector<BackupFile> otherFiles;
  std::vector<IndexRow> indexRows;
  // Of Manifest.db; absent: as iOS leaves it, "wal" in the header when encrypted, rollback when plain.
  // Pending rows (the last quarter) are possible in plain backups only.
  std::optional<Journal> manifestJournal;
  std::string manifestSQL;
  // Every key, identifier and salt comes from it.
  std::uint64_t seed = 1;
};

// "Media/<jid>/<x>/<y>/<uuid>.<extension>", the two folders being the uuid's first two digits.
std::string mediaPath(const std::string& jid, const std::string& uuid, const std::string& extension);

// "Media/Profile/<user>-<number>.<extension>", a file of WhatsAppContents::files.
BackupFile profilePicture(const std::string& user, std::int64_t number, Bytes content,
                          const std::string& extension = "jpg");

// The file beside a media file that shares its stem and ends in ".thumb".
BackupFile thumbnail(const std::string& localPath, Bytes content);

}  // namespace Fixture
