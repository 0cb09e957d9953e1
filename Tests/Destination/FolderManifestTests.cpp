#include "TidewellCore/Destination/FolderManifest.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::TemporaryDirectory;
using Fixture::writeFile;

std::string manifestOf(const std::string& folder) {
  return R"({"folders": {"1@x": ")" + folder + R"("}, "version": 1})";
}

TEST(FolderManifest, IsWrittenPrettyPrintedWithSortedKeys) {
  const TemporaryDirectory root;
  FolderManifest::save(root.path(), {{"b@g.us", "Família"}, {"a@lid", "\"Ana\""}});
  const std::string text = ExportTest::textOf(root / ".tidewell-manifest.json");
  EXPECT_LT(text.find("\"folders\""), text.find("\"version\""));
  EXPECT_LT(text.find("a@lid"), text.find("b@g.us"));
  EXPECT_NE(text.find("\n"), text.rfind("\n")) << "one line is not pretty-printed";
  EXPECT_EQ(ExportTest::filesBelow(root.path()).size(), 1U) << "no copy without a _viewer, no working file";
}

TEST(FolderManifest, LoadsWhatItSaved) {
  const TemporaryDirectory root;
  const FolderAssignment folders{{"a@lid", "\"Ana\" 👩‍👧"}, {"b@g.us", "Família"}};
  FolderManifest::save(root.path(), folders);
  EXPECT_EQ(FolderManifest::load(root.path()), folders);
}

TEST(FolderManifest, ReplacesTheOlderOne) {
  const TemporaryDirectory root;
  FolderManifest::save(root.path(), {{"1@x", "Old"}, {"2@x", "Gone"}});
  FolderManifest::save(root.path(), {{"1@x", "New"}});
  EXPECT_EQ(FolderManifest::load(root.path()), (FolderAssignment{{"1@x", "New"}}));
}

TEST(FolderManifest, LeavesTheSameBytesForTheViewer) {
  const TemporaryDirectory root;
  fs::create_directory(root / "_viewer");
  FolderManifest::save(root.path(), {{"1@x", "Ana"}});
  EXPECT_EQ(ExportTest::textOf(root / "_viewer/folders.json"), ExportTest::textOf(root / ".tidewell-manifest.json"));
}

TEST(FolderManifest, KeepsTheDatesOfFilesThatSayTheSame) {
  const TemporaryDirectory root;
  fs::create_directory(root / "_viewer");
  const fs::file_time_type old = fs::file_time_type::clock::now() - std::chrono::hours(48);
  FolderManifest::save(root.path(), {{"1@x", "Ana"}});
  for (const char* file : {".tidewell-manifest.json", "_viewer/folders.json"}) fs::last_write_time(root / file, old);
  FolderManifest::save(root.path(), {{"1@x", "Ana"}});
  for (const char* file : {".tidewell-manifest.json", "_viewer/folders.json"}) {
    EXPECT_EQ(fs::last_write_time(root / file), old) << file;
  }
  FolderManifest::save(root.path(), {{"1@x", "Eva"}});
  EXPECT_GT(fs::last_write_time(root / "_viewer/folders.json"), old);
}

TEST(FolderManifest, SavingTellsWhenItCannotWrite) {
  const TemporaryDirectory root;
  fs::create_directory(root / ".tidewell-manifest.json");
  EXPECT_THROW(FolderManifest::save(root.path(), {{"1@x", "Ana"}}), fs::filesystem_error);
  EXPECT_THROW(FolderManifest::save(root / "missing", {{"1@x", "Ana"}}), fs::filesystem_error);
  EXPECT_FALSE(ExportTest::holdsPartials(root.path()));
}

TEST(FolderManifest, IsLookedForInTheDestinationThenInItsContentRoot) {
  const TemporaryDirectory root;
  const auto found = [&] { return FolderManifest::load(root.path()); };
  EXPECT_EQ(found(), FolderAssignment{});
  writeFile(root / "messages/_viewer/folders.json", manifestOf("4"));
  EXPECT_EQ(found().at("1@x"), "4");
  writeFile(root / "messages/.tidewell-manifest.json", manifestOf("3"));
  EXPECT_EQ(found().at("1@x"), "3");
  writeFile(root / "_viewer/folders.json", manifestOf("2"));
  EXPECT_EQ(found().at("1@x"), "2");
  writeFile(root / ".tidewell-manifest.json", manifestOf("1"));
  EXPECT_EQ(found().at("1@x"), "1");
}

TEST(FolderManifest, IsLookedForAboveAContentRootToo) {
  const TemporaryDirectory root;
  fs::create_directories(root / "Messages");
  fs::create_directories(root / "other");
  writeFile(root / "_viewer/folders.json", manifestOf("above"));
  EXPECT_EQ(FolderManifest::load(root / "Messages"), (FolderAssignment{{"1@x", "above"}}));
  EXPECT_EQ(FolderManifest::load(root / "Messages/"), (FolderAssignment{{"1@x", "above"}}));
  EXPECT_EQ(FolderManifest::load(root / "other"), FolderAssignment{});
}

TEST(FolderManifest, ReadsTheOlderFormThatIsTheMapItself) {
  const TemporaryDirectory root;
  writeFile(root / ".tidewell-manifest.json", R"({"1@x": "Ana", "2@x": "Bea"})");
  EXPECT_EQ(FolderManifest::load(root.path()), (FolderAssignment{{"1@x", "Ana"}, {"2@x", "Bea"}}));
}

TEST(FolderManifest, PassesOverWhatIsNoManifest) {
  const TemporaryDirectory root;
  writeFile(root / "messages/.tidewell-manifest.json", manifestOf("next"));
  for (const char* text : {"", "{", "[]", "null", R"({"folders": []})", R"({"folders": [], "version": 1})",
                           R"({"version": 1})", R"({"folders": {"1@x": 3}})", R"({"1@x": {"a": "b"}})"}) {
    writeFile(root / ".tidewell-manifest.json", text);
    EXPECT_EQ(FolderManifest::load(root.path()), (FolderAssignment{{"1@x", "next"}})) << text;
  }
}

TEST(FolderManifest, DoesNotReadALinkOrAFolder) {
  const TemporaryDirectory root;
  writeFile(root / "elsewhere.json", manifestOf("elsewhere"));
  fs::create_symlink(root / "elsewhere.json", root / ".tidewell-manifest.json");
  fs::create_directories(root / "_viewer/folders.json");
  EXPECT_EQ(FolderManifest::load(root.path()), FolderAssignment{});
}

TEST(FolderManifest, LeavesOutEmptyEntries) {
  const TemporaryDirectory root;
  writeFile(root / ".tidewell-manifest.json", R"({"folders": {"": "Ana", "2@x": "", "3@x": "Cy"}})");
  EXPECT_EQ(FolderManifest::load(root.path()), (FolderAssignment{{"3@x", "Cy"}}));
}

TEST(FolderManifest, LeavesOutNamesThatWouldLeadOutOfTheContentRoot) {
  const TemporaryDirectory root;
  writeFile(root / ".tidewell-manifest.json",
            R"({"folders": {"1@x": "..", "2@x": "../up", "3@x": "/etc", "4@x": ".", "5@x": "a/b",
                            "6@x": "nul\u0000", "7@x": ".hidden", "8@x": "Ana"}})");
  EXPECT_EQ(FolderManifest::load(root.path()), (FolderAssignment{{"8@x", "Ana"}}));
}

}  // namespace
