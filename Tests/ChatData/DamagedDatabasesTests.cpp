#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <span>

#include "Tests/ChatData/AppOfOneChat.h"
#include "Tests/ChatData/ReadDatabases.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "TidewellCore/ChatData/SnapshotLoader.h"
#include "TidewellCore/Platform/SQLiteDB.h"
#include "TidewellCore/TidewellError.h"

// What becomes of databases whose bytes are damaged.
namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

// A plain backup whose stored chat database is made into something else.
class DamagedChatStorage : public testing::Test {
 protected:
  SnapshotLoader::Loaded load() {
    const auto before = treeSnapshot(device_);
    const OpenedBackup opened = OpenedBackup::open(device_, std::nullopt);
    const ManifestStore manifest = ManifestStore::load(device_);
    SnapshotLoader::Loaded loaded;
    try {
      loaded = SnapshotLoader::load(opened, manifest);
    } catch (...) {
      EXPECT_EQ(treeSnapshot(device_), before) << "the backup was touched";
      EXPECT_THAT(temporary_.names(), IsEmpty());
      throw;
    }
    EXPECT_THAT(temporary_.names(), IsEmpty());
    return loaded;
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

TEST_F(DamagedChatStorage, ContactsThatAreNoDatabaseCostNamesOnly) {
  write(app(std::string(consumerDomain), "Ana"));
  writeFile(backup_.storedFile("ContactsV2.sqlite"), std::string(9000, 'x'));
  const auto [snapshot, warnings] = load();
  EXPECT_THAT(messagesOf(snapshot, 1), SizeIs(3));
  EXPECT_THAT(warnings, ElementsAre(StartsWith("Some names may be missing")));
}

TEST_F(DamagedChatStorage, ContactsBeforeAMalformedPageAreKept) {
  WhatsAppContents contents = app(std::string(consumerDomain), "Ana");
  for (int i = 0; i < 2000; ++i) contents.contacts.push_back({.fullName = std::string(100, 'a')});
  write(contents);
  const fs::path stored = backup_.storedFile("ContactsV2.sqlite");
  Bytes bytes = readFile(stored);
  std::fill(bytes.end() - 8 * 4096, bytes.end(), std::uint8_t{0xEE});
  writeFile(stored, bytes);
  const auto [snapshot, warnings] = load();
  EXPECT_EQ(snapshot.chatTitle(phone), "Ana");
  EXPECT_THAT(warnings, ElementsAre(StartsWith("Some names may be missing")));
}

// A chat database that is too large for all of its pages to be looked at, as that of most phones is.
class DamagedLargeChatStorage : public DamagedChatStorage {
 protected:
  void SetUp() override {
    contents_.chatStorageSQL = "CREATE TABLE large (a); INSERT INTO large VALUES (zeroblob(17000000));";
    for (Message& message : contents_.messages) message.receiptInfo = Bytes{0};
    for (const std::int64_t message : {1, 2, 3}) {
      contents_.mediaItems.push_back({.message = message, .title = "a caption"});
      contents_.linkItems.push_back({.message = message, .title = "a preview"});
    }
  }

  // Writes it, and changes the one page of a table.
  void damage(const char* table, const std::function<void(std::span<std::uint8_t>)>& change) {
    write(contents_);
    const fs::path stored = backup_.storedFile("ChatStorage.sqlite");
    std::int64_t number = 0;
    SQLiteDB(stored, SQLiteDB::OpenMode::readOnly)
        .query("SELECT rootpage FROM sqlite_master WHERE name = ?1", {table},
               [&](const SQLiteRow& row) { number = row.intValue("rootpage").value_or(0); });
    Bytes bytes = readFile(stored);
    change(std::span(bytes).subspan(static_cast<std::size_t>(number - 1) * 4096, 4096));
    writeFile(stored, bytes);
  }

  WhatsAppContents contents_ = app(std::string(consumerDomain), "Ana");
};

constexpr std::size_t cellCount = 4;  // the lower byte of it, in a page
constexpr std::size_t firstCell = 8;  // where the places of the cells begin, two bytes each

TEST_F(DamagedLargeChatStorage, AWholeOneIsNoWarning) {
  write(contents_);
  EXPECT_THAT(load().warnings, IsEmpty());
}

TEST_F(DamagedLargeChatStorage, RowsThatAPageNoLongerCountsAreAWarning) {
  for (const char* table : {"ZWAMESSAGEINFO", "ZWAMESSAGEDATAITEM", "ZWAMEDIAITEM"}) {
    damage(table, [](auto page) { page[cellCount] = 1; });
    EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing"))) << table;
  }
}

TEST_F(DamagedLargeChatStorage, RowsThatAreNotFoundByTheirKeysAreAWarning) {
  for (const char* table : {"ZWAMESSAGEINFO", "ZWAMESSAGEDATAITEM", "ZWAMEDIAITEM"}) {
    damage(table, [](auto page) {
      const auto cells = page.begin() + firstCell;
      std::swap_ranges(cells, cells + 2, cells + 2);
    });
    EXPECT_THAT(load().warnings, ElementsAre(StartsWith("Some messages may be missing"))) << table;
  }
}

TEST_F(DamagedLargeChatStorage, NamingAnItemThatIsNotThereOrAnothersIsNoDamage) {
  contents_.chatStorageSQL +=
      "UPDATE ZWAMESSAGE SET ZMEDIAITEM = 99, ZMESSAGEINFO = 99 WHERE Z_PK = 1;"
      "UPDATE ZWAMESSAGE SET ZMEDIAITEM = 3 WHERE Z_PK = 2; UPDATE ZWAMEDIAITEM SET ZMESSAGE = NULL WHERE Z_PK = 1";
  write(contents_);
  EXPECT_THAT(load().warnings, IsEmpty());
}

}  // namespace
}  // namespace Fixture
