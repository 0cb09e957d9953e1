#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Destination/NamingMemory.h"

// Exports into one destination from several time zones and in several languages.
namespace {

namespace fs = std::filesystem;
using ExportTest::Scene;
using testing::HasSubstr;

const Exporter berlin{.timeZone = {"Europe/Berlin"}, .locale = {"de_DE"}};
const Exporter tokyo{.timeZone = {"Asia/Tokyo"}, .locale = {"ja_JP"}};
const Exporter cairo{.timeZone = {"Africa/Cairo"}, .locale = {"ar_EG"}};

ExportSummary run(const Scene& scene, const Exporter& exporter,
                  const ExportOptions& options = ExportOptions::defaultOptions()) {
  return exporter.exportBackup({.backup = scene.backup, .destination = scene.destination, .options = options});
}

TEST(ExporterNaming, ALaterExportElsewhereCopiesNothingAgain) {
  const Scene scene;
  EXPECT_EQ(run(scene, berlin).copiedCount, 5);
  const auto before = Fixture::treeSnapshot(scene.content / "Ana");
  const auto memory = Fixture::treeSnapshot(scene.content).at(".tidewell-names.json");
  for (const Exporter& elsewhere : {tokyo, cairo}) {
    const ExportSummary summary = run(scene, elsewhere, ExportTest::mediaAlone());
    EXPECT_EQ(summary.copiedCount, 0);
    EXPECT_EQ(summary.skippedExistingCount, 5);
    EXPECT_THAT(summary.warnings, testing::IsEmpty());
  }
  EXPECT_EQ(Fixture::treeSnapshot(scene.content / "Ana"), before);
  EXPECT_EQ(Fixture::treeSnapshot(scene.content).at(".tidewell-names.json"), memory);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_212640_aa1.jpg")) << "as in Berlin";
}

TEST(ExporterNaming, NewMediaAreNamedLikeTheOldOnes) {
  Scene scene;
  run(scene, berlin);
  scene.contents.whatsApp.messages.push_back({.chat = 1, .date = ExportTest::firstDate + 7});
  scene.contents.whatsApp.mediaFiles.push_back(ExportTest::media(ExportTest::ana, "new", "jpg", "a new photo", 5));
  scene.write();
  EXPECT_EQ(run(scene, cairo).copiedCount, 1);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_212647_new.jpg"));
}

TEST(ExporterNaming, TextsAreWrittenForTheRunAndLinkTheMediaAsTheyAreNamed) {
  Scene scene;
  scene.contents.whatsApp.messages[0].text = "oi";
  scene.write();
  run(scene, berlin);
  const ExportSummary summary = run(scene, tokyo);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  const std::string text = ExportTest::textOf(scene.content / "Ana/_transcript.txt");
  EXPECT_THAT(text, HasSubstr("[2023-03-09 05:26:40] Ana: ")) << "Tokyo's time";
  EXPECT_THAT(text, HasSubstr("2023-03-08_212640_aa1.jpg")) << "Berlin's name";
  EXPECT_THAT(ExportTest::textOf(scene.content / "_viewer/data/chats.js"), HasSubstr("Asia/Tokyo"));
}

TEST(ExporterNaming, AChoiceByHandCountsAndIsRememberedFromThenOn) {
  const Scene scene;
  run(scene, berlin);
  Exporter chosen = tokyo;
  chosen.isTimeZoneChosen = true;
  const ExportSummary summary = run(scene, chosen);
  EXPECT_THAT(summary.warnings, testing::ElementsAre(HasSubstr("“Asia/Tokyo”")));
  EXPECT_EQ(summary.copiedCount, 0) << "a medium is known by its place on the phone";
  fs::remove(scene.content / "Ana/2023-03-08_212640_aa1.jpg");
  EXPECT_EQ(run(scene, chosen).copiedCount, 1);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-09_052640_aa1.jpg"));
  EXPECT_EQ(NamingMemory::load(scene.content), (MediaNaming{.timeZone = tokyo.timeZone, .locale = berlin.locale}));
  const ExportSummary later = run(scene, cairo);
  EXPECT_EQ(later.copiedCount, 0);
  EXPECT_THAT(later.warnings, testing::IsEmpty());
}

TEST(ExporterNaming, WithoutAMemoryTheRunsOwnZoneNames) {
  const Scene scene;
  run(scene, berlin);
  fs::remove(scene.content / ".tidewell-names.json");
  EXPECT_EQ(run(scene, cairo).copiedCount, 0) << "the library knows what is there";
  fs::remove(scene.content / ".tidewell-names.json");
  ExportTest::forgetLibrary(scene.destination);
  EXPECT_EQ(run(scene, tokyo).copiedCount, 4) << "all but the one without a date";
  EXPECT_EQ(NamingMemory::load(scene.content), (MediaNaming{.timeZone = tokyo.timeZone, .locale = tokyo.locale}));
}

TEST(ExporterNaming, IsRememberedBeforeTheFirstCopy) {
  const Scene scene;
  const auto stop = [&] { return fs::exists(scene.content / ".tidewell-names.json"); };
  const ExportJob job{.backup = scene.backup, .destination = scene.destination};
  EXPECT_ANY_THROW(berlin.exportBackup(job, {.isCancelled = stop}));
  EXPECT_FALSE(fs::exists(scene.content / "Ana/2023-03-08_212640_aa1.jpg"));
  EXPECT_EQ(run(scene, tokyo).copiedCount, 5);
  EXPECT_TRUE(fs::exists(scene.content / "Ana/2023-03-08_212640_aa1.jpg"));
}

TEST(ExporterNaming, TheMemoryMovesWithAFlatOlderExport) {
  const Scene scene;
  run(scene, berlin, ExportTest::mediaAlone());
  for (const char* name : {"Ana", "Bea", "Us", "_viewer", ".tidewell-manifest.json", ".tidewell-names.json"}) {
    fs::rename(scene.content / name, scene.destination / name);
  }
  ExportTest::forgetLibrary(scene.destination);
  fs::remove(scene.content);
  EXPECT_EQ(run(scene, tokyo, ExportTest::mediaAlone()).copiedCount, 0);
  EXPECT_FALSE(fs::exists(scene.destination / ".tidewell-names.json"));
}

}  // namespace
