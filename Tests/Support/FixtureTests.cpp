#include <gtest/gtest.h>
#include <plist/plist.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/MBFileRecord.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Plist = std::unique_ptr<void, decltype(&plist_free)>;

Database openDatabase(const fs::path& file) {
  sqlite3* handle = nullptr;
  EXPECT_EQ(sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  return {handle, &sqlite3_close};
}

// The first row's first column; "" for NULL and for no row.
std::string queryText(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  std::string text;
  if (sqlite3_step(statement) == SQLITE_ROW) {
    const void* bytes = sqlite3_column_blob(statement, 0);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
    if (bytes != nullptr) text.assign(static_cast<const char*>(bytes), length);
  }
  sqlite3_finalize(statement);
  return text;
}

// A string node's value, a number's in decimal; "" for anything else.
std::string nodeText(plist_t node) {
  if (plist_get_node_type(node) == PLIST_STRING) return plist_get_string_ptr(node, nullptr);
  std::uint64_t number = 0;
  if (plist_get_node_type(node) == PLIST_UINT) plist_get_uint_val(node, &number);
  if (plist_get_node_type(node) == PLIST_UID) plist_get_uid_val(node, &number);
  return std::to_string(number);
}

Plist parsePlist(const Bytes& bytes) {
  plist_t node = nullptr;
  plist_from_memory(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &node);
  return {node, &plist_free};
}

Bytes item(const Bytes& blob, const std::string& tag) {
  const Bytes name = bytesOf(tag);
  const auto found = std::search(blob.begin(), blob.end(), name.begin(), name.end());
  if (found == blob.end()) return {};
  return {found + 8, found + 8 + found[7]};
}

BackupContents smallBackup() {
  const std::string path = mediaPath("5511900001111@s.whatsapp.net", "ab0c1d2e-0000-4000-8000-000000000001", "jpg");
  return {
      .whatsApp = {.chats = {{.jid = "5511900001111@s.whatsapp.net", .name = "Ana"}, {.jid = "1-2@g.us", .name = "Us"}},
                   .messages = {{.chat = 1, .date = 700000000, .text = "oi"},
                                {.chat = 1, .date = 700000001.25, .text = "tudo bem?", .isFromMe = 1},
                                {.chat = 2, .date = 700000002, .text = "the newest"}},
                   .contacts = {{.fullName = "Ana", .whatsAppID = "5511900001111"}, {.fullName = bytesOf("Rui")}},
                   .mediaFiles = {{.localPath = path, .content = bytesOf("not a photo"), .message = 1}}}};
}

BackupContents smallEncryptedBackup() {
  BackupContents contents = smallBackup();
  contents.encryption = Encryption{};
  return contents;
}

// The names and contents of every file below `root`, without what the clock decides.
std::map<std::string, std::string> contentsBelow(const fs::path& root) {
  std::map<std::string, std::string> contents;
  for (const auto& [name, entry] : treeSnapshot(root)) contents[name] = entry.sha1;
  return contents;
}

std::map<std::string, std::string> contentsOf(const BackupContents& backup) {
  const TemporaryDirectory folder;
  writeBackup(backup, folder / "device");
  return contentsBelow(folder.path());
}

TEST(TestCrypto, MatchesPublishedVectors) {
  EXPECT_EQ(sha1Hex(bytesOf("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
  // RFC 6070, second vector.
  EXPECT_EQ(hex(pbkdf2(Digest::sha1, bytesOf("password"), bytesOf("salt"), 2, 20)),
            "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
}

TEST(TestCrypto, WrapsAsRFC3394Section46) {
  Bytes kek;
  Bytes key;
  for (std::uint8_t byte = 0; byte < 32; ++byte) kek.push_back(byte);
  for (unsigned digit = 0; digit < 16; ++digit) key.push_back(static_cast<std::uint8_t>(digit * 0x11));
  for (std::uint8_t byte = 0; byte < 16; ++byte) key.push_back(byte);
  EXPECT_EQ(hex(aesWrap(kek, key)), "28c9f404c4b810f4cbccb35cfb87f8263f5786e2d80ed326cbc7f0e71a99f43bfb988b9b7a02dd21");
}

TEST(KeyBagBuilder, PasswordUnwrapsItsClassesOnly) {
  SeededRandom random(7);
  const KeyBagOptions options{.password = "pass"};
  const KeyBag bag = buildKeyBag(options, random);
  ASSERT_EQ(item(bag.blob, "ITER"), (Bytes{0, 0, 0, 10}));
  ASSERT_EQ(item(bag.blob, "DPIC"), (Bytes{0, 0, 0, 100}));
  const Bytes key = passwordKey(options, item(bag.blob, "SALT"), item(bag.blob, "DPSL"));

  EXPECT_EQ(aesUnwrap(key, item(bag.blob, "WPKY")), bag.classKeys.at(1));
  EXPECT_FALSE(aesUnwrap(key, {bag.blob.end() - 40, bag.blob.end()})) << "class 11 is the device's";
  const Bytes other = passwordKey({.password = "Pass"}, item(bag.blob, "SALT"), item(bag.blob, "DPSL"));
  EXPECT_FALSE(aesUnwrap(other, item(bag.blob, "WPKY")));
}

TEST(KeyBagBuilder, OlderBagsLackTheSecondDerivation) {
  SeededRandom random(7);
  const KeyBagOptions options{.password = "pass", .doubleIterations = std::nullopt, .wideIterations = true};
  const KeyBag bag = buildKeyBag(options, random);
  EXPECT_TRUE(item(bag.blob, "DPIC").empty());
  EXPECT_EQ(item(bag.blob, "ITER"), (Bytes{0, 0, 0, 0, 0, 0, 0, 10}));
  const Bytes key = pbkdf2(Digest::sha1, bytesOf("pass"), item(bag.blob, "SALT"), 10);
  EXPECT_EQ(aesUnwrap(key, item(bag.blob, "WPKY")), bag.classKeys.at(1));
}

TEST(PlistWriter, KeepsSignsAndLargeNumbers) {
  const std::string xml = xmlPlist(PlistArray{-5, 18446744073709551615U, true, PlistDate{0}});
  EXPECT_NE(xml.find("<integer>-5</integer>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<integer>18446744073709551615</integer>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<true/>"), std::string::npos) << xml;
  EXPECT_NE(xml.find("<date>2001-01-01T00:00:00Z</date>"), std::string::npos) << xml;
}

TEST(MBFileRecord, IsAKeyedArchiveWithReferences) {
  const Plist record = parsePlist(archive({.relativePath = "a/b.jpg", .size = 42, .encryptionKey = Bytes(44, 3)}));
  plist_t objects = plist_dict_get_item(record.get(), "$objects");
  plist_t root = plist_dict_get_item(plist_dict_get_item(record.get(), "$top"), "root");
  ASSERT_EQ(plist_get_node_type(root), PLIST_UID);
  ASSERT_EQ(nodeText(root), "1");
  plist_t file = plist_array_get_item(objects, 1);
  EXPECT_EQ(nodeText(plist_dict_get_item(file, "Size")), "42");

  const auto follow = [&](const char* key) {
    std::uint64_t index = 0;
    plist_get_uid_val(plist_dict_get_item(file, key), &index);
    return plist_array_get_item(objects, static_cast<std::uint32_t>(index));
  };
  EXPECT_EQ(nodeText(follow("RelativePath")), "a/b.jpg");
  EXPECT_EQ(nodeText(plist_dict_get_item(follow("$class"), "$classname")), "MBFile");
  std::uint64_t length = 0;
  plist_get_data_ptr(plist_dict_get_item(follow("EncryptionKey"), "NS.data"), &length);
  EXPECT_EQ(length, 44U);
}

TEST(BackupBuilder, PlainBackupListsAndStoresItsFiles) {
  const TemporaryDirectory folder;
  const WrittenBackup backup = writeBackup(smallBackup(), folder / "device");
  const std::string path = "Message/" + smallBackup().whatsApp.mediaFiles[0].localPath;
  EXPECT_EQ(readFile(backup.storedFile(path)), bytesOf("not a photo"));

  const Database index = openDatabase(folder / "device/Manifest.db");
  EXPECT_EQ(queryText(index.get(), "SELECT relativePath FROM Files WHERE fileID = '" + fileIDOf(consumerDomain, path) +
                                       "' AND flags = 1"),
            path);
  EXPECT_FALSE(fs::exists(folder / "device/Manifest.db-wal"));
  const Plist status = parsePlist(readFile(folder / "device/Status.plist"));
  EXPECT_EQ(nodeText(plist_dict_get_item(status.get(), "SnapshotState")), "finished");
}

TEST(BackupBuilder, NewestRowsStandInTheWALAlone) {
  const TemporaryDirectory folder;
  const WrittenBackup backup = writeBackup(smallBackup(), folder / "device");
  const std::string newest = "SELECT ZTEXT FROM ZWAMESSAGE WHERE Z_PK = 3";
  writeFile(folder / "alone.sqlite", readFile(backup.storedFile("ChatStorage.sqlite")));
  writeFile(folder / "whole.sqlite", readFile(backup.storedFile("ChatStorage.sqlite")));
  writeFile(folder / "whole.sqlite-wal", readFile(backup.storedFile("ChatStorage.sqlite-wal")));
  writeFile(folder / "whole.sqlite-shm", readFile(backup.storedFile("ChatStorage.sqlite-shm")));

  const Database alone = openDatabase(folder / "alone.sqlite");
  EXPECT_EQ(queryText(alone.get(), "SELECT ZTEXT FROM ZWAMESSAGE WHERE Z_PK = 2"), "tudo bem?");
  EXPECT_EQ(queryText(alone.get(), newest), "");
  const Database whole = openDatabase(folder / "whole.sqlite");
  EXPECT_EQ(queryText(whole.get(), newest), "the newest");
  EXPECT_EQ(queryText(whole.get(), "SELECT typeof(ZMESSAGEDATE) FROM ZWAMESSAGE WHERE Z_PK = 2"), "real");
  EXPECT_EQ(queryText(whole.get(), "PRAGMA integrity_check"), "ok");
}

TEST(BackupBuilder, ManifestOfAPlainBackupCanHavePendingRows) {
  const TemporaryDirectory folder;
  BackupContents contents = smallBackup();
  contents.manifestJournal = Journal::walWithPendingRows;
  const WrittenBackup backup = writeBackup(contents, folder / "device");
  writeFile(folder / "alone.db", backup.manifestDatabase);
  EXPECT_EQ(queryText(openDatabase(folder / "alone.db").get(), "SELECT count(*) FROM Files"), "5");
  EXPECT_EQ(queryText(openDatabase(folder / "device/Manifest.db").get(), "SELECT count(*) FROM Files"), "7");
}

TEST(BackupBuilder, StatementsChangeTheChatDatabase) {
  const TemporaryDirectory folder;
  BackupContents contents = smallBackup();
  contents.whatsApp.journal = Journal::rollback;
  contents.whatsApp.chatStorageSQL = "ALTER TABLE ZWAMESSAGE RENAME COLUMN ZMESSAGEDATE TO ZDATE;";
  const WrittenBackup backup = writeBackup(contents, folder / "device");
  EXPECT_FALSE(fs::exists(backup.storedFile("ChatStorage.sqlite-wal")));
  const Database chats = openDatabase(backup.storedFile("ChatStorage.sqlite"));
  EXPECT_EQ(queryText(chats.get(), "SELECT ZDATE FROM ZWAMESSAGE"), "700000000");
}

TEST(BackupBuilder, EncryptedFilesOpenWithTheirWrappedKeys) {
  const TemporaryDirectory folder;
  const WrittenBackup backup = writeBackup(smallEncryptedBackup(), folder / "device");
  const Plist manifest = parsePlist(readFile(folder / "device/Manifest.plist"));
  std::uint64_t length = 0;
  const char* data = plist_get_data_ptr(plist_dict_get_item(manifest.get(), "ManifestKey"), &length);
  ASSERT_EQ(length, 44U);
  const Bytes persistent(data, data + length);
  EXPECT_EQ(persistent[0], 3);
  const auto manifestKey = aesUnwrap(backup.keyBag->classKeys.at(3), ByteView(persistent).subspan(4));
  ASSERT_TRUE(manifestKey);

  const Bytes plain = aesCbcDecrypt(*manifestKey, readFile(folder / "device/Manifest.db"));
  EXPECT_EQ(plain, backup.manifestDatabase);
  EXPECT_EQ(plain[18], 2) << "the header says WAL";
  writeFile(folder / "plain.db", plain);
  const std::string path = "Message/" + smallBackup().whatsApp.mediaFiles[0].localPath;
  const std::string record =
      queryText(openDatabase(folder / "plain.db").get(), "SELECT file FROM Files WHERE relativePath = '" + path + "'");
  // The key is the record's only data object: marker 0x4F10, its length as one byte, the bytes.
  const std::size_t keyAt = record.find("\x4F\x10\x2C");
  ASSERT_NE(keyAt, std::string::npos);
  const auto fileKey = aesUnwrap(backup.keyBag->classKeys.at(3), bytesOf(record.substr(keyAt + 7, 40)));
  ASSERT_TRUE(fileKey);
  const Bytes stored = readFile(backup.storedFile(path));
  EXPECT_EQ(stored.size(), 16U);
  EXPECT_EQ(aesCbcDecrypt(*fileKey, stored), bytesOf("not a photo"));
}

TEST(BackupBuilder, StorageOptionsBendTheTruth) {
  const TemporaryDirectory folder;
  BackupContents contents = smallEncryptedBackup();
  contents.otherFiles = {{"D", "missing", bytesOf("x"), {.missing = true}},
                         {"D", "short", Bytes(100, 1), {.truncatedTo = 40}},
                         {"D", "clear", bytesOf("clear"), {.withoutKey = true}},
                         {"D", "renamed", bytesOf("x"), {.fileID = "ab"}},
                         {"D", "escaping", bytesOf("x"), {.fileID = "../evil"}}};
  contents.indexRows = {{"D", "folder", 2}, {"D", "link", 4}};
  const WrittenBackup backup = writeBackup(contents, folder / "device");
  EXPECT_FALSE(fs::exists(backup.storedFile("missing", "D")));
  EXPECT_EQ(fs::file_size(backup.storedFile("short", "D")), 40U);
  EXPECT_EQ(readFile(backup.storedFile("clear", "D")), bytesOf("clear"));
  EXPECT_TRUE(fs::exists(folder / "device/ab/ab"));
  EXPECT_FALSE(fs::exists(folder / "evil"));
  writeFile(folder / "plain.db", backup.manifestDatabase);
  const Database index = openDatabase(folder / "plain.db");
  EXPECT_EQ(queryText(index.get(), "SELECT count(*) FROM Files WHERE domain = 'D'"), "7");
  EXPECT_EQ(queryText(index.get(), "SELECT group_concat(flags) FROM Files WHERE flags <> 1"), "2,4");
}

TEST(BackupBuilder, SameContentsGiveTheSameBytes) {
  EXPECT_EQ(contentsOf(smallBackup()), contentsOf(smallBackup()));
  EXPECT_EQ(contentsOf(smallEncryptedBackup()), contentsOf(smallEncryptedBackup()));
  BackupContents reseeded = smallEncryptedBackup();
  reseeded.seed = 2;
  EXPECT_NE(contentsOf(smallEncryptedBackup()), contentsOf(reseeded));
}

TEST(TemporaryDirectory, SnapshotShowsEveryTouch) {
  const TemporaryDirectory folder;
  writeFile(folder / "a/b", "text");
  const auto before = treeSnapshot(folder.path());
  EXPECT_EQ(treeSnapshot(folder.path()), before);
  fs::last_write_time(folder / "a/b", fs::file_time_type::clock::now() - std::chrono::hours(1));
  EXPECT_NE(treeSnapshot(folder.path()), before);
}

}  // namespace
}  // namespace Fixture
