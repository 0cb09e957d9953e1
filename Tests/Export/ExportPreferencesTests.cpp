#include "TidewellCore/Export/ExportPreferences.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

class Preferences : public testing::Test {
 protected:
  void write(const std::string& content) const {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
  }

  Fixture::TemporaryDirectory folder;
  std::filesystem::path file = ExportPreferences::fileURL(folder / "Application Support");
};

const ExportPreferences everything{.lastBackupPath = "/backups/Ana’s iPhone",
                                   .lastDestinationPath = "/home/ana/Desktop",
                                   .lastBackupBookmark = Bytes{0x00, 0xff, 0x62, 0x6f, 0x6f, 0x6b},
                                   .lastDestinationBookmark = Bytes{}};

TEST_F(Preferences, StandInAFolderOfTheApplicationsName) {
  EXPECT_EQ(file, folder / "Application Support" / "Lorewick" / "preferences.json");
}

TEST_F(Preferences, AreEmptyWithoutAFile) { EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{}); }

TEST_F(Preferences, ComeBackAsTheyWereSaved) {
  everything.save(file);
  EXPECT_EQ(ExportPreferences::load(file), everything);
}

TEST_F(Preferences, LeaveOutWhatIsAbsent) {
  ExportPreferences{.lastDestinationPath = "/tmp/x"}.save(file);
  EXPECT_EQ(ExportTest::textOf(file), R"({"lastDestinationPath":"/tmp/x"})");
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{.lastDestinationPath = "/tmp/x"});
}

TEST_F(Preferences, HoldBookmarksInBase64) {
  ExportPreferences{.lastBackupBookmark = Bytes{'b', 'o', 'o', 'k'}}.save(file);
  EXPECT_EQ(ExportTest::textOf(file), R"({"lastBackupBookmark":"Ym9vaw=="})");
}

TEST_F(Preferences, TakeNullForAbsent) {
  write(R"({"lastBackupPath":null,"lastDestinationPath":"/tmp/x"})");
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{.lastDestinationPath = "/tmp/x"});
}

TEST_F(Preferences, PassOverWhatTheyDoNotKnow) {
  write(R"({"lastDestinationPath":"/tmp/x","windowWidth":640})");
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{.lastDestinationPath = "/tmp/x"});
}

TEST_F(Preferences, AreReplacedAsAWhole) {
  everything.save(file);
  ExportPreferences{.lastBackupPath = "/b"}.save(file);
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{.lastBackupPath = "/b"});
}

class ForeignPreferences : public Preferences, public testing::WithParamInterface<std::string> {};

TEST_P(ForeignPreferences, CountAsAbsentAndAreOverwritten) {
  write(GetParam());
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{});
  everything.save(file);
  EXPECT_EQ(ExportPreferences::load(file), everything);
}

INSTANTIATE_TEST_SUITE_P(Files, ForeignPreferences,
                         testing::Values("", "{", "[]", "\"text\"", std::string("\0\xff", 2),
                                         R"({"lastBackupPath":7,"lastDestinationPath":"/tmp/x"})",
                                         R"({"lastBackupBookmark":"not base64!","lastBackupPath":"/b"})"));

TEST_F(Preferences, SayWhyTheyCannotBeSaved) {
  std::ofstream(folder / "Application Support") << "a file where a folder is needed";
  EXPECT_THROW(everything.save(file), std::filesystem::filesystem_error);
  EXPECT_EQ(ExportPreferences::load(file), ExportPreferences{});
}

}  // namespace
