#include "TidewellCore/CleanUp/ExportDeduper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <set>

#include "Tests/CleanUp/DedupeScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/SmallVolume.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/NamingMemory.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::Tree;

struct ExportDeduperTest : ExportTest::DedupeScene {};

TEST_F(ExportDeduperTest, RemovesAFolderOfExactDuplicates) {
  write("Ana/a.jpg", "aaa");
  write("Ana/b.jpg", "bb");
  write(ana + "/a.jpg", "aaa");
  write(ana + "/b.jpg", "bb");
  remember({{ana, "Ana"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_THAT(summary.pairs, ElementsAre(DedupePair{"Ana", ana, ana, 2, 0, 5}));
  EXPECT_EQ(summary, (DedupeSummary{.dryRun = false,
                                    .pairs = summary.pairs,
                                    .deletedDuplicateCount = 2,
                                    .removedFolderCount = 1,
                                    .bytesReclaimed = 5}));
  EXPECT_EQ(summary.mergedFolderCount(), 1);
  EXPECT_EQ(media(), (Tree{{"Ana/a.jpg", "aaa"}, {"Ana/b.jpg", "bb"}}));
  EXPECT_FALSE(fs::exists(content / ana));
}

TEST_F(ExportDeduperTest, MovesWhatOnlyTheDuplicateFolderHas) {
  write("Ana/a.jpg", "aaa");
  write(ana + "/a.jpg", "longer");
  write(ana + "/b.jpg", "bb");
  write(ana + "/.hidden", "h");
  fs::last_write_time(content / ana / "a.jpg", fs::file_time_type(std::chrono::seconds(-200'000'000)));
  const auto date = ExportTest::modified(content / ana / "a.jpg");
  remember({{ana, "Ana"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_THAT(summary.pairs, ElementsAre(DedupePair{"Ana", ana, ana, 0, 3, 0}));
  EXPECT_EQ(summary.movedUniqueCount, 3);
  EXPECT_EQ(summary.bytesReclaimed, 0);
  EXPECT_EQ(media(),
            (Tree{{"Ana/a.jpg", "aaa"}, {"Ana/a-2.jpg", "longer"}, {"Ana/b.jpg", "bb"}, {"Ana/.hidden", "h"}}));
  EXPECT_EQ(ExportTest::modified(content / "Ana/a-2.jpg"), date);
}

TEST_F(ExportDeduperTest, KeepsAFileOfEqualNameAndSizeWithOtherBytes) {
  write("Ana/a.jpg", "aaa");
  write(ana + "/a.jpg", "bbb");
  remember({{ana, "Ana"}});
  for (const bool apply : {false, true}) {
    EXPECT_THAT(dedupe(apply).pairs, ElementsAre(DedupePair{"Ana", ana, ana, 0, 1, 0}));
  }
  EXPECT_EQ(media(), (Tree{{"Ana/a.jpg", "aaa"}, {"Ana/a-2.jpg", "bbb"}}));
}

TEST_F(ExportDeduperTest, ComparesNamesByTheirKey) {
  write("Ana/José.JPG", "same");
  write("Ana/B.jpg", "one");
  write(ana + "/JOSE\u0301.jpg", "same");
  write(ana + "/b.jpg", "three");
  remember({{ana, "Ana"}});
  EXPECT_THAT(dedupe(true).pairs, ElementsAre(DedupePair{"Ana", ana, ana, 1, 1, 4}));
  EXPECT_EQ(media(), (Tree{{"Ana/José.JPG", "same"}, {"Ana/B.jpg", "one"}, {"Ana/b-2.jpg", "three"}}));
}

TEST_F(ExportDeduperTest, KeepsTwoFilesOfOneKeyApart) {
  write("Ana/c.jpg", "c");
  write(ana + "/a.jpg", "same");
  write(ana + "/A.jpg", "same");
  remember({{ana, "Ana"}});
  EXPECT_THAT(dedupe(true).pairs, ElementsAre(DedupePair{"Ana", ana, ana, 0, 2, 0}));
  EXPECT_EQ(media(), (Tree{{"Ana/c.jpg", "c"}, {"Ana/A.jpg", "same"}, {"Ana/a-2.jpg", "same"}}));
}

TEST_F(ExportDeduperTest, GivesANameToWhoeverHasItFirst) {
  write("Ana/a", "one");
  write(ana + "/a", "two");
  write(ana + "/a-2", "three");
  remember({{ana, "Ana"}});
  EXPECT_EQ(dedupe(true).movedUniqueCount, 2);
  EXPECT_EQ(media(), (Tree{{"Ana/a", "one"}, {"Ana/a-2", "three"}, {"Ana/a-3", "two"}}));
}

TEST_F(ExportDeduperTest, MergesAnEmptyFolderAndEmptyFiles) {
  write("Ana/a", "");
  write(ana + "/a", "");
  fs::create_directory(content / bea);
  fs::create_directory(content / "Bea");
  remember({{ana, "Ana"}, {bea, "Bea"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_THAT(summary.pairs, ElementsAre(DedupePair{"Ana", ana, ana, 1, 0, 0}, DedupePair{"Bea", bea, bea, 0, 0, 0}));
  EXPECT_EQ(summary.removedFolderCount, 2);
  EXPECT_EQ(media(), (Tree{{"Ana/a", ""}}));
  EXPECT_TRUE(fs::exists(content / "Bea"));
}

TEST_F(ExportDeduperTest, CountsNeitherTranscriptsNorAFileManagersFile) {
  write("Ana/_transcript.txt", "same");
  write("Ana/_transcript.html", "newer");
  write("Ana/_messages.csv", "same");
  write(ana + "/_transcript.txt", "same");
  write(ana + "/_transcript.html", "older");
  write(ana + "/_messages.csv", "same");
  write(ana + "/.DS_Store", "icons");
  write("Bea/b.jpg", "b");
  write(bea + "/_transcript.txt", "only one");
  remember({{ana, "Ana"}, {bea, "Bea"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_THAT(summary.pairs, ElementsAre(DedupePair{"Ana", ana, ana, 0, 0, 0}, DedupePair{"Bea", bea, bea, 0, 0, 0}));
  EXPECT_EQ(summary.deletedDuplicateCount + summary.movedUniqueCount + summary.bytesReclaimed, 0);
  EXPECT_EQ(summary.removedFolderCount, 2);
  EXPECT_EQ(media(), (Tree{{"Ana/_transcript.txt", "same"},
                           {"Ana/_transcript.html", "newer"},
                           {"Ana/_transcript-2.html", "older"},
                           {"Ana/_messages.csv", "same"},
                           {"Bea/b.jpg", "b"},
                           {"Bea/_transcript.txt", "only one"}}));
}

TEST_F(ExportDeduperTest, TakesFoldersLinksAndWorkingFilesAlong) {
  write("Ana/notes/n", "mine");
  write(ana + "/notes/n", "other");
  write(ana + "/.tidewell-partial-1-1", "half");
  fs::create_symlink("nowhere", content / ana / "link");
  ASSERT_EQ(::mkfifo((content / ana / "pipe").c_str(), 0600), 0);
  remember({{ana, "Ana"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_EQ(summary.removedFolderCount, 1);
  EXPECT_EQ(summary.movedUniqueCount, 0);
  EXPECT_EQ(media(),
            (Tree{{"Ana/notes/n", "mine"}, {"Ana/notes-2/n", "other"}, {"Ana/.tidewell-partial-1-1", "half"}}));
  EXPECT_EQ(fs::read_symlink(content / "Ana/link"), "nowhere");
  EXPECT_TRUE(fs::is_fifo(content / "Ana/pipe"));
}

TEST_F(ExportDeduperTest, LeavesAFolderThatKeepsSomething) {
  write("Ana/a", "a");
  write(ana + "/b", "b");
  const Fixture::SmallVolume volume(content / ana / "volume", 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  write(ana + "/volume/c", "c");
  remember({{ana, "Ana"}});
  const DedupeSummary summary = dedupe(true);
  EXPECT_EQ(summary.movedUniqueCount, 1);
  EXPECT_EQ(summary.removedFolderCount, 0);
  EXPECT_EQ(media(), (Tree{{"Ana/a", "a"}, {"Ana/b", "b"}, {ana + "/volume/c", "c"}}));
}

TEST_F(ExportDeduperTest, MergesThreeFoldersAsOneAfterTheOther) {
  write("Ana/a", "canonical");
  write(ana + "/a", "of the phone");
  write(ana + "/b", "same");
  write(ana + "/x", "x");
  write(anaLID + "/a", "of the LID");
  write(anaLID + "/B", "same");
  write(anaLID + "/x", "y");
  remember({{ana, "Ana"}, {anaLID, "Ana"}});
  const std::vector<DedupePair> reported = dedupe(false).pairs;
  EXPECT_THAT(reported, ElementsAre(DedupePair{"Ana", anaLID, ana, 0, 3, 0}, DedupePair{"Ana", ana, ana, 1, 2, 4}));
  const DedupeSummary summary = dedupe(true);
  EXPECT_EQ(summary.pairs, reported);
  EXPECT_EQ(summary.deletedDuplicateCount, 1);
  EXPECT_EQ(summary.movedUniqueCount, 5);
  EXPECT_EQ(media(), (Tree{{"Ana/a", "canonical"},
                           {"Ana/a-2", "of the LID"},
                           {"Ana/a-3", "of the phone"},
                           {"Ana/B", "same"},
                           {"Ana/x", "y"},
                           {"Ana/x-2", "x"}}));
  EXPECT_EQ(remembered(), (FolderAssignment{{ana, "Ana"}, {anaLID, "Ana"}}));
}

TEST_F(ExportDeduperTest, LeavesFoldersOfTwoChatsAlone) {
  write("Ana/a", "a");
  write(ana + "/a", "a");
  remember({{ana, "Ana"}, {bea, "Ana"}});
  const auto before = Fixture::treeSnapshot(destination);
  EXPECT_EQ(dedupe(true), (DedupeSummary{.dryRun = false, .skippedAmbiguousCount = 2}));
  EXPECT_EQ(Fixture::treeSnapshot(destination), before);
}

TEST_F(ExportDeduperTest, DoesNotFollowAFolderThatIsALink) {
  write("Ana/a", "a");
  fs::create_directory_symlink("Ana", content / ana);
  remember({{ana, "Ana"}});
  EXPECT_THAT(dedupe(true).pairs, IsEmpty());
  fs::create_directory_symlink("Bea", content / "B");
  write("Bea/b", "b");
  remember({{bea, "B"}});
  writeArchive({ExportTest::archiveChat(bea, "Bea")});
  EXPECT_THAT(dedupe(true).pairs, IsEmpty());
  EXPECT_EQ(media(), (Tree{{"Ana/a", "a"}, {"Bea/b", "b"}}));
  EXPECT_TRUE(fs::is_symlink(content / "B"));
}

TEST_F(ExportDeduperTest, RepairsTheManifest) {
  write("Ana/a", "a");
  write("Anna/a", "a");
  write("Bea/b", "b");
  remember({{ana, "Ana"}, {"5511900001111@S.whatsapp.net", "Anna"}, {bea, "Bea"}});
  writeArchive({ExportTest::archiveChat(ana, "Ana")});
  EXPECT_EQ(dedupe(true).removedFolderCount, 1);
  EXPECT_EQ(remembered(), (FolderAssignment{{ana, "Ana"}, {"5511900001111@S.whatsapp.net", "Ana"}, {bea, "Bea"}}));
  EXPECT_EQ(ExportTest::textOf(content / "_viewer/folders.json"),
            ExportTest::textOf(content / ".tidewell-manifest.json"));
}

TEST_F(ExportDeduperTest, ADryRunChangesNothing) {
  write("Ana/a", "a");
  write(ana + "/a", "a");
  write(ana + "/b", "b");
  write(ana + "/_transcript.txt", "t");
  remember({{ana, "Ana"}});
  writeArchive({ExportTest::archiveChat(ana, ana, {ana + "/a", ana + "/b"})});
  const auto before = Fixture::treeSnapshot(folder.path());
  const DedupeSummary dry = dedupe(false);
  EXPECT_EQ(Fixture::treeSnapshot(folder.path()), before);
  EXPECT_EQ(dry, (DedupeSummary{.pairs = {DedupePair{"Ana", ana, ana, 1, 1, 1}}}));
  EXPECT_EQ(dedupe(true).pairs, dry.pairs);
  EXPECT_NE(Fixture::treeSnapshot(folder.path()), before);
}

TEST_F(ExportDeduperTest, LosesNothingAndFindsNothingTheSecondTime) {
  const auto contents = [this] {
    std::multiset<std::string> all;
    for (const auto& [path, text] : media()) all.insert(text);
    return all;
  };
  for (const std::string& place : {std::string("Ana"), ana, anaLID, std::string("Anna")}) {
    for (const char* file : {"a", "b.jpg", "b-2.jpg", "c/deep", "_transcript.txt"})
      write(place + "/" + file, place + file);
    write(place + "/shared", "the same in all");
    write(place + "/.DS_Store", "the same in all");
  }
  write("Bea/b", "b");
  remember({{ana, "Ana"}, {anaLID, "Ana"}, {bea, "Bea"}});
  writeArchive({ExportTest::archiveChat(ana, "Anna")});
  std::multiset<std::string> expected = contents();
  expected.erase("the same in all");
  expected.insert({"the same in all", "the same in all"});  // one "shared", one ".DS_Store"
  EXPECT_EQ(dedupe(true).removedFolderCount, 3);
  EXPECT_EQ(contents(), expected);
  const auto after = Fixture::treeSnapshot(destination);
  EXPECT_EQ(dedupe(true), DedupeSummary{.dryRun = false});
  EXPECT_EQ(Fixture::treeSnapshot(destination), after);
}

TEST_F(ExportDeduperTest, WorksOnAnOlderExportWithoutAContentRoot) {
  const fs::path flat = folder / "flat";
  Fixture::writeFile(flat / "Ana/a", "a");
  Fixture::writeFile(flat / ana / "a", "a");
  FolderManifest::save(flat, {{ana, "Ana"}});
  EXPECT_EQ(ExportDeduper::run(flat, true).removedFolderCount, 1);
  EXPECT_EQ(ExportTest::filesBelow(flat / "Ana"), (Tree{{"a", "a"}}));
}

TEST_F(ExportDeduperTest, FindsTheExportBesideOtherFoldersAndFromWithin) {
  Fixture::writeFile(destination / "Holiday/a", "a");
  write("Ana/a", "a");
  write(ana + "/a", "a");
  remember({{ana, "Ana"}});
  EXPECT_EQ(ExportDeduper::run(content, false).mergedFolderCount(), 1);
  EXPECT_EQ(dedupe(true).removedFolderCount, 1);
}

TEST_F(ExportDeduperTest, TellsThatThereIsNoExport) {
  EXPECT_THAT([&] { ExportDeduper::run(folder / "missing", false); },
              Fixture::failsWith("There is no folder at “" + (folder / "missing").string() + "”."));
  Fixture::writeFile(folder / "other/Holiday/a", "a");
  for (const bool apply : {false, true}) {
    EXPECT_THAT([&] { ExportDeduper::run(folder / "other", apply); },
                Fixture::failsWith("There is no export in “" + (folder / "other").string() + "”."));
  }
}

TEST_F(ExportDeduperTest, KnowsAnExportByItsMemoryOfNames) {
  Fixture::writeFile(folder / "other/Holiday/a", "a");
  NamingMemory::save(folder / "other", {});
  EXPECT_EQ(ExportDeduper::run(folder / "other", false).mergedFolderCount(), 0);
}

// Something else writes into the folder between the planning and the merging.
TEST_F(ExportDeduperTest, LosesNothingWhenTheFolderChangesMeanwhile) {
  write("Ana/a.jpg", "aaa");
  write(ana + "/a.jpg", "aaa");
  write(ana + "/b.jpg", "bbb");
  remember({{ana, "Ana"}});
  writeArchive({ExportTest::archiveChat(ana, ana, {ana + "/a.jpg", ana + "/b.jpg"})});
  int asked = 0;
  const DedupeSummary summary = dedupe(true, [&] {
    if (++asked == 3) {  // both files are planned
      write("Ana/a.jpg", "new");
      write("Ana/b.jpg", "too");
    }
    return false;
  });
  EXPECT_EQ(summary.deletedDuplicateCount, 0);
  EXPECT_EQ(summary.movedUniqueCount, 2);
  EXPECT_EQ(media(),
            (Tree{{"Ana/a.jpg", "new"}, {"Ana/a-2.jpg", "aaa"}, {"Ana/b.jpg", "too"}, {"Ana/b-2.jpg", "bbb"}}));
  const std::string dataFile = "_viewer/data/chat-" + ExportTest::archiveChat(ana, ana).id + ".js";
  const std::string archived = ExportTest::textOf(content / dataFile);
  EXPECT_THAT(archived, testing::HasSubstr("\"Ana/a-2.jpg\""));
  EXPECT_THAT(archived, testing::HasSubstr("\"Ana/b-2.jpg\""));
}

TEST_F(ExportDeduperTest, WaitsForNoOtherExport) {
  const DestinationLock lock(destination);
  const auto isLocked = Fixture::failsWith("Another export is writing into this folder. Wait until it has finished.");
  EXPECT_THAT([&] { dedupe(true); }, isLocked);
  EXPECT_THAT([&] { ExportDeduper::run(content, true); }, isLocked);
}

}  // namespace
