#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "Tests/ChatData/AppOfOneChat.h"
#include "Tests/ChatData/ReadDatabases.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/PrivateTemporaryFolder.h"
#include "TidewellCore/ChatData/SnapshotLoader.h"
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

}  // namespace
}  // namespace Fixture
