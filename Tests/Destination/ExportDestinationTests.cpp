#include "TidewellCore/Destination/ExportDestination.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

class DefaultDestination : public testing::Test {
 protected:
  DefaultDestination() { fs::create_directories(home / "Desktop"); }

  Fixture::TemporaryDirectory folder;
  fs::path home = folder / "ana";
};

TEST_F(DefaultDestination, IsTheLastOne) {
  fs::create_directories(folder / "last");
  EXPECT_EQ(ExportDestination::resolvedDefault((folder / "last").string(), home), folder / "last");
}

TEST_F(DefaultDestination, IsTheDesktopWithoutALastOne) {
  EXPECT_EQ(ExportDestination::resolvedDefault(std::nullopt, home), home / "Desktop");
}

TEST_F(DefaultDestination, IsTheDesktopWhenTheLastOneIsGoneOrNoFolder) {
  EXPECT_EQ(ExportDestination::resolvedDefault((folder / "gone").string(), home), home / "Desktop");
  std::ofstream(folder / "file") << "no folder";
  EXPECT_EQ(ExportDestination::resolvedDefault((folder / "file").string(), home), home / "Desktop");
  EXPECT_EQ(ExportDestination::resolvedDefault("", home), home / "Desktop");
}

TEST_F(DefaultDestination, IsTheHomeFolderWithoutADesktop) {
  fs::remove(home / "Desktop");
  EXPECT_EQ(ExportDestination::resolvedDefault(std::nullopt, home), home);
  std::ofstream(home / "Desktop") << "no folder";
  EXPECT_EQ(ExportDestination::resolvedDefault(std::nullopt, home), home);
}

TEST_F(DefaultDestination, IsAbsentWithoutAHomeFolder) {
  EXPECT_EQ(ExportDestination::resolvedDefault(std::nullopt, folder / "nobody"), std::nullopt);
}

class MeantDestination : public testing::Test {
 protected:
  // With a page beside the content root, or with the memory of its names in it.
  void makeExport(bool withPage) const {
    fs::create_directories(content / "_viewer");
    fs::create_directories(content / "Ana");
    std::ofstream(withPage ? destination / "index.html" : content / ".tidewell-names.json") << "{}";
  }

  Fixture::TemporaryDirectory folder;
  fs::path destination = folder / "export";
  fs::path content = destination / "messages";
};

TEST_F(MeantDestination, OfAnExportsContentIsTheFolderAboveIt) {
  for (const bool withPage : {true, false}) {
    fs::remove_all(destination);
    makeExport(withPage);
    EXPECT_EQ(ExportDestination::meant(content), destination);
    EXPECT_EQ(ExportDestination::meant(destination / "messages/"), destination);
    EXPECT_EQ(ExportDestination::meant(content / "Ana/.."), destination);
    fs::create_directory_symlink(content, destination / "shortcut");
    EXPECT_EQ(ExportDestination::meant(destination / "shortcut"), destination);
  }
}

TEST_F(MeantDestination, OfAnyOtherFolderIsThatFolder) {
  makeExport(true);
  for (const fs::path& other : {destination, content / "Ana", content / "_viewer", folder / "nowhere"}) {
    EXPECT_EQ(ExportDestination::meant(other), other);
  }
}

TEST_F(MeantDestination, AFolderOfThatNameWithoutTheMarkIsMeantItself) {
  fs::create_directories(content);
  std::ofstream(destination / "index.html") << "somebody's page";
  EXPECT_EQ(ExportDestination::meant(content), content);
}

TEST_F(MeantDestination, AnOlderExportInAFolderOfThatNameIsMeantItself) {
  fs::create_directories(content / "_viewer");
  EXPECT_EQ(ExportDestination::meant(content), content) << "without a page";
  std::ofstream(content / "index.html") << "its own page";
  std::ofstream(destination / "index.html") << "somebody else's page";
  EXPECT_EQ(ExportDestination::meant(content), content);
}

}  // namespace
