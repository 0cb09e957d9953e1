#include "TidewellCore/Library/ArchiveOwner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Export/ExportScene.h"
#include "Tests/Library/LibraryScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/UnfinishedTransaction.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::JIDPairs;
using ExportTest::tablesOf;
using Fixture::failsWith;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string beaLID = "200000000000002@lid";
const std::string anasNumber = "+55 11 90000-1111";

// A backup that tells no more than this of its owner.
ChatStorageSnapshot ownedBy(const std::vector<std::string>& jids, const JIDPairs& lids = {}) {
  ChatTables tables = tablesOf({}, lids);
  tables.ownJIDs = jids;
  return ChatStorageSnapshot(std::move(tables));
}

// Whose archive a backup of somebody else is told to be; empty when it is let in.
std::string refusedFor(const LibraryScene& scene, const ChatStorageSnapshot& other) {
  try {
    ArchiveOwner::requireSame(scene.library.database(), other);
    return {};
  } catch (const TidewellError& error) {
    return std::get<TidewellError::ForeignArchive>(error.value()).owner;
  }
}

TEST(ArchiveOwner, OneOfTheirIdentitiesIsEnough) {
  LibraryScene scene;
  scene.take(ownedBy({ana, anaLID}));
  EXPECT_EQ(refusedFor(scene, ownedBy({ana})), "");
  EXPECT_EQ(refusedFor(scene, ownedBy({anaLID})), "");
  EXPECT_EQ(refusedFor(scene, ownedBy({bea, anaLID})), "") << "another number of the same account";
  EXPECT_EQ(refusedFor(scene, ownedBy({ana, beaLID})), "");
}

TEST(ArchiveOwner, AnotherIsRefusedByNumberAndByLID) {
  LibraryScene scene;
  scene.take(ownedBy({ana, anaLID}));
  EXPECT_EQ(refusedFor(scene, ownedBy({bea})), anasNumber);
  EXPECT_EQ(refusedFor(scene, ownedBy({beaLID})), anasNumber);
  EXPECT_EQ(refusedFor(scene, ownedBy({bea, beaLID})), anasNumber);
}

TEST(ArchiveOwner, ANumberSaysNothingOfALID) {
  LibraryScene scene;
  scene.take(ownedBy({ana}));
  EXPECT_EQ(refusedFor(scene, ownedBy({beaLID})), "");
  LibraryScene knownByLID;
  knownByLID.take(ownedBy({anaLID}));
  EXPECT_EQ(refusedFor(knownByLID, ownedBy({bea})), "");
}

TEST(ArchiveOwner, ALIDWhoseNumberIsKnownIsThatNumber) {
  LibraryScene scene;
  scene.take(ownedBy({ana}));
  EXPECT_EQ(refusedFor(scene, ownedBy({anaLID}, {{anaLID, ana}})), "");
  EXPECT_EQ(refusedFor(scene, ownedBy({beaLID}, {{beaLID, bea}})), anasNumber);
}

TEST(ArchiveOwner, NobodyKnownIsAnybody) {
  LibraryScene scene;
  EXPECT_EQ(refusedFor(scene, ownedBy({bea})), "") << "a new archive";
  scene.take(ownedBy({}));
  EXPECT_EQ(refusedFor(scene, ownedBy({bea})), "");
  scene.take(ownedBy({ana}));
  EXPECT_EQ(refusedFor(scene, ownedBy({})), "");
}

TEST(ArchiveOwner, IsShownByTheNumberElseByTheDigits) {
  LibraryScene byLID;
  byLID.take(ownedBy({anaLID}));
  EXPECT_EQ(refusedFor(byLID, ownedBy({beaLID})), "200000000000001");
  LibraryScene shortNumber;
  shortNumber.take(ownedBy({"1234567@s.whatsapp.net"}));
  EXPECT_EQ(refusedFor(shortNumber, ownedBy({bea})), "1234567");
}

// A library may be anybody's writing, and terminals obey what they are shown.
TEST(ArchiveOwner, WhatIsNobodysIdentityIsNotCompared) {
  for (const char* jid : {"\x1b[2J@s.whatsapp.net", "@s.whatsapp.net", "5511900001111", "5511900001111@g.us", ""}) {
    LibraryScene scene;
    const SQLiteStatement write(scene.library.database(), "INSERT INTO owner (jid) VALUES (?)");
    write.run({std::string_view(jid)});
    EXPECT_EQ(refusedFor(scene, ownedBy({bea})), "") << jid;
  }
}

TEST(ArchiveOwner, IsEnteredOnce) {
  LibraryScene scene;
  scene.take(ownedBy({ana}));
  EXPECT_FALSE(ArchiveOwner::enter(scene.library.database(), {ana}));
  EXPECT_TRUE(ArchiveOwner::enter(scene.library.database(), {ana, bea}));
  scene.reopen();
  EXPECT_THAT(ArchiveOwner::known(scene.library.database()), ElementsAre(ana, bea));
}

class ArchiveOwnerInAFolder : public testing::Test {
 protected:
  ArchiveOwnerInAFolder() {
    const Library library = Library::open(folder.path());
    ArchiveOwner::enter(library.database(), {ana});
  }

  // Looks at it, and sees that this changed nothing.
  void look() const {
    const auto before = Fixture::treeSnapshot(folder.path());
    const auto see = [&] { EXPECT_EQ(Fixture::treeSnapshot(folder.path()), before); };
    try {
      ArchiveOwner::requireSame(folder.path(), ownedBy({bea}));
    } catch (const TidewellError&) {
      see();
      throw;
    }
    see();
  }

  Fixture::TemporaryDirectory folder;
  fs::path file = folder / LibraryFile::fileName;
};

TEST_F(ArchiveOwnerInAFolder, IsReadWithoutAChange) {
  EXPECT_THAT([&] { look(); }, failsWith(TidewellError::foreignArchive(anasNumber)));
}

TEST_F(ArchiveOwnerInAFolder, IsUnknownWithoutALibrary) {
  fs::remove(file);
  EXPECT_NO_THROW(look());
  EXPECT_NO_THROW(ArchiveOwner::requireSame(folder / "nowhere", ownedBy({bea})));
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_NO_THROW(look()) << "nothing is waited for";
}

TEST_F(ArchiveOwnerInAFolder, IsUnknownInOneThatCannotBeOpened) {
  LibraryFile::open(folder.path()).database().query("PRAGMA user_version = 99", {}, [](const SQLiteRow&) {});
  EXPECT_NO_THROW(look()) << "a later version's";
  fs::resize_file(file, 5000);
  EXPECT_NO_THROW(look()) << "a damaged one";
  Fixture::writeFile(file, "my letters");
  EXPECT_NO_THROW(look()) << "somebody's file";
}

TEST_F(ArchiveOwnerInAFolder, IsKnownAgainWhenABrokenOffTransactionIsUndone) {
  Fixture::leaveUnfinished(file, "DELETE FROM owner");
  EXPECT_NO_THROW(look());
  const Library library = Library::open(folder.path());
  EXPECT_THAT(library.warnings(), IsEmpty());
  EXPECT_THAT([&] { ArchiveOwner::requireSame(library.database(), ownedBy({bea})); },
              failsWith(TidewellError::foreignArchive(anasNumber)));
}

}  // namespace
