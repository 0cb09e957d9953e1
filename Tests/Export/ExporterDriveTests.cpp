#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "Tests/Drives/Drive.h"
#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Destination/NameProbe.h"
#include "TidewellCore/PortableNames.h"

// Exports onto drives that take other names than the ones that people give.
namespace {

namespace fs = std::filesystem;
using ExportTest::ana;
using ExportTest::bea;
using ExportTest::Scene;
using Fixture::Drive;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

Fixture::BackupContents awkwardBackup() {
  Fixture::BackupContents contents = ExportTest::smallBackup();
  Fixture::WhatsAppContents& app = contents.whatsApp;
  app.chats[0].name = "Pizza?";
  app.chats[1].name = "Pizza*";
  app.chats[2].name = "CON";
  app.chats.push_back({.jid = "5511900003333@s.whatsapp.net", .name = std::string(177, 'x') + "a.b"});
  app.messages.push_back({.chat = 4, .date = ExportTest::firstDate + 9, .text = "hello"});
  // One folder to drives that fold letter case in full.
  app.chats.push_back({.jid = "5511900004444@s.whatsapp.net", .name = "Straße"});
  app.chats.push_back({.jid = "5511900005555@s.whatsapp.net", .name = "STRASSE"});
  app.messages.push_back({.chat = 5, .date = ExportTest::firstDate + 9, .text = "from the street"});
  app.messages.push_back({.chat = 6, .date = ExportTest::firstDate + 9, .text = "FROM THE STREET"});
  const auto add = [&](const std::string& name, const std::string& content) {
    app.messages.push_back({.chat = 1, .date = ExportTest::firstDate + 20});
    app.mediaFiles.push_back({.localPath = "Media/" + ana + "/a/b/" + name,
                              .content = Fixture::bytesOf(content),
                              .message = static_cast<std::int64_t>(app.messages.size())});
  };
  add("what?.jpg", "1st");
  add("what*.jpg", "2nd");
  add("what-.jpg", "3rd, longer");
  add("end.", "a file with a dot at its end");
  return contents;
}

struct Kind {
  const char* name;
  std::function<std::unique_ptr<Drive>(const fs::path& files, const fs::path& place)> mount;
};
void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.name; }

Kind withOptions(const char* name, const Fixture::DriveOptions& options) {
  return {name, [options](const fs::path& files, const fs::path& place) {
            return std::make_unique<Drive>(files, place, options);
          }};
}
Kind inImage(const char* name, Drive (*make)(const fs::path&, const fs::path&)) {
  return {name, [make](const fs::path& files, const fs::path& place) {
            return std::unique_ptr<Drive>(new Drive(make(files, place)));
          }};
}

class ExporterDrive : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    drive = GetParam().mount(scene.folder / "files", scene.folder / "drive");
    if (!drive->isMounted()) GTEST_SKIP() << drive->whyNot();
    scene.destination = scene.folder / "drive/Export";
    scene.content = scene.destination / "messages";
  }

  Scene scene{awkwardBackup()};
  std::unique_ptr<Drive> drive;
};

TEST_P(ExporterDrive, EverythingIsExportedUnderNamesThatTheDriveTakes) {
  const ExportSummary summary = scene.run(ExportOptions::defaultOptions());
  EXPECT_EQ(summary.failedCount, 0);
  EXPECT_EQ(summary.copiedCount, 9);
  EXPECT_EQ(summary.unresolvedArchiveLinkCount, 0);
  EXPECT_TRUE(fs::exists(scene.destination / "index.html"));
  EXPECT_FALSE(ExportTest::holdsPartials(scene.destination));
  for (const auto& [path, content] : ExportTest::filesBelow(scene.content)) {
    for (const fs::path& name : fs::path(path)) EXPECT_EQ(PortableNames::portable(name.string()), name.string());
  }
  const auto folders = ExportTest::foldersBelow(scene.content);
  for (const char* folder : {"Pizza-", "Pizza--2", "CON-", "Straße", "STRASSE-2"})
    EXPECT_THAT(folders, Contains(folder));
  const fs::path chat = fs::exists(scene.content / "Pizza-/2023-03-08_202700_end") ? "Pizza-" : "Pizza--2";
  EXPECT_EQ(ExportTest::textOf(scene.content / chat / "2023-03-08_202700_what-.jpg"), "1st");
  EXPECT_EQ(ExportTest::textOf(scene.content / chat / "2023-03-08_202700_what--2.jpg"), "2nd");
  EXPECT_EQ(ExportTest::textOf(scene.content / chat / "2023-03-08_202700_what--3.jpg"), "3rd, longer");
  const std::string page = ExportTest::textOf(scene.content / chat / "_transcript.html");
  EXPECT_THAT(page, HasSubstr("2023-03-08_202700_what--3.jpg"));
}

TEST_P(ExporterDrive, ASecondExportCopiesNothing) {
  scene.run(ExportOptions::defaultOptions());
  const auto before = ExportTest::filesBelow(scene.destination);
  const ExportSummary summary = scene.run(ExportOptions::defaultOptions());
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.skippedExistingCount, 9);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
}

TEST_P(ExporterDrive, AnExportThatMovesToAnotherDriveAndBackIsRecognised) {
  scene.run(ExportOptions::defaultOptions());
  const fs::path onDrive = scene.destination;
  scene.destination = scene.folder / "elsewhere";
  fs::copy(onDrive, scene.destination, fs::copy_options::recursive);
  const auto before = ExportTest::filesBelow(scene.destination);
  EXPECT_EQ(scene.run(ExportOptions::defaultOptions()).copiedCount, 0);
  EXPECT_EQ(ExportTest::filesBelow(scene.destination), before);
  // A new file gets the name that this drive takes, and has to find its way back.
  scene.contents.whatsApp.messages.push_back({.chat = 1, .date = ExportTest::firstDate + 30});
  const auto last = static_cast<std::int64_t>(scene.contents.whatsApp.messages.size());
  scene.contents.whatsApp.mediaFiles.push_back(
      {.localPath = "Media/" + ana + "/a/b/new?.jpg", .content = Fixture::bytesOf("new"), .message = last});
  scene.write();
  EXPECT_EQ(scene.run(ExportOptions::defaultOptions()).copiedCount, 1);
  EXPECT_TRUE(fs::exists(scene.destination / "messages/Pizza-/2023-03-08_202710_new?.jpg") ||
              fs::exists(scene.destination / "messages/Pizza--2/2023-03-08_202710_new?.jpg"));
  scene.destination = onDrive;
  EXPECT_EQ(scene.run(ExportOptions::defaultOptions()).copiedCount, 1);
}

TEST_P(ExporterDrive, TheCleanUpMergesAFolderThatAnEarlierExportLeft) {
  scene.run(ExportOptions::defaultOptions());
  const fs::path former = scene.content / ana;
  fs::create_directory(former);
  Fixture::writeFile(former / "2023-03-08_202700_what-.jpg", "1st");
  Fixture::writeFile(former / "another.jpg", "another");
  const Exporter exporter;
  const DedupeSummary summary = exporter.dedupe(scene.destination, true);
  EXPECT_EQ(summary.movedUniqueCount, 1);
  EXPECT_FALSE(fs::exists(former));
}

std::string kindName(const testing::TestParamInfo<Kind>& kind) { return kind.param.name; }

const Kind fat = withOptions("FAT", {});
const Kind fatWithoutDots = withOptions("FATThatLeavesDotsOut", {.stripsDots = true});
const Kind poor = withOptions("FATWithoutFreeRenaming", {.lacksFreeRenaming = true});
INSTANTIATE_TEST_SUITE_P(Kinds, ExporterDrive,
                         testing::Values(fat, fatWithoutDots, poor, inImage("NTFS", Drive::ntfs),
                                         inImage("exFAT", Drive::exfat), inImage("vFAT", Drive::vfat)),
                         kindName);

// What a drive takes for one name, and we for two.
class ExporterDriveThatFoldsMore : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    drive.emplace(scene.folder / "files", scene.folder / "drive",
                  Fixture::DriveOptions{.ignoresWidth = true, .lacksFreeRenaming = GetParam()});
    if (!drive->isMounted()) GTEST_SKIP() << drive->whyNot();
    scene.destination = scene.folder / "drive/Export";
    scene.content = scene.destination / "messages";
  }

  Scene scene;
  std::optional<Drive> drive;
};

TEST_P(ExporterDriveThatFoldsMore, NoFileReplacesAnotherAndLinksLeadToTheRightOne) {
  Fixture::WhatsAppContents& app = scene.contents.whatsApp;
  const auto first = static_cast<std::int64_t>(app.messages.size()) + 1;
  app.messages.resize(app.messages.size() + 2, {.chat = 1, .date = ExportTest::firstDate + 20});
  app.mediaFiles = {ExportTest::media(ana, "W", "jpg", "the narrow one", first),
                    ExportTest::media(ana, "\uFF37", "jpg", "the wide one", first + 1)};
  scene.write();
  const ExportSummary summary = scene.run(ExportOptions::defaultOptions());
  EXPECT_EQ(summary.copiedCount, 2);
  EXPECT_EQ(summary.failedCount, 0);
  const auto tree = ExportTest::filesBelow(scene.content / "Ana");
  std::map<std::string, std::string> names;  // by content
  for (const auto& [name, content] : tree) names.emplace(content, name);
  ASSERT_TRUE(names.contains("the narrow one"));
  ASSERT_TRUE(names.contains("the wide one"));
  EXPECT_THAT(names["the wide one"], HasSubstr("\uFF37-2.jpg"));
  EXPECT_THAT(tree.at("_transcript.txt"), HasSubstr(names["the narrow one"]));
  EXPECT_THAT(tree.at("_transcript.txt"), HasSubstr(names["the wide one"]));
  EXPECT_EQ(scene.run(ExportOptions::defaultOptions()).copiedCount, 0);
  EXPECT_EQ(ExportTest::filesBelow(scene.content / "Ana"), tree);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutFreeRenaming, ExporterDriveThatFoldsMore, testing::Bool());

TEST(NameProbe, AFolderOfThisMachineTakesThePlainNames) {
  const Fixture::TemporaryDirectory folder;
  const auto date = fs::last_write_time(folder.path());
  EXPECT_EQ(NameProbe::formFor(folder.path()), NameForm::plain);
  EXPECT_EQ(fs::last_write_time(folder.path()), date);
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(NameProbe, ADriveThatCannotBeWrittenIsNoReasonForOtherNames) {
  EXPECT_THROW(NameProbe::formFor("/proc/self"), fs::filesystem_error);
}

TEST(ExporterNamesAsTheyAre, StayWhereTheyAreTaken) {
  const Scene scene{awkwardBackup()};
  EXPECT_EQ(scene.run().copiedCount, 9);
  EXPECT_TRUE(fs::exists(scene.content / "Pizza?/2023-03-08_202700_what?.jpg"));
  EXPECT_TRUE(fs::exists(scene.content / "Pizza?/2023-03-08_202700_end."));
  EXPECT_TRUE(fs::exists(scene.content / "Pizza*"));
  EXPECT_TRUE(fs::exists(scene.content / "CON"));
  EXPECT_EQ(scene.run().copiedCount, 0);
}

}  // namespace
