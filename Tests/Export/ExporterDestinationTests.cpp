#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/Failures.h"
#include "Tests/Support/SmallVolume.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/TidewellError.h"

// Destinations that are in use, unfit or full, and exports that end early.
namespace {

namespace fs = std::filesystem;
using ExportTest::filesBelow;
using ExportTest::Scene;
using ExportTest::smallBackup;
using Fixture::SmallVolume;

const ExportOptions everything = ExportOptions::defaultOptions();

// The error that an export ends with.
std::optional<TidewellError> failureOf(const Scene& scene, const CancellationCheck& isCancelled = {}) {
  try {
    scene.run(everything, {.isCancelled = isCancelled});
  } catch (const TidewellError& error) {
    return error;
  }
  return std::nullopt;
}

// The working directory of the process, for as long as this lives.
class CurrentFolder {
 public:
  explicit CurrentFolder(const fs::path& folder) : before_(fs::current_path()) { fs::current_path(folder); }
  ~CurrentFolder() { fs::current_path(before_); }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

 private:
  fs::path before_;
};

TEST(ExporterDestination, InsideTheBackupIsRefused) {
  Scene scene;
  fs::create_directory_symlink(scene.backup, scene.folder / "link");
  const auto before = Fixture::treeSnapshot(scene.backup);
  for (const fs::path& place :
       {scene.backup, scene.backup / "new/deep", scene.folder / "link/out", scene.folder / "Desktop/../device/out"}) {
    scene.destination = place;
    EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable(place.string()));
  }
  EXPECT_EQ(Fixture::treeSnapshot(scene.backup), before);
}

TEST(ExporterDestination, InsideTheBackupIsRefusedWhenItIsGivenRelativeToIt) {
  Scene scene;
  const CurrentFolder current(scene.backup);
  const auto before = Fixture::treeSnapshot(scene.backup);
  for (const char* place : {"out", "new/deep", ".", "3d/../out"}) {
    scene.destination = place;
    EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable(place));
  }
  scene.backup = ".";
  scene.destination = "out";
  EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable("out"));
  EXPECT_EQ(Fixture::treeSnapshot(fs::current_path()), before);
}

TEST(ExporterDestination, InsideAnotherBackupIsRefused) {
  Scene scene;
  const fs::path other = scene.folder / "other device";
  Fixture::writeBackup(ExportTest::smallBackup(true), other);
  fs::create_directory_symlink(other, scene.folder / "link");
  const auto before = Fixture::treeSnapshot(other);
  for (const fs::path& place : {other, other / "new/deep", scene.folder / "link/out"}) {
    scene.destination = place;
    EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable(place.string()));
  }
  EXPECT_EQ(Fixture::treeSnapshot(other), before);
}

TEST(ExporterDestination, AboveTheBackupIsFine) {
  Scene scene;
  scene.destination = scene.folder.path();
  const auto before = Fixture::treeSnapshot(scene.backup);
  EXPECT_EQ(scene.run().copiedCount, 5);
  EXPECT_EQ(Fixture::treeSnapshot(scene.backup), before);
}

TEST(ExporterDestination, ThatIsAFileIsNotWritable) {
  const Scene scene;
  Fixture::writeFile(scene.destination, "a file");
  EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable(scene.destination.string()));
  EXPECT_EQ(ExportTest::textOf(scene.destination), "a file");
}

TEST(ExporterDestination, WithAFileInTheContentRootsPlaceIsNotWritable) {
  const Scene scene;
  Fixture::writeFile(scene.destination / "messages", "a file");
  EXPECT_EQ(failureOf(scene), TidewellError::destinationNotWritable(scene.destination.string()));
  EXPECT_EQ(filesBelow(scene.destination), (std::map<std::string, std::string>{{"messages", "a file"}}));
}

TEST(ExporterDestination, WithTooLittleSpaceIsRefusedBeforeTheFirstCopy) {
  Scene scene;
  scene.contents.whatsApp.mediaFiles[0].content = Fixture::Bytes(200'000, 'x');
  scene.write();
  const SmallVolume volume(scene.destination, 100'000);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  EXPECT_EQ(failureOf(scene), TidewellError::ioFailure("Not enough free space — choose another folder"));
  EXPECT_EQ(filesBelow(scene.destination).size(), 0U);
}

TEST(ExporterDestination, NeedsSpaceForWhatIsNewOnly) {
  Scene scene;
  scene.contents.whatsApp.mediaFiles[0].content = Fixture::Bytes(200'000, 'x');
  scene.write();
  const SmallVolume volume(scene.destination, 300'000);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  EXPECT_EQ(scene.run().copiedCount, 5);
  EXPECT_EQ(scene.run().skippedExistingCount, 5);
}

TEST(ExporterDestination, ThatFillsUpOnTheWayLeavesNoHalfFile) {
  Scene scene;
  // Five files of one byte more than a page take two pages each.
  for (auto& file : scene.contents.whatsApp.mediaFiles) file.content = Fixture::Bytes(4097, 'x');
  scene.write();
  const SmallVolume volume(scene.destination, 8 * 4096);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  EXPECT_THAT([&] { scene.run(); }, Fixture::failsWith(EarlyEnd::fullDestination));
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  for (const auto& [path, text] : filesBelow(scene.content)) {
    EXPECT_TRUE(path.ends_with(".json") || text.size() == 4097U) << path;
  }
}

struct CancellationTest : testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Backups, CancellationTest, testing::Bool(), ExportTest::encryptionName);

TEST_P(CancellationTest, AtAnyMomentLeavesWholeFilesOnlyAndIsContinued) {
  const Scene whole(smallBackup(GetParam()));
  whole.run();
  const auto mediaAlone = filesBelow(whole.destination);
  whole.run(everything);
  const auto expected = filesBelow(whole.destination);
  bool isFinished = false;
  std::size_t partialExports = 0;
  for (int calls = 0; !isFinished; ++calls) {
    ASSERT_LT(calls, 1000);
    Scene scene(smallBackup(GetParam()));
    int left = calls;
    const auto failure = failureOf(scene, [&] { return left-- <= 0; });
    isFinished = !failure;
    EXPECT_TRUE(isFinished || *failure == TidewellError::cancelled()) << failure->what();
    if (!fs::exists(scene.destination)) continue;
    EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
    std::size_t media = 0;
    for (const auto& [path, text] : filesBelow(scene.destination)) {
      EXPECT_EQ(expected.contains(path) ? expected.at(path) : "", text) << path;
      if (mediaAlone.contains(path) && !path.ends_with(".json")) ++media;
    }
    EXPECT_TRUE(media == 0 || fs::exists(scene.content / ".tidewell-manifest.json"));
    if (media > 0 && media < 5) ++partialExports;
    const ExportSummary next = scene.run(everything);
    EXPECT_EQ(next.skippedExistingCount, static_cast<std::int64_t>(media));
    EXPECT_EQ(filesBelow(scene.destination), expected);
  }
  EXPECT_GE(partialExports, 4U);
}

TEST(ExporterDestination, ThatIsTakenAwayOnTheWayEndsTheExport) {
  Scene scene;
  const auto takeAway = [&](const ExportProgress& progress) {
    const bool isCopying = progress.phase == ExportProgress::Phase::copyingMedia && progress.completed == 0;
    if (isCopying && fs::exists(scene.destination)) fs::rename(scene.destination, scene.folder / "Trash");
  };
  EXPECT_THAT([&] { scene.run(everything, {.progress = takeAway}); },
              Fixture::failsWith(TidewellError::destinationNotWritable(scene.destination.string())));
  EXPECT_FALSE(fs::exists(scene.content / "_viewer")) << "half an export would look like a whole one";
}

TEST(ExporterDestination, LosesTheWorkingFilesOfACrashAtTheNextExport) {
  const Scene scene;
  scene.run();
  Fixture::writeFile(scene.content / "Ana/.tidewell-partial-99-1", "half");
  Fixture::writeFile(scene.content / ".tidewell-partial-99-2", "half");
  EXPECT_EQ(scene.run().copiedCount, 0);
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
}

TEST(ExporterDestination, FullOfTheUsersOwnFoldersStaysAsItIs) {
  const Scene scene;
  Fixture::writeFile(scene.destination / "Taxes/2023.pdf", "tax");
  Fixture::writeFile(scene.destination / "Ana/portrait.jpg", "not an export's");
  Fixture::writeFile(scene.destination / "messages/letter.txt", "dear");
  scene.run();
  auto files = filesBelow(scene.destination);
  std::erase_if(files, [](const auto& file) { return file.first.starts_with("messages/"); });
  EXPECT_EQ(files, (std::map<std::string, std::string>{{"Taxes/2023.pdf", "tax"},
                                                       {"Ana/portrait.jpg", "not an export's"},
                                                       {"Messages-2/letter.txt", "dear"}}));
}

TEST(ExporterDestination, WithAFlatOlderExportIsContinuedInTheContentRoot) {
  const Scene scene;
  scene.run();
  for (const char* name : {"Ana", "Bea", "Us", "_viewer", ".tidewell-manifest.json", ".tidewell-names.json"}) {
    fs::rename(scene.content / name, scene.destination / name);
  }
  ExportTest::forgetLibrary(scene.destination);
  fs::remove(scene.content);
  EXPECT_EQ(scene.run().skippedExistingCount, 5);
  EXPECT_EQ(filesBelow(scene.destination).size(), 8U);
  EXPECT_EQ(filesBelow(scene.content).size(), 8U);
}

TEST(ExporterDestination, ThatIsAnExportsContentMeansThatExport) {
  for (const ExportOptions& options : {ExportTest::mediaAlone(), ExportOptions::defaultOptions()}) {
    Scene scene;
    scene.run(options);
    const fs::path whole = scene.destination;
    const auto before = filesBelow(whole);
    scene.destination = scene.content;
    const ExportSummary summary = scene.run(options);
    EXPECT_EQ(summary.copiedCount, 0);
    EXPECT_EQ(summary.destination, whole);
    EXPECT_EQ(filesBelow(whole), before);
    EXPECT_NO_THROW(Exporter().dedupe(scene.content, true));
    EXPECT_EQ(filesBelow(whole), before);
  }
}

TEST(ExporterDestination, KeepsTheUsersFilesInAChatsFolder) {
  const Scene scene;
  Fixture::writeFile(scene.content / "_viewer/x", "");
  Fixture::writeFile(scene.content / "Ana/2023-03-08_202640_aa1.jpg", "edited by the user");
  Fixture::writeFile(scene.content / "Ana/notes.txt", "notes");
  scene.run();
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202640_aa1.jpg"), "edited by the user");
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/2023-03-08_202640_aa1-2.jpg"), "a photo");
  EXPECT_EQ(ExportTest::textOf(scene.content / "Ana/notes.txt"), "notes");
  EXPECT_EQ(scene.run().copiedCount, 0);
}

}  // namespace
