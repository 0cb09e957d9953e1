#include "TidewellCore/ChatData/SnapshotLoader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* phone = "5511900001111@s.whatsapp.net";

WhatsAppContents app(std::string domain, const std::string& name) {
  return {.domain = std::move(domain),
          .chats = {{.jid = phone}},
          .messages = {{.chat = 1, .date = 1, .text = name + " first"},
                       {.chat = 1, .date = 2, .text = name + " second"},
                       {.chat = 1, .date = 3, .text = name + " pending"}},
          .contacts = {{.fullName = name, .whatsAppID = phone}}};
}

// Loads from plain and encrypted backups, and checks that nothing is left behind or touched.
class SnapshotLoaderTest : public testing::TestWithParam<bool> {
 protected:
  SnapshotLoaderTest() : contents_{.whatsApp = app(std::string(consumerDomain), "Ana")} {
    if (GetParam()) contents_.encryption = Encryption{};
  }

  ChatStorageSnapshot load(const CancellationCheck& isCancelled = {}) {
    fs::remove_all(device_);
    writeBackup(contents_, device_);
    const auto before = treeSnapshot(device_);
    std::optional<ChatStorageSnapshot> snapshot;
    try {
      const OpenedBackup opened = OpenedBackup::open(device_, "correct horse");
      const auto manifest = ManifestStore::load(device_, opened.manifestDatabaseURL(), opened.usesTemporaryManifest());
      snapshot = SnapshotLoader::load(opened, manifest, isCancelled);
    } catch (...) {
      EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
      throw;
    }
    EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
    return *std::move(snapshot);
  }

  void expectUnreadable(const std::string& detail) {
    EXPECT_THAT([&] { load(); }, failsWith(TidewellError::chatStorageUnreadable(detail)));
  }

  void TearDown() override { EXPECT_THAT(temporary_.names(), IsEmpty()) << "working folders are left behind"; }

  TemporaryDirectory folder_;
  PrivateTemporaryFolder temporary_;
  fs::path device_ = folder_ / "device";
  BackupContents contents_;
};

INSTANTIATE_TEST_SUITE_P(PlainAndEncrypted, SnapshotLoaderTest, testing::Bool());

TEST_P(SnapshotLoaderTest, ReadsChatsAndContactsWithTheRowsOfTheirLogs) {
  const ChatStorageSnapshot snapshot = load();
  EXPECT_EQ(snapshot.messagesByChat.at(1).at(2).text, "Ana pending");
  EXPECT_EQ(snapshot.chatTitle(phone), "Ana");
}

TEST_P(SnapshotLoaderTest, IsEmptyWhereTheBackupHasNeither) {
  contents_.whatsApp = {.withChatStorage = false, .withContacts = false};
  EXPECT_THAT(load().chats, IsEmpty());
}

TEST_P(SnapshotLoaderTest, ReadsEitherDatabaseWithoutTheOther) {
  contents_.whatsApp.withContacts = false;
  EXPECT_EQ(load().chatTitle(phone), "+55 11 90000-1111");
  contents_.whatsApp.withContacts = true;
  contents_.whatsApp.withChatStorage = false;
  EXPECT_EQ(load().chatTitle(phone), "Ana");
}

TEST_P(SnapshotLoaderTest, NeverMixesTheDatabasesOfTheTwoApps) {
  contents_.businessApp = app(std::string(businessDomain), "Padaria");
  for (const bool businessFirst : {false, true}) {
    if (businessFirst) std::swap(contents_.whatsApp, *contents_.businessApp);
    const std::string name = load().chatTitle(phone);
    const ChatStorageSnapshot snapshot = load();
    ASSERT_THAT(snapshot.messagesByChat.at(1), SizeIs(3));
    EXPECT_EQ(snapshot.messagesByChat.at(1).at(2).text, name + " pending");
    EXPECT_EQ(snapshot.messagesByChat.at(1).at(0).text, name + " first");
  }
}

TEST_P(SnapshotLoaderTest, AMissingFileIsNamed) {
  for (const char* path :
       {"ChatStorage.sqlite", "ChatStorage.sqlite-wal", "ContactsV2.sqlite", "ContactsV2.sqlite-wal"}) {
    contents_.whatsApp.databaseStorage = {{path, {.missing = true}}};
    expectUnreadable(std::string("Missing backup file for ") + path + ".");
  }
}

TEST_P(SnapshotLoaderTest, AHostileIdentifierOfADatabaseIsAMissingFile) {
  contents_.whatsApp.databaseStorage["ChatStorage.sqlite"] = {.fileID = "../device/Manifest.db"};
  expectUnreadable("Missing backup file for ChatStorage.sqlite.");
}

TEST_P(SnapshotLoaderTest, CancellingAtAnyStageLeavesNothingBehind) {
  int checks = 0;
  load([&] { return ++checks < 0; });
  const int stages = checks;
  EXPECT_GE(stages, 2);
  for (int stage = 1; stage <= stages; ++stage) {
    checks = 0;
    EXPECT_THAT([&] { load([&] { return ++checks == stage; }); }, failsWith(TidewellError::cancelled())) << stage;
    EXPECT_THAT(temporary_.names(), IsEmpty()) << stage;
  }
}

// A plain backup whose stored chat database is made into something else.
class DamagedChatStorage : public testing::Test {
 protected:
  ChatStorageSnapshot load() {
    const auto before = treeSnapshot(device_);
    const OpenedBackup opened = OpenedBackup::open(device_, std::nullopt);
    const ManifestStore manifest = ManifestStore::load(device_);
    ChatStorageSnapshot snapshot;
    try {
      snapshot = SnapshotLoader::load(opened, manifest);
    } catch (...) {
      EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
      EXPECT_THAT(temporary_.names(), IsEmpty());
      throw;
    }
    EXPECT_THAT(temporary_.names(), IsEmpty());
    return snapshot;
  }

  void write(WhatsAppContents contents) {
    contents.journal = Journal::rollback;
    backup_ = writeBackup({.whatsApp = std::move(contents)}, device_);
  }

  TemporaryDirectory folder_;
  PrivateTemporaryFolder temporary_;
  fs::path device_ = folder_ / "device";
  WrittenBackup backup_;
};

TEST_F(DamagedChatStorage, AFileThatIsNoDatabaseIsUnreadable) {
  write(app(std::string(consumerDomain), "Ana"));
  writeFile(backup_.storedFile("ChatStorage.sqlite"), std::string(9000, 'x'));
  EXPECT_THAT([&] { load(); }, failsWith(TidewellError::chatStorageUnreadable("file is not a database")));
}

TEST_F(DamagedChatStorage, MalformedPagesAreUnreadable) {
  WhatsAppContents contents = app(std::string(consumerDomain), "Ana");
  for (int i = 0; i < 500; ++i) contents.messages.push_back({.chat = 1, .text = std::string(100, 'a')});
  write(contents);
  const fs::path stored = backup_.storedFile("ChatStorage.sqlite");
  Bytes bytes = readFile(stored);
  std::fill(bytes.end() - 30 * 4096, bytes.end(), std::uint8_t{0xEE});
  writeFile(stored, bytes);
  EXPECT_THAT([&] { load(); }, failsWith(TidewellError::chatStorageUnreadable("database disk image is malformed")));
}

TEST_F(DamagedChatStorage, ACutDatabaseIsUnreadableAtEveryLength) {
  WhatsAppContents contents = app(std::string(consumerDomain), "Ana");
  for (int i = 0; i < 500; ++i) contents.messages.push_back({.chat = 1, .text = std::string(100, 'a')});
  write(contents);
  const fs::path stored = backup_.storedFile("ChatStorage.sqlite");
  const Bytes whole = readFile(stored);
  for (const std::size_t length : {15UL, 99UL, 511UL, 4095UL, 8192UL, 20'000UL, whole.size() - 4096}) {
    writeFile(stored, ByteView(whole).first(length));
    EXPECT_THROW(load(), TidewellError) << length;
  }
}

TEST_F(DamagedChatStorage, DamagedContactsAreReported) {
  write(app(std::string(consumerDomain), "Ana"));
  writeFile(backup_.storedFile("ContactsV2.sqlite"), std::string(9000, 'x'));
  EXPECT_THAT([&] { load(); }, failsWith(TidewellError::invalidDatabase("file is not a database")));
}

}  // namespace
}  // namespace Fixture
