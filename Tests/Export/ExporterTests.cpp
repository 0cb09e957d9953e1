#include "TidewellCore/Export/Exporter.h"
#include "TidewellCore/Library/LibraryFile.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/SampleConversations.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::firstUnixDate;
using ExportTest::Scene;
using ExportTest::smallBackup;
using Phase = ExportProgress::Phase;

// What holds of plain and of encrypted backups alike.
struct ExporterTest : testing::TestWithParam<bool> {
  Scene scene{smallBackup(GetParam())};
};
INSTANTIATE_TEST_SUITE_P(Backups, ExporterTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(ExporterTest, LeavesEveryMediaFileInItsChatsFolder) {
  const ExportSummary summary = scene.run();
  auto files = filesBelow(scene.content);
  for (const char* own : {".tidewell-manifest.json", ".tidewell-names.json", "_viewer/folders.json"}) {
    EXPECT_EQ(files.erase(own), 1U) << own;
  }
  EXPECT_EQ(files, (std::map<std::string, std::string>{{"Ana/2023-03-08_202640_aa1.jpg", "a photo"},
                                                       {"Ana/2023-03-08_202641_ab2.mp4", "a video, sixteen"},
                                                       {"Bea/2023-03-08_212640_da4.webp", "a sticker"},
                                                       {"Bea/undated_ea5.pdf", "a document that no message carries"},
                                                       {"Us/2023-03-08_202740_ca3.opus", "a voice note"}}));
  EXPECT_EQ(summary, (ExportSummary{.copiedCount = 5,
                                    .totalBytesCopied = 7 + 16 + 9 + 34 + 12,
                                    .destination = scene.destination,
                                    .chatFolderCount = 3}));
}

TEST_P(ExporterTest, DatesTheFilesLikeTheirMessages) {
  scene.run();
  EXPECT_EQ(ExportTest::modified(scene.content / "Ana/2023-03-08_202640_aa1.jpg"), firstUnixDate);
  EXPECT_EQ(ExportTest::modified(scene.content / "Us/2023-03-08_202740_ca3.opus"), firstUnixDate + 60);
}

TEST_P(ExporterTest, ASecondExportChangesNothing) {
  scene.run();
  const auto isOurs = [](const std::string& path) {
    return path.ends_with(".json") || path == "messages" || path == "messages/_viewer";
  };
  auto before = Fixture::treeSnapshot(scene.destination);
  const auto files = filesBelow(scene.destination);
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 5);
  EXPECT_EQ(summary.totalBytesCopied, 0);
  EXPECT_EQ(filesBelow(scene.destination), files);
  // The manifest is written anew, with the same bytes.
  auto after = Fixture::treeSnapshot(scene.destination);
  std::erase_if(before, [&](const auto& entry) { return isOurs(entry.first); });
  std::erase_if(after, [&](const auto& entry) { return isOurs(entry.first); });
  EXPECT_EQ(after, before);
}

TEST_P(ExporterTest, NeverChangesTheBackup) {
  const auto before = Fixture::treeSnapshot(scene.backup);
  scene.run();
  EXPECT_EQ(Fixture::treeSnapshot(scene.backup), before);
}

TEST_P(ExporterTest, LeavesNoWorkingFoldersBehind) {
  const ExportTest::PrivateTemporaryFolder temporary;
  scene.run();
  EXPECT_TRUE(temporary.isEmpty());
  EXPECT_THROW(scene.run(ExportOptions::defaultOptions(), {.isCancelled = [] { return true; }}), TidewellError);
  EXPECT_TRUE(temporary.isEmpty());
  scene.contents.whatsApp.databaseStorage["ChatStorage.sqlite"].truncatedTo = 1000;
  scene.write();
  EXPECT_THROW(scene.run(), TidewellError);
  EXPECT_TRUE(temporary.isEmpty());
}

// What stands in the temporary folder, looked at whenever a run asks whether to go on.
struct Watched {
  std::set<fs::path> files;
  std::set<mode_t> modesOfFolders;
  std::set<mode_t> modesOfFiles;
  std::size_t mostFolders = 0;
  bool isEmpty = true;  // at the last look

  void look(const fs::path& temporary) {
    std::size_t folders = 0;
    for (const auto& entry : fs::recursive_directory_iterator(temporary)) {
      struct stat status {};
      if (::lstat(entry.path().c_str(), &status) != 0) continue;
      if (!S_ISDIR(status.st_mode)) files.insert(entry.path().filename());
      (S_ISDIR(status.st_mode) ? modesOfFolders : modesOfFiles).insert(status.st_mode & 07777);
      folders += S_ISDIR(status.st_mode) ? 1 : 0;
    }
    mostFolders = std::max(mostFolders, folders);
    isEmpty = folders == 0;
  }
};

TEST_P(ExporterTest, KeepsWorkingCopiesForThisUserAloneAndNoLongerThanTheyAreRead) {
  const ExportTest::PrivateTemporaryFolder temporary;
  scene.contents.manifestJournal = Fixture::Journal::walHeader;
  scene.write();
  Watched watched;
  const mode_t former = ::umask(0);
  scene.run(ExportOptions::defaultOptions(), {.progress =
                                                  [&](const ExportProgress& progress) {
                                                    if (progress.phase == Phase::copyingMedia) {
                                                      EXPECT_TRUE(watched.isEmpty) << "all that was needed is read";
                                                    }
                                                  },
                                              .isCancelled =
                                                  [&] {
                                                    watched.look(temporary.path());
                                                    return false;
                                                  }});
  ::umask(former);
  EXPECT_THAT(watched.files, testing::IsSupersetOf({fs::path("ChatStorage.sqlite"), fs::path("ContactsV2.sqlite")}));
  EXPECT_THAT(watched.modesOfFolders, testing::ElementsAre(0700u));
  EXPECT_THAT(watched.modesOfFiles, testing::ElementsAre(0600u));
  EXPECT_EQ(watched.mostFolders, 1u);
  EXPECT_TRUE(watched.isEmpty);
}

TEST_P(ExporterTest, EveryScanAndExportSweepsWhatAKilledOneLeft) {
  const ExportTest::PrivateTemporaryFolder temporary;
  const auto leave = [&] {
    const fs::path folder = temporary.path() / "Tidewell-manifest-0C4E2C57-1B5C-4E13-8B43-3F9E7D2B6A10";
    Fixture::writeFile(folder / "Manifest.db", "secret");
    ::chmod(folder.c_str(), 0700);
  };
  leave();
  scene.run();
  EXPECT_TRUE(temporary.isEmpty());
  leave();
  Exporter().scan({.backup = scene.backup, .password = "correct horse"});
  EXPECT_TRUE(temporary.isEmpty());
  leave();
  EXPECT_ANY_THROW(Exporter().scan({.backup = scene.folder / "nowhere"}));
  EXPECT_TRUE(temporary.isEmpty());
}

TEST_P(ExporterTest, LeavesOutTheKindsThatAreNotWanted) {
  const ExportOptions options{.includedKinds = {MediaKind::photos, MediaKind::stickers}};
  const ExportSummary summary = scene.run(options);
  EXPECT_EQ(summary.copiedCount, 2);
  EXPECT_EQ(summary.skippedExistingCount + summary.failedCount, 0);
  EXPECT_EQ(summary.chatFolderCount, 2);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_202640_aa1.jpg"));
  EXPECT_FALSE(fs::exists(scene.content / "Us"));
}

TEST_P(ExporterTest, AddsOnlyWhatIsNewSinceTheLastExport) {
  scene.run({.includedKinds = {MediaKind::photos}});
  const ExportSummary summary = scene.run();
  EXPECT_EQ(summary.copiedCount, 4);
  EXPECT_EQ(summary.skippedExistingCount, 1);
}

TEST_P(ExporterTest, PassesThroughItsPhasesInOrder) {
  std::vector<ExportProgress> reports;
  scene.run(ExportOptions::defaultOptions(),
            {.progress = [&](const ExportProgress& report) { reports.push_back(report); }});
  std::vector<Phase> phases;
  for (const ExportProgress& report : reports) {
    if (phases.empty() || phases.back() != report.phase) phases.push_back(report.phase);
    EXPECT_GE(report.total, 1);
    EXPECT_LE(report.completed, report.total);
  }
  std::vector<Phase> expected{Phase::preparing, Phase::readingChats, Phase::copyingMedia, Phase::writingTranscripts,
                              Phase::finished};
  if (GetParam()) expected.insert(expected.begin() + 1, Phase::unlocking);
  EXPECT_EQ(phases, expected);
  const auto last = std::ranges::find(reports.rbegin(), reports.rend(), Phase::copyingMedia,
                                      [](const ExportProgress& report) { return report.phase; });
  ASSERT_NE(last, reports.rend());
  EXPECT_EQ(last->completed, 5);
  EXPECT_EQ(last->total, 5);
  EXPECT_EQ(last->currentFileName, "undated_ea5.pdf");
}

TEST_P(ExporterTest, ExportsAWholePhoneTwice) {
  Fixture::SampleOptions options{.messageCount = 600, .mediaCount = 60};
  if (GetParam()) options.encryption = Fixture::Encryption{};
  const Scene phone(Fixture::sampleBackup(options));
  const auto mediaCount = static_cast<std::int64_t>(phone.contents.whatsApp.mediaFiles.size());
  const ExportSummary first = phone.run();
  EXPECT_EQ(first.copiedCount, mediaCount);
  EXPECT_EQ(first.failedCount, 0);
  std::multiset<Fixture::Bytes> expected;
  for (const auto& file : phone.contents.whatsApp.mediaFiles) expected.insert(file.content);
  std::multiset<Fixture::Bytes> exported;
  for (const auto& [path, text] : filesBelow(phone.content)) {
    if (!path.ends_with(".json")) exported.insert(Fixture::bytesOf(text));
  }
  EXPECT_EQ(exported, expected);
  const ExportSummary second = phone.run();
  EXPECT_EQ(second.copiedCount, 0);
  EXPECT_EQ(second.skippedExistingCount, mediaCount);
}

TEST(Exporter, AMissingOrWrongPasswordWritesNothing) {
  const Scene scene(smallBackup(true));
  const ExportTest::PrivateTemporaryFolder temporary;
  const Exporter exporter;
  const auto failure = [&](std::optional<std::string_view> password) {
    try {
      exporter.exportBackup({.backup = scene.backup, .destination = scene.destination, .password = password});
    } catch (const TidewellError& error) {
      return error;
    }
    return TidewellError::ioFailure("none");
  };
  EXPECT_EQ(failure(std::nullopt), TidewellError::needsBackupPassword());
  EXPECT_EQ(failure(""), TidewellError::needsBackupPassword());
  EXPECT_EQ(failure("wrong"), TidewellError::wrongBackupPassword());
  EXPECT_FALSE(fs::exists(scene.destination));
  EXPECT_TRUE(temporary.isEmpty());
}

TEST(Exporter, NamesFilesInItsTimeZone) {
  const Scene scene;
  const Exporter exporter{.timeZone = TimeZone{"America/Sao_Paulo"}, .locale = Locale{"en_US"}};
  exporter.exportBackup({.backup = scene.backup, .destination = scene.destination});
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_172640_aa1.jpg"));
}

TEST(Exporter, TellsTheSpaceThatIsFree) {
  const Fixture::TemporaryDirectory folder;
  EXPECT_GT(Exporter{}.freeSpace(folder / "not/yet/made"), 0);
}

// Path, size and date of every entry; of a folder and of a file that no message dates the path alone.
std::string listing(const fs::path& root) {
  std::map<std::string, std::string> lines;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const std::string path = entry.path().lexically_relative(root).generic_string();
    if (entry.is_directory()) {
      lines[path] = path + "/";
      continue;
    }
    if (entry.path().filename() == LibraryFile::fileName) {
      lines[path] = path + "  -  -";
      continue;
    }
    const bool isDated = !path.ends_with(".json") && path.find("undated") == std::string::npos;
    const auto modified = static_cast<double>(ExportTest::modified(entry.path()));
    const std::string date = isDated ? iso8601(dateFromUnixTime(modified)) : "-";
    lines[path] = fmt::format("{}  {}  {}", path, entry.file_size(), date);
  }
  std::string text;
  for (const auto& [path, line] : lines) text += line + "\n";
  return text;
}

TEST(Exporter, LeavesTheGoldenTree) {
  const Scene scene(smallBackup(true));
  scene.run();
  const std::string text = listing(scene.destination);
  const fs::path golden = fs::path(TIDEWELL_GOLDEN_FOLDER) / "small-export.txt";
  if (std::getenv("TIDEWELL_UPDATE_GOLDEN") != nullptr) Fixture::writeFile(golden, text);
  EXPECT_EQ(text, ExportTest::textOf(golden)) << "TIDEWELL_UPDATE_GOLDEN=1 writes the listing anew";
}

}  // namespace
