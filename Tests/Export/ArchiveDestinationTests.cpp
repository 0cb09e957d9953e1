#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/SmallVolume.h"
#include "TidewellCore/Archive/ChatArchiveAssets.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/TidewellError.h"

// What an archive meets in its destination, and what it leaves there.
namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::everything;
using ExportTest::filesBelow;
using ExportTest::firstDate;
using ExportTest::linkOfFirst;
using ExportTest::listedNames;
using ExportTest::messagesOf;
using ExportTest::namesIn;
using ExportTest::picture;
using ExportTest::Scene;
using ExportTest::talkingBackup;
using ExportTest::textIn;
using ExportTest::textOf;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Phase = ExportProgress::Phase;

TEST(ArchiveDestination, CancellingAtAnyCheckLeavesAWholeArchive) {
  const Scene expected(talkingBackup());
  expected.run(everything);
  Fixture::BackupContents grown = talkingBackup();
  grown.whatsApp.messages.push_back({.chat = 1, .date = firstDate + 90, .text = "something new"});
  grown.whatsApp.messages.push_back({.chat = 3, .date = firstDate + 95, .text = "here too"});
  const Scene whole(grown);
  whole.run(everything);
  const auto final = filesBelow(whole.destination);
  bool isFinished = false;
  std::size_t stops = 0;
  for (int calls = 0; !isFinished; ++calls) {
    ASSERT_LT(calls, 1000);
    Scene scene(grown);
    fs::copy(expected.destination, scene.destination, fs::copy_options::recursive);
    int left = calls;
    try {
      scene.run(everything, {.isCancelled = [&] { return left-- <= 0; }});
      isFinished = true;
    } catch (const TidewellError& error) {
      EXPECT_EQ(error, TidewellError::cancelled());
      ++stops;
    }
    EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
    const auto chats = ExportTest::listedChats(scene.content);
    EXPECT_EQ(chats.size(), 3U);
    EXPECT_TRUE(fs::exists(scene.destination / "index.html"));
    for (const auto& chat : chats) EXPECT_GE(messagesOf(scene.content, textIn(chat, "name")).size(), 1U);
    scene.run(everything);
    ExportTest::expectWholeArchive(scene.destination);
    EXPECT_EQ(filesBelow(scene.destination), final);
  }
  EXPECT_GE(stops, 3U + 3U) << "a check for each picture and each chat";
}

TEST(ArchiveDestination, TellsHowManyChatsAreWritten) {
  Scene scene(talkingBackup());
  scene.contents.whatsApp.chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = "Caio"});
  scene.write();
  std::vector<ExportProgress> reports;
  bool hadPictures = false;
  scene.run(everything, {.progress = [&](const ExportProgress& report) {
              if (report.phase != Phase::writingTranscripts) return;
              if (reports.empty()) hadPictures = fs::exists(scene.content / "avatars");
              reports.push_back(report);
            }});
  ASSERT_GE(reports.size(), 2U);
  EXPECT_EQ(reports.front(), (ExportProgress{.phase = Phase::writingTranscripts, .completed = 0, .total = 4}));
  EXPECT_EQ(reports.back().completed, 4);
  EXPECT_EQ(reports.back().total, 4);
  EXPECT_FALSE(hadPictures) << "pictures belong to this phase";
}

TEST(ArchiveDestination, AFullVolumeLeavesTheOldArchiveWhole) {
  Scene scene(talkingBackup());
  const Fixture::SmallVolume volume(scene.destination, 1 << 20);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  scene.run(everything);
  const auto before = filesBelow(scene.destination);
  scene.contents.whatsApp.messages[0].text = std::string(1 << 20, 'x');
  scene.write();
  EXPECT_THAT([&] { scene.run(everything); }, Fixture::failsWith(EarlyEnd::fullDestination));
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  ExportTest::expectWholeArchive(scene.destination);
  scene.contents = talkingBackup();
  scene.write();
  scene.run(everything);
  EXPECT_EQ(filesBelow(scene.destination), before);
}

TEST(ArchiveDestination, KeepsAPageOfTheUsers) {
  const Scene scene(talkingBackup());
  Fixture::writeFile(scene.destination / "index.html", "my own page");
  scene.run(everything);
  scene.run(everything);
  EXPECT_THAT(namesIn(scene.destination), ElementsAre("index-2.html", "index.html", "messages"));
  EXPECT_EQ(textOf(scene.destination / "index-2.html"), "my own page");
  ExportTest::expectWholeArchive(scene.destination);
}

TEST(ArchiveDestination, ContinuesAnOlderFlatExport) {
  const Scene scene(talkingBackup());
  scene.run(everything);
  const auto expected = filesBelow(scene.destination);
  for (const std::string& name : namesIn(scene.content)) fs::rename(scene.content / name, scene.destination / name);
  fs::remove(scene.content);
  Fixture::writeFile(scene.destination / "index.html",
                     ChatArchiveAssets::indexHTML(ChatArchiveStrings::english(), "_viewer/"));
  ExportTest::expectWholeArchive(scene.destination);

  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  ExportTest::expectWholeArchive(scene.destination);
  auto after = filesBelow(scene.destination);
  // The older place of the pictures is nobody's chat and stays.
  std::erase_if(after, [](const auto& file) { return file.first.starts_with("avatars/"); });
  EXPECT_EQ(after, expected);
}

TEST(ArchiveDestination, ALinkInATranscriptsPlaceIsReplacedAndItsTargetStays) {
  const Scene scene(talkingBackup());
  Fixture::writeFile(scene.folder / "mine", "mine");
  scene.run(everything);
  fs::remove(scene.content / "Ana/_transcript.txt");
  fs::create_symlink(scene.folder / "mine", scene.content / "Ana/_transcript.txt");
  scene.run(everything);
  EXPECT_EQ(textOf(scene.folder / "mine"), "mine");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(scene.content / "Ana/_transcript.txt")));
}

TEST(ArchiveDestination, RemovesTheWorkingFilesOfACrash) {
  const Scene scene(talkingBackup());
  scene.run(everything);
  for (const char* folder : {"_viewer/data", "avatars", "_viewer", "Ana"}) {
    Fixture::writeFile(scene.content / folder / ".tidewell-partial-9-9", "half");
  }
  scene.run(everything);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
}

TEST(ArchiveDestination, BothAppsOfABackupAreInOneArchive) {
  Scene scene(talkingBackup());
  scene.contents.businessApp =
      Fixture::WhatsAppContents{.domain = std::string(Fixture::businessDomain),
                                .chats = {{.jid = bea, .name = "Bea's bakery"}},
                                .messages = {{.chat = 1, .date = firstDate, .text = "business"}},
                                .mediaFiles = {ExportTest::media(bea, "fb7", "jpg", "a cake", 1),
                                               ExportTest::media(ana, "aa1", "jpg", "of the same name")}};
  scene.write();
  const ExportSummary summary = scene.run(everything);
  EXPECT_EQ(summary.copiedCount, 7);
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_THAT(listedNames(scene.content), UnorderedElementsAre("Ana", "Us", "Bea"));
  EXPECT_EQ(textOf(scene.content / linkOfFirst(scene, "Ana")), "a photo");
  ExportTest::expectWholeArchive(scene.destination);
}

// Path and size of every entry, with the dates of media that messages date. The viewer's own files and
// those that carry its texts are without their size.
std::string listing(const fs::path& root) {
  std::map<std::string, std::string> lines;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string path = entry.path().lexically_relative(root).generic_string();
    const std::string name = entry.path().filename();
    if (entry.is_directory()) {
      lines[path] = path + "/\n";
      continue;
    }
    const bool isViewers =
        name == LibraryFile::fileName || name.starts_with("app.") || name == "index.html" || name == "chats.js";
    const bool isDated = FileNaming::hasExportStamp(name) && !name.starts_with("undated");
    const auto modified = static_cast<double>(ExportTest::modified(entry.path()));
    lines[path] = fmt::format("{}  {}  {}\n", path, isViewers ? "-" : std::to_string(entry.file_size()),
                              isDated ? iso8601(dateFromUnixTime(modified)) : "-");
  }
  std::string text;
  for (const auto& [path, line] : lines) text += line;
  return text;
}

TEST(ArchiveDestination, LeavesTheGoldenTree) {
  const Scene scene(talkingBackup(true));
  scene.run(everything);
  const std::string text = listing(scene.destination);
  const fs::path golden = fs::path(TIDEWELL_GOLDEN_FOLDER) / "archive-export.txt";
  if (std::getenv("TIDEWELL_UPDATE_GOLDEN") != nullptr) Fixture::writeFile(golden, text);
  EXPECT_EQ(text, textOf(golden)) << "TIDEWELL_UPDATE_GOLDEN=1 writes the listing anew";
}

}  // namespace
