#include "TidewellCore/Export/ExportDestination.h"

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

}  // namespace
