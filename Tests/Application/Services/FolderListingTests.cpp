#include "Tidewell/Services/FolderListing.h"

#include <gmock/gmock.h>

#include <fstream>

#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Unprivileged.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderListingTest : public testing::Test {
 protected:
  void make(std::initializer_list<const char*> names) {
    for (const char* name : names) fs::create_directories(folder / name);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const fs::path& name : Folders::listing(folder.path()).names) all.push_back(name.string());
    return all;
  }

  Fixture::TemporaryDirectory folder;
};

TEST_F(FolderListingTest, HoldsFoldersOnlyAndNoHiddenOnes) {
  make({"Chats", ".hidden"});
  Fixture::writeFile(folder / "note.txt", "x");
  fs::create_directory_symlink(folder / "Chats", folder / "Linked");
  fs::create_symlink(folder / "nowhere", folder / "Broken");
  EXPECT_THAT(names(), ElementsAre("Chats", "Linked"));
}

TEST_F(FolderListingTest, SortsAsPeopleDo) {
  make({"Trip 10", "trip 2", "Apples", "bears", "Ávila", "Zoo"});
  EXPECT_THAT(names(), ElementsAre("Apples", "Ávila", "bears", "trip 2", "Trip 10", "Zoo"));
}

TEST_F(FolderListingTest, KeepsNamesThatAreNoText) {
  make({"caf\xE9", "caf\xE8"});
  EXPECT_THAT(names(), testing::UnorderedElementsAre("caf\xE9", "caf\xE8"));
}

TEST_F(FolderListingTest, IsReadableWhenItIsEmpty) {
  EXPECT_EQ(Folders::listing(folder.path()), (FolderListing{.folder = folder.path(), .isReadable = true}));
}

TEST_F(FolderListingTest, TellsOfAFolderThatCannotBeRead) {
  make({"locked/within"});
  fs::permissions(folder / "locked", fs::perms::owner_exec);
  fs::permissions(folder.path(), fs::perms::others_exec, fs::perm_options::add);
  EXPECT_EQ(Fixture::asUnprivilegedUser([&] {
              const FolderListing listing = Folders::listing(folder / "locked");
              return listing.isReadable || !listing.names.empty() ? 1 : 0;
            }),
            0);
  fs::permissions(folder / "locked", fs::perms::owner_all);
  EXPECT_FALSE(Folders::listing(folder / "nowhere").isReadable);
}

TEST_F(FolderListingTest, FindsTheNearestFolderThatExists) {
  make({"a/b"});
  Fixture::writeFile(folder / "a/file", "x");
  EXPECT_EQ(Folders::nearest(folder / "a/b"), folder / "a/b");
  EXPECT_EQ(Folders::nearest(folder / "a/b/"), folder / "a/b");
  EXPECT_EQ(Folders::nearest(folder / "a/b/c/d"), folder / "a/b");
  EXPECT_EQ(Folders::nearest(folder / "a/file"), folder / "a");
  EXPECT_EQ(Folders::nearest("/nowhere/at/all"), "/");
  EXPECT_EQ(Folders::nearest("/"), "/");
}

TEST_F(FolderListingTest, ReadsPathsAsPeopleTypeThem) {
  const auto typed = [](const char* text) { return Folders::typed(text, "/shown/here", "/home/ana"); };
  EXPECT_EQ(typed("/media/stick"), "/media/stick");
  EXPECT_EQ(typed("/media/stick/"), "/media/stick");
  EXPECT_EQ(typed("~"), "/home/ana");
  EXPECT_EQ(typed("~/Chats"), "/home/ana/Chats");
  EXPECT_EQ(typed("~ana"), "/shown/here/~ana");
  EXPECT_EQ(typed("inside"), "/shown/here/inside");
  EXPECT_EQ(typed(".."), "/shown");
  EXPECT_EQ(typed("/"), "/");
}

TEST_F(FolderListingTest, MakesFolders) {
  EXPECT_EQ(Folders::create(folder.path(), "Chats 2026"), std::nullopt);
  EXPECT_TRUE(fs::is_directory(folder / "Chats 2026"));
}

TEST_F(FolderListingTest, SaysWhyAFolderWasNotMade) {
  make({"taken"});
  Fixture::writeFile(folder / "file", "x");
  const auto fault = [&](const std::string& name) { return Folders::create(folder.path(), name); };
  EXPECT_EQ(fault("taken"), FolderFault::nameTaken);
  EXPECT_EQ(fault("file"), FolderFault::nameTaken);
  EXPECT_EQ(fault(""), FolderFault::noName);
  EXPECT_EQ(fault(" "), FolderFault::noName) << "nobody could see it";
  EXPECT_EQ(fault("."), FolderFault::noName);
  EXPECT_EQ(fault(".."), FolderFault::noName);
  EXPECT_EQ(fault("a/b"), FolderFault::nameOfSeveralFolders);
  EXPECT_EQ(fault(std::string(300, 'x')), FolderFault::notCreated);
  EXPECT_EQ(Folders::create(folder / "nowhere", "x"), FolderFault::notCreated);
  EXPECT_EQ(Fixture::asUnprivilegedUser([&] { return fault("new") == FolderFault::notPermitted ? 0 : 1; }), 0);
  EXPECT_THAT(Folders::listing(folder.path()).names, ElementsAre("taken"));
}

}  // namespace
