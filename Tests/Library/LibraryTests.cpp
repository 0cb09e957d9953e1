#include "TidewellCore/Library/Library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>

#include "Tests/Export/ExportScene.h"
#include "Tests/Library/LibraryScene.h"
#include "Tests/Library/SaidMessages.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::canonical;
using LibraryTest::snapshotOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(Library, KeepsWhatANewerBackupLacks) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{1, 10, "one", "A"}, {1, 20, "two", "B"}, {2, 5, "bea", "C"}}),
             100);
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 20, "two", "B"}, {1, 30, "three", "D"}}), 200);
  scene.reopen();
  EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two", "three"));
  EXPECT_THAT(scene.texts(bea), ElementsAre("bea"));
  EXPECT_TRUE(scene.chat(bea)->isGone);
  EXPECT_FALSE(scene.chat(ana)->isGone);
}

TEST(Library, TheOrderOfBackupsDoesNotMatter) {
  const auto old = [] {
    return snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{1, 10, "one", "A"}, {1, 20, "two", "B"}, {2, 5, "bea", "C"}});
  };
  const auto mid = [] { return snapshotOf({{ana, "Ana Lima"}}, {{1, 20, "two!", "B"}, {1, 30, "three", "D"}}, 2); };
  const auto late = [] { return snapshotOf({{ana, "Ana Costa"}}, {{1, 30, "three", "D"}, {1, 40, "four", "E"}}, 1); };
  std::vector<int> order{0, 1, 2};
  do {
    LibraryScene scene;
    for (const int number : order) {
      scene.take(number == 0 ? old() : number == 1 ? mid() : late(), 100 + number);
    }
    EXPECT_THAT(scene.texts(ana), ElementsAre("one", "two!", "three", "four"));
    EXPECT_THAT(scene.texts(bea), ElementsAre("bea"));
    EXPECT_EQ(scene.chat(ana)->name, "Ana Costa");
    EXPECT_TRUE(scene.chat(bea)->isGone);
    EXPECT_FALSE(scene.chat(ana)->isGone);
    std::vector<bool> gone;
    const KeptMessages kept = KeptChats::messages(scene.library.database(), scene.chat(ana)->id);
    for (const KeptMessage& message : kept.list) gone.push_back(message.isGone(scene.chat(ana)->toldAt));
    EXPECT_THAT(gone, ElementsAre(true, true, false, false));
  } while (std::ranges::next_permutation(order).found);
}

TEST(Library, TakingTheSameAgainChangesNoByte) {
  LibraryScene scene;
  const auto told = [] { return snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}, {1, 20, "@5511900002222 hi", ""}}); };
  scene.take(told(), 100);
  const std::string before = ExportTest::textOf(scene.folder / LibraryFile::fileName);
  scene.reopen();
  scene.take(told(), 100);
  EXPECT_EQ(ExportTest::textOf(scene.folder / LibraryFile::fileName), before);
  scene.reopen();
  const std::int64_t changed = scene.chat(ana)->changed;
  scene.take(told(), 200);
  EXPECT_EQ(scene.chat(ana)->changed, changed) << "a newer backup of the same is no news to the pages";
}

// What the oldest backup said counts again, whenever the one between is taken.
TEST(Library, TheNewestBackupCountsWhereItSaysWhatTheOldestDid) {
  const auto same = [] { return snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}); };
  const auto between = [] {
    return snapshotOf({{ana, "Old name"}, {bea, "Bea"}}, {{1, 10, "one", "A"}, {2, 20, "hi", "B"}});
  };
  std::vector<int> order{1, 2, 3};
  do {
    LibraryScene scene;
    for (const int backup : order) {
      scene.take(backup == 2 ? between() : same(), backup * 100.0);
      scene.reopen();
    }
    EXPECT_EQ(scene.chat(ana)->name, "Ana") << order[0] << order[1] << order[2];
    EXPECT_TRUE(scene.chat(bea)->isGone) << order[0] << order[1] << order[2];
  } while (std::ranges::next_permutation(order).found);
}

TEST(Library, TwoRecordsOfOneMessageAreOne) {
  LibraryScene scene;
  scene.take(snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}},
                        {{1, 10, "once", "A"}, {2, 10, "once", "A"}, {2, 11, "twice", "B"}, {2, 11, "twice", "C"}}, 1,
                        {{anaLID, ana}}));
  EXPECT_THAT(scene.texts(ana), ElementsAre("once", "twice", "twice"));
}

TEST(Library, ChatsThatTurnOutToBeOneAreJoined) {
  LibraryScene scene;
  scene.take(snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{1, 10, "by lid", "A"}, {2, 20, "by phone", "B"}}), 100);
  EXPECT_THAT(scene.library.chats(), SizeIs(2));
  scene.take(
      snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{1, 10, "by lid", "A"}, {2, 30, "later", "C"}}, 1, {{anaLID, ana}}),
      200);
  scene.reopen();
  EXPECT_THAT(scene.library.chats(), SizeIs(1));
  EXPECT_THAT(scene.texts(ana), ElementsAre("by lid", "by phone", "later"));
  EXPECT_THAT(scene.texts(anaLID), SizeIs(3));
}

// A later chat of a backup joins the chat of an earlier one to another.
TEST(Library, AChatThatIsJoinedWhileABackupIsTakenInKeepsItsMessages) {
  const std::string first = "4930000000001@s.whatsapp.net";
  const std::string second = "4915000000001@s.whatsapp.net";  // before the first, in the order of JIDs
  LibraryScene scene;
  scene.take(snapshotOf({{first, "Old number"}}, {{1, 10, "one", "A"}}), 100);
  scene.take(snapshotOf({{second, "New number"}}, {{1, 20, "two", "B"}}, 1, {{anaLID, second}}), 200);
  scene.take(snapshotOf({{bea, "Bea"}}, {{1, 5, "bea", "C"}}), 300);
  scene.take(snapshotOf({{first, "Old number"}, {second, "New number"}}, {{1, 10, "one", "A"}, {2, 20, "two", "B"}}, 1,
                        {{anaLID, first}}),
             400);
  scene.reopen();
  EXPECT_THAT(scene.texts(bea), ElementsAre("bea"));
  EXPECT_EQ(scene.chat(bea)->name, "Bea");
  EXPECT_THAT(scene.texts(first), ElementsAre("one", "two"));
  EXPECT_EQ(scene.chat(first), scene.chat(second));
}

// Pages that show their number change, whichever backup names them.
TEST(Library, SomebodyWhoIsNamedForTheFirstTimeIsNews) {
  LibraryScene scene;
  KeptPeople& people = scene.library.people();
  EXPECT_FALSE(people.tell(ana, {}, true));
  EXPECT_TRUE(people.tell(ana, {.name = "Ana"}, false));
  EXPECT_FALSE(people.tell(ana, {}, true));
  EXPECT_FALSE(people.tell(ana, {.name = "Aninha"}, false));
  EXPECT_EQ(people.known(ana)->name, "Ana");
}

// Two phones had other files under one path.
TEST(Library, APathOfTwoFilesHasTwoEntriesHoweverOftenTheyAreExported) {
  LibraryScene scene;
  MediaLedger& ledger = scene.library.media();
  const auto medium = [](const std::string& name, std::int64_t size) {
    return KeptMedium{
        .path = "Message/Media/a/b.jpg", .place = ExportPlace{"Ana", name}, .size = size, .isThere = true};
  };
  for (int time = 0; time < 3; ++time) {
    ledger = MediaLedger(scene.library.database());
    ledger.settle(medium("b.jpg", 100));
    ledger.save(scene.library.database());
    ledger = MediaLedger(scene.library.database());
    ledger.settle(medium("b-2.jpg", 200));
    EXPECT_EQ(ledger.save(scene.library.database()), time == 0);
    EXPECT_THAT(ledger.media(), SizeIs(2));
  }
}

// It may lack the table that ties identities to numbers.
TEST(Library, ABackupThatKnowsLessOfPeopleSplitsNoChat) {
  LibraryScene scene;
  scene.take(snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}}, {{1, 10, "by lid", "A"}, {2, 20, "by phone", "B"}}, 1,
                        {{anaLID, ana}}),
             100);
  scene.take(snapshotOf({{anaLID, "Ana"}, {ana, "Ana"}},
                        {{1, 10, "by lid", "A"}, {2, 20, "by phone", "B"}, {2, 30, "new", "C"}}),
             200);
  EXPECT_THAT(scene.library.chats(), SizeIs(1));
  EXPECT_THAT(scene.texts(ana), ElementsAre("by lid", "by phone", "new"));
  for (const ArchiveMessage& message : scene.messages(ana)) EXPECT_EQ(message.sender, "Ana");
}

TEST(Library, ABackupThatKnowsLessOfPeopleTellsNothingTwice) {
  const ExportTest::JIDPairs chats{{anaLID, "Ana"}, {ana, "Ana"}};
  const std::vector<LibraryTest::Said> said{
      {1, 10, "once", "A"}, {1, 30, "last", "C"}, {2, 10, "once", "A"}, {2, 20, "other", "B"}};
  LibraryScene scene;
  scene.take(snapshotOf(chats, said, 1, {{anaLID, ana}}), 100);
  scene.take(snapshotOf(chats, said), 200);
  EXPECT_THAT(scene.texts(ana), ElementsAre("once", "other", "last"));
}

TEST(Library, WhatABackupToldAgainAnOlderOneDoesNotBringBack) {
  LibraryScene scene;
  const ExportTest::JIDPairs chats{{ana, "Ana"}, {bea, "Bea"}};
  scene.take(snapshotOf(chats, {{1, 10, "one", "A"}}), 100);
  scene.take(snapshotOf(chats, {{1, 10, "one", "A"}, {2, 20, "news", "B"}}), 200);
  scene.take(snapshotOf(chats, {{1, 10, "one", "A"}, {1, 11, "deleted since", "C"}}), 150);
  const std::vector<ArchiveMessage> messages = scene.messages(ana);
  ASSERT_THAT(messages, SizeIs(2));
  EXPECT_FALSE(messages[0].isGone);
  EXPECT_TRUE(messages[1].isGone);
}

// A group as a backup lists it: its title, its members by their JIDs, and those who left it.
ChatStorageSnapshot groupOf(const std::string& title, const std::vector<std::string>& members,
                            const std::vector<std::string>& left = {}) {
  ChatTables tables = ExportTest::tablesOf({{ExportTest::group, title}});
  std::int64_t pk = 1;
  const auto add = [&](const std::string& jid, bool isActive) {
    tables.directory.groupMembers.emplace(pk,
                                          GroupMemberRecord{.pk = pk, .jid = jid, .chatPK = 1, .isActive = isActive});
    ++pk;
  };
  for (const std::string& jid : members) add(jid, true);
  for (const std::string& jid : left) add(jid, false);
  return ChatStorageSnapshot(std::move(tables));
}

std::vector<std::string> rowsOf(const LibraryScene& scene, const std::string& select) {
  std::vector<std::string> rows;
  scene.library.database().forEachRow(select, [&](const SQLiteRowView& row) {
    rows.emplace_back(row.text(0).value_or("NULL"));
    if (const auto number = row.number(1)) rows.back() += " " + std::to_string(static_cast<int>(*number));
  });
  return rows;
}

TEST(Library, KeepsWhatAChatWasCalledAndWhoWasInItInEveryOrder) {
  const auto told = [](int number) {
    if (number == 0) return groupOf("Trip", {ana, bea});
    if (number == 1) return groupOf("Trip to the sea", {bea});
    return groupOf("Reunion", {bea, ExportTest::anaLID}, {ana});
  };
  std::vector<int> order{0, 1, 2};
  do {
    LibraryScene scene;
    for (const int number : order) scene.take(told(number), 100 + number);
    const std::string when = testing::PrintToString(order);
    EXPECT_EQ(scene.chat(ExportTest::group)->name, "Reunion") << when;
    EXPECT_THAT(rowsOf(scene, "SELECT name, NULL FROM title"), ElementsAre("Reunion", "Trip", "Trip to the sea"))
        << when;
    EXPECT_THAT(rowsOf(scene, "SELECT jid, last_told FROM member ORDER BY jid"),
                ElementsAre(ExportTest::anaLID, ana + " 100", bea))
        << when;
  } while (std::ranges::next_permutation(order).found);
}

TEST(Library, AChatKnownByItsFilesAloneIsAChat) {
  LibraryScene scene;
  scene.take(snapshotOf({}, {}), 1, {canonical(ana)});
  ASSERT_NE(scene.chat(ana), nullptr);
  EXPECT_THAT(scene.texts(ana), IsEmpty());
}

TEST(Library, ADamagedOneIsSetAsideAndToldOf) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  std::filesystem::resize_file(scene.folder / LibraryFile::fileName, 5000);
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), SizeIs(1));
  EXPECT_THAT(scene.library.chats(), IsEmpty());
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), SizeIs(1)) << "the run that set it aside may have been broken off";
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), IsEmpty()) << "an export has told it";
}

TEST(Library, OneOfAVersionThatNobodyWroteIsDamage) {
  for (const char* version : {"PRAGMA user_version = 0", "PRAGMA user_version = -1"}) {
    LibraryScene scene;
    scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
    scene.library.database().query(version, {}, [](const SQLiteRow&) {});
    scene.reopen();
    EXPECT_THAT(scene.library.warnings(), SizeIs(1)) << version;
  }
}

TEST(Library, OneThatAnotherToolLeftWithAWriteAheadLogIsReadWithIt) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  const Fixture::TemporaryDirectory other;
  const std::filesystem::path log = LibraryFile::fileName + std::string("-wal");
  std::filesystem::copy_file(scene.folder / LibraryFile::fileName, other / LibraryFile::fileName);
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open((other / LibraryFile::fileName).c_str(), &database), SQLITE_OK);
  sqlite3_exec(database, "PRAGMA journal_mode = WAL; UPDATE chat SET name = 'Ana Maria'", nullptr, nullptr, nullptr);
  for (const auto& name : {std::filesystem::path(LibraryFile::fileName), log}) {
    std::filesystem::copy_file(other / name, scene.folder / name, std::filesystem::copy_options::overwrite_existing);
  }
  sqlite3_close(database);
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), IsEmpty());
  ASSERT_THAT(scene.library.chats(), SizeIs(1));
  EXPECT_EQ(scene.library.chats()[0].name, "Ana Maria");
  EXPECT_FALSE(std::filesystem::exists(scene.folder / log));
}

TEST(Library, SomethingElseUnderTheNameOfALogMakesRoom) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  const std::string log = LibraryFile::fileName + std::string("-wal");
  std::filesystem::create_directory(scene.folder / log);
  scene.reopen();
  EXPECT_THAT(scene.library.chats(), SizeIs(1));
  EXPECT_FALSE(std::filesystem::exists(scene.folder / log)) << "it has another name";
  std::ofstream(scene.folder / log) << "no log";
  scene.reopen();
  EXPECT_THAT(scene.library.chats(), SizeIs(1));
}

TEST(Library, OneOfNoBytesIsANewOne) {
  Fixture::TemporaryDirectory folder;
  std::ofstream(folder / LibraryFile::fileName).close();
  EXPECT_TRUE(Library::open(folder.path()).isNew());
  EXPECT_TRUE(Library::open(folder.path()).warnings().empty());
}

TEST(Library, IsNewUntilABackupWasTakenIn) {
  LibraryScene scene;
  scene.reopen();
  EXPECT_TRUE(scene.library.isNew()) << "the export that made it may have been interrupted";
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  scene.reopen();
  EXPECT_FALSE(scene.library.isNew());
}

// A run that was killed while it made the library leaves pages and the journal that undoes them.
TEST(Library, ABeginningThatWasBrokenOffIsUndone) {
  const Fixture::TemporaryDirectory working;
  const Fixture::TemporaryDirectory folder;
  const SQLiteDB database((working / LibraryFile::fileName).string(), SQLiteDB::OpenMode::kept);
  const SQLiteTransaction transaction(database);
  const auto run = [&](const char* sql) { database.query(sql, {}, [](const SQLiteRow&) {}); };
  run("PRAGMA cache_size = 1");
  run("CREATE TABLE t (x)");
  for (int row = 0; row < 200; ++row) run("INSERT INTO t VALUES (zeroblob(4000))");
  for (const char* name : {LibraryFile::fileName, LibraryFile::journalName}) {
    std::filesystem::copy_file(working / name, folder / name);
  }
  ASSERT_GT(std::filesystem::file_size(folder / LibraryFile::fileName), 0U);
  const Library library = Library::open(folder.path());
  EXPECT_TRUE(library.isNew());
  EXPECT_THAT(library.warnings(), IsEmpty());
}

TEST(Library, SaysWhatTheDriveSaysWhenItCannotBeOpened) {
  const Fixture::TemporaryDirectory folder;
  for (const auto mode : {SQLiteDB::OpenMode::kept, SQLiteDB::OpenMode::keptReadOnly}) {
    try {
      const SQLiteDB database((folder / "gone" / LibraryFile::fileName).string(), mode);
      FAIL() << "it was opened";
    } catch (const std::filesystem::filesystem_error& error) {
      EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
  }
}

TEST(Library, APageIDThatLeadsElsewhereIsDamage) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  scene.library.database().query("UPDATE chat SET page = '../../x'", {}, [](const SQLiteRow&) {});
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), SizeIs(1));
}

// Whatever somebody made of the file: nothing is added to such numbers, and nothing is lost of what stands aside.
TEST(Library, OneThatContradictsItselfIsDamage) {
  const std::vector<std::string> changes{
      "UPDATE export SET id = 9223372036854775807",
      "UPDATE export SET id = -3",
      "UPDATE chat SET changed = 9223372036854775807",
      "UPDATE chat SET changed = 'late'",
      "INSERT INTO chat (id, jid, name, page, partner, gone, told_at, changed)"
      " VALUES (9223372036854775807, 'x', '', 'x', '', 0, 0, 1)",
      "DELETE FROM chat_jid",
      "UPDATE chat_jid SET chat = 7",
      "INSERT INTO chat_jid VALUES ('x', 7)",
      "UPDATE message SET chat = 7",
      "UPDATE message SET chat = 'mine' WHERE key = 2",
      "UPDATE message SET chat = -1",
      "DELETE FROM chat",
      "INSERT INTO medium (id, path, folder, name, size, date, kind, chat, there, digest) VALUES (0, 'p', 'f', 'n', "
      "-1, NULL, 'photos', 'x', 1, NULL)",
  };
  for (const std::string& change : changes) {
    LibraryScene scene;
    scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}, {2, 11, "two", "B"}}));
    scene.library.database().query(change, {}, [](const SQLiteRow&) {});
    scene.reopen();
    EXPECT_THAT(scene.library.warnings(), SizeIs(1)) << change;
    EXPECT_TRUE(scene.library.isNew()) << change;
  }
}

TEST(Library, ManyChatsAndMessagesContradictNothing) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}, {bea, "Bea"}}, {{1, 10, "one", "A"}, {2, 11, "two", "B"}}));
  scene.reopen();
  EXPECT_THAT(scene.library.warnings(), IsEmpty());
  EXPECT_THAT(scene.library.chats(), SizeIs(2));
}

TEST(Library, ALaterVersionsIsLeftAlone) {
  LibraryScene scene;
  scene.library.database().query("PRAGMA user_version = 99", {}, [](const SQLiteRow&) {});
  EXPECT_THROW(scene.reopen(), TidewellError);
}

TEST(Library, LeavesNoJournalBehind) {
  LibraryScene scene;
  scene.take(snapshotOf({{ana, "Ana"}}, {{1, 10, "one", "A"}}));
  EXPECT_FALSE(std::filesystem::exists(scene.folder / LibraryFile::journalName));
}

}  // namespace
