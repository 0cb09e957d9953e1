#include "TidewellCore/Destination/ExportLayout.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/SmallVolume.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Unprivileged.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using Fixture::writeFile;
using Files = std::map<std::string, std::string>;

// A destination, and a backup outside of it.
struct ExportLayoutTest : testing::Test {
  fs::path prepare() const { return ExportLayout::prepare(root, folder / "backup"); }
  void holdOlderExport() const { writeFile(root / ".tidewell-manifest.json", "{}"); }

  Fixture::TemporaryDirectory folder;
  fs::path root = folder / "Desktop";
};

TEST_F(ExportLayoutTest, MakesTheContentRootWithItsMark) {
  const fs::path deep = root / "not/yet";
  EXPECT_EQ(ExportLayout::prepare(deep, folder / "backup"), deep / "messages");
  EXPECT_EQ(ExportTest::foldersBelow(deep), (std::vector<std::string>{"messages", "messages/_viewer"}));
}

TEST_F(ExportLayoutTest, ContinuesAnExport) {
  prepare();
  writeFile(root / "messages/Ana/a.jpg", "a");
  writeFile(root / "index.html", "page");
  const auto before = Fixture::treeSnapshot(root);
  EXPECT_EQ(prepare(), root / "messages");
  EXPECT_EQ(Fixture::treeSnapshot(root), before);
}

TEST_F(ExportLayoutTest, MovesAMessagesFolderOfTheUsersAside) {
  writeFile(root / "messages/letter.txt", "dear");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"Messages-2/letter.txt", "dear"}}));
  fs::remove_all(root / "messages/_viewer");
  writeFile(root / "messages/note.txt", "note");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"Messages-2/letter.txt", "dear"}, {"Messages-3/note.txt", "note"}}));
}

TEST_F(ExportLayoutTest, KnowsItsOwnByItsMemoryWhereTheMarkIsNotSeen) {
  for (const std::string memory : {".tidewell-manifest.json", ".tidewell-names.json"}) {
    fs::remove_all(root);
    writeFile(root / "messages" / memory, "{}");
    writeFile(root / "messages/Ana/a.jpg", "a");
    prepare();
    EXPECT_EQ(filesBelow(root), (Files{{"messages/" + memory, "{}"}, {"messages/Ana/a.jpg", "a"}}));
  }
}

TEST_F(ExportLayoutTest, NeverMigratesWhatWasMovedAside) {
  writeFile(root / "messages/2023-01-01_101010_a.jpg", "own");
  writeFile(root / "messages/_transcript.txt", "own");
  holdOlderExport();
  prepare();
  prepare();
  EXPECT_EQ(filesBelow(root / "Messages-2").size(), 2U);
  EXPECT_FALSE(fs::exists(root / "messages/Messages-2"));
}

TEST_F(ExportLayoutTest, LeavesAFileCalledMessagesAlone) {
  writeFile(root / "messages", "a file");
  EXPECT_THROW(prepare(), fs::filesystem_error);
  EXPECT_EQ(filesBelow(root), (Files{{"messages", "a file"}}));
  EXPECT_FALSE(ExportTest::holdsPartials(root));
}

TEST_F(ExportLayoutTest, ADestinationThatIsAFileIsRefused) {
  writeFile(root, "a file");
  EXPECT_THROW(prepare(), fs::filesystem_error);
  EXPECT_EQ(ExportTest::textOf(root), "a file");
}

TEST_F(ExportLayoutTest, LeavesTheUsersFoldersAlone) {
  writeFile(root / "Taxes/2023.pdf", "tax");
  writeFile(root / "Photos/2023-01-01 10.10.10.jpg", "photo");
  writeFile(root / "Photos/Ana/2023-01-01_101010_a.jpg", "an export that was put away");
  writeFile(root / "index.html", "home page");
  writeFile(root / "undated_letter.txt", "loose");
  writeFile(root / "avatars/me.png", "me");
  writeFile(root / ".config/undated_a", "hidden");
  fs::create_directories(root / "Messages");
  const auto before = Fixture::treeSnapshot(root);
  prepare();
  auto after = Fixture::treeSnapshot(root);
  EXPECT_EQ(after.erase("messages") + after.erase("messages/_viewer"), 2U);
  EXPECT_EQ(after, before);
}

TEST_F(ExportLayoutTest, MigratesFoldersThatAreRecognisablyAnExports) {
  writeFile(root / "Ana/_transcript.txt", "1");
  writeFile(root / "Bea/_transcript.html", "2");
  writeFile(root / "Cy/2023-01-01_101010_c.jpg", "3");
  writeFile(root / "Cy/own/notes.txt", "5");
  writeFile(root / "Di/undated_d.jpg", "4");
  writeFile(root / "Ed/2023-01-01_1010_e.jpg", "6");
  fs::create_directories(root / "Flo/undated_folder");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"messages/Ana/_transcript.txt", "1"},
                                     {"messages/Bea/_transcript.html", "2"},
                                     {"messages/Cy/2023-01-01_101010_c.jpg", "3"},
                                     {"messages/Cy/own/notes.txt", "5"},
                                     {"messages/Di/undated_d.jpg", "4"},
                                     {"Ed/2023-01-01_1010_e.jpg", "6"}}));
  EXPECT_TRUE(fs::exists(root / "Flo/undated_folder"));
}

TEST_F(ExportLayoutTest, MigratesAFlatOlderExportWhole) {
  writeFile(root / ".tidewell-manifest.json", "manifest");
  writeFile(root / ".tidewell-names.json", "names");
  writeFile(root / "_Viewer/data/chats.js", "chats");
  writeFile(root / "Ana/photo.jpg", "a");
  writeFile(root / "avatars/a.jpg", "avatar");
  writeFile(root / ".hidden/file", "hidden");
  writeFile(root / "index.html", "page");
  writeFile(root / "notes.txt", "notes");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"messages/.tidewell-manifest.json", "manifest"},
                                     {"messages/.tidewell-names.json", "names"},
                                     {"messages/_viewer/data/chats.js", "chats"},
                                     {"messages/Ana/photo.jpg", "a"},
                                     {"avatars/a.jpg", "avatar"},
                                     {".hidden/file", "hidden"},
                                     {"index.html", "page"},
                                     {"notes.txt", "notes"}}));
  EXPECT_FALSE(fs::exists(root / "_Viewer"));
}

TEST_F(ExportLayoutTest, TheMemoryOfNamesAloneIsASignOfAnOlderExport) {
  writeFile(root / ".tidewell-names.json", "names");
  writeFile(root / "Ana/photo.jpg", "a");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"messages/.tidewell-names.json", "names"}, {"messages/Ana/photo.jpg", "a"}}));
}

TEST_F(ExportLayoutTest, AnInterruptedMigrationIsContinued) {
  holdOlderExport();
  writeFile(root / "Zoe/photo.jpg", "z");
  const Fixture::SmallVolume volume(root / "Bob", 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  EXPECT_THROW(prepare(), fs::filesystem_error) << "a volume cannot be renamed";
  EXPECT_TRUE(fs::exists(root / ".tidewell-manifest.json")) << "the sign must stay until all has moved";
}

TEST_F(ExportLayoutTest, LeavesLinksWhereTheyAre) {
  holdOlderExport();
  writeFile(folder / "elsewhere/_transcript.txt", "text");
  fs::create_directories(root);
  fs::create_directory_symlink("../elsewhere", root / "Ana");
  prepare();
  EXPECT_TRUE(fs::is_symlink(root / "Ana"));
  EXPECT_TRUE(fs::exists(root / "Ana/_transcript.txt"));
}

TEST_F(ExportLayoutTest, LeavesTheFoldersThatHoldBackups) {
  holdOlderExport();
  writeFile(root / "device/Manifest.plist", "another backup");
  writeFile(root / "Backups/mine/3d/3d00", "the backup being read");
  const auto before = Fixture::treeSnapshot(root / "Backups");
  ExportLayout::prepare(root, root / "Backups/mine");
  EXPECT_EQ(Fixture::treeSnapshot(root / "Backups"), before);
  EXPECT_TRUE(fs::exists(root / "device/Manifest.plist"));
}

// As every drive of ext4 has one.
TEST_F(ExportLayoutTest, LeavesAFolderThatThisUserMayNotEnter) {
  for (const bool isOlderExport : {false, true}) {
    fs::create_directories(root / "lost+found");
    if (isOlderExport) holdOlderExport();
    fs::permissions(root / "lost+found", fs::perms::none);
    fs::permissions(root, fs::perms::all);
    fs::permissions(folder.path(), fs::perms::all);
    EXPECT_EQ(Fixture::asUnprivilegedUser([&] { return prepare() == root / "messages" ? 0 : 1; }), 0);
    EXPECT_TRUE(fs::exists(root / "lost+found"));
    fs::remove_all(root);
  }
}

TEST_F(ExportLayoutTest, LeavesTheFolderOfAnotherPhonesBackups) {
  writeFile(root / ".tidewell-manifest.json", "{}");
  writeFile(root / "MobileSync/Backup/other/Manifest.plist", "another phone's");
  writeFile(root / "Library/Application Support/MobileSync/Backup/third/Manifest.plist", "one of a whole computer");
  const auto before = Fixture::treeSnapshot(root / "MobileSync");
  const auto library = Fixture::treeSnapshot(root / "Library");
  ExportLayout::prepare(root, "/somewhere/else");
  EXPECT_EQ(Fixture::treeSnapshot(root / "MobileSync"), before);
  EXPECT_EQ(Fixture::treeSnapshot(root / "Library"), library);
}

TEST_F(ExportLayoutTest, DoesNotMoveABackupInAMessagesFolderAside) {
  writeFile(root / "messages/mine/3d/3d00", "the backup being read");
  EXPECT_THROW(ExportLayout::prepare(root, root / "messages/mine"), fs::filesystem_error);
  EXPECT_EQ(filesBelow(root), (Files{{"messages/mine/3d/3d00", "the backup being read"}}));
}

TEST_F(ExportLayoutTest, RemovesWhatACrashLeftHalfDone) {
  prepare();
  writeFile(root / ".tidewell-partial-1-1/_viewer/x", "1");
  writeFile(root / "messages/.tidewell-partial-1-2", "2");
  writeFile(root / "messages/_viewer/.tidewell-partial-1-3", "3");
  writeFile(root / "messages/Ana/.tidewell-partial-1-4", "4");
  writeFile(root / "messages/_viewer/data/.tidewell-partial-1-5", "5");
  writeFile(root / "messages/avatars/.tidewell-partial-1-6", "6");
  writeFile(root / "messages/Ana/tidewell-partial-of-mine", "5");
  prepare();
  EXPECT_EQ(filesBelow(root), (Files{{"messages/Ana/tidewell-partial-of-mine", "5"}}));
}

TEST_F(ExportLayoutTest, LooksLikeAContentRootByItsFoldersOrItsManifest) {
  EXPECT_FALSE(ExportLayout::looksLikeContentRoot(root));
  for (const char* entry : {"_Viewer/x", "Avatars/x", ".tidewell-manifest.json", ".tidewell-names.json", "Ana/x"}) {
    writeFile(root / entry, "x");
    EXPECT_TRUE(ExportLayout::looksLikeContentRoot(root)) << entry;
    fs::remove_all(root);
  }
  for (const char* entry : {"messages/x", "Ana", ".hidden/x", ".Tidewell-manifest.json", ".tidewell-other.json"}) {
    writeFile(root / entry, "x");
    EXPECT_FALSE(ExportLayout::looksLikeContentRoot(root)) << entry;
    fs::remove_all(root);
  }
}

TEST_F(ExportLayoutTest, ResolvesTheContentRootOfOldAndNewExports) {
  EXPECT_EQ(ExportLayout::resolveContentRoot(root), root);
  fs::create_directories(root / "messages");
  EXPECT_EQ(ExportLayout::resolveContentRoot(root), root / "messages");
  fs::create_directories(root / "_viewer");
  EXPECT_EQ(ExportLayout::resolveContentRoot(root), root);
}

TEST_F(ExportLayoutTest, FindsTheArchivesData) {
  fs::create_directories(root / "messages");
  EXPECT_EQ(ExportLayout::viewerDataDirectory(root), root / "messages/_viewer/data");
  writeFile(root / "messages/_viewer/data/chats.js", "new");
  EXPECT_EQ(ExportLayout::viewerDataDirectory(root), root / "messages/_viewer/data");
  writeFile(root / "_viewer/data/chats.js", "old");
  EXPECT_EQ(ExportLayout::viewerDataDirectory(root), root / "_viewer/data");
}

}  // namespace
