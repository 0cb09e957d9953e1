#include "Tidewell/Contents/FolderChooserContent.h"

#include <gtest/gtest.h>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

FolderChooserContent contentOf(const FolderBrowserState& state) {
  return FolderChooserContent::of(state, americanTexts());
}

TEST(FolderChooserContent, NamesTheFolderAndWhatIsInIt) {
  const FolderChooserContent content =
      contentOf({.listing = {.folder = "/home/ana/Chats", .names = {"2025", "caf\xE9"}}, .current = 1});
  EXPECT_EQ(content.name, "Chats");
  EXPECT_EQ(content.path, "/home/ana/Chats");
  EXPECT_EQ(content.folders, (QStringList{"2025", QStringLiteral("caf\uFFFD")}));
  EXPECT_EQ(content.current, 1);
  EXPECT_EQ(content.note, "");
  EXPECT_TRUE(content.canGoUp);
}

TEST(FolderChooserContent, CallsTheRootTheComputer) {
  const FolderChooserContent content = contentOf({.listing = {.folder = "/", .names = {"home"}}});
  EXPECT_EQ(content.name, "Computer");
  EXPECT_FALSE(content.canGoUp);
}

TEST(FolderChooserContent, SaysWhyThereAreNoFoldersToSee) {
  EXPECT_EQ(contentOf({}).note, "");
  EXPECT_EQ(contentOf({}).name, "");
  EXPECT_EQ(contentOf({.listing = {.folder = "/a"}}).note, "There are no folders in here.");
  EXPECT_EQ(contentOf({.listing = {.folder = "/a", .isReadable = false}}).note, "This folder cannot be read.");
}

TEST(FolderChooserContent, MarksThePlaceThatIsShown) {
  using Kind = FolderPlace::Kind;
  const FolderChooserContent content =
      contentOf({.listing = {.folder = "/media/stick"},
                 .places = {{.kind = Kind::home, .folder = "/home/ana"},
                            {.kind = Kind::desktop, .folder = "/home/ana/Desktop"},
                            {.kind = Kind::documents, .folder = "/home/ana/Documents"},
                            {.kind = Kind::computer, .folder = "/"},
                            {.kind = Kind::drive, .folder = "/media/stick", .label = "Stick"}}});
  EXPECT_EQ(content.places, (QStringList{"Home", "Desktop", "Documents", "Computer", "Stick"}));
  EXPECT_EQ(content.placeSymbols.size(), content.places.size());
  EXPECT_EQ(content.place, 4);
  EXPECT_EQ(contentOf({.listing = {.folder = "/x"}, .places = {{.folder = "/"}}}).place, -1);
}

TEST(FolderChooserContent, TellsWhatIsWrongWithWhatWasTyped) {
  EXPECT_EQ(contentOf({.pathFault = FolderFault::noSuchFolder}).pathFault, "There is no such folder.");
  EXPECT_EQ(contentOf({.nameFault = FolderFault::nameTaken}).nameFault, "There is something with this name already.");
  EXPECT_EQ(contentOf({.nameFault = FolderFault::noName}).nameFault, "Type another name.");
  EXPECT_EQ(contentOf({.nameFault = FolderFault::nameOfSeveralFolders}).nameFault, "A name cannot contain “/”.");
  EXPECT_EQ(contentOf({.nameFault = FolderFault::notPermitted}).nameFault, "You cannot make folders here.");
  EXPECT_EQ(contentOf({.nameFault = FolderFault::notCreated}).nameFault, "The folder could not be made.");
  EXPECT_EQ(contentOf({}).pathFault + contentOf({}).nameFault, "");
}

}  // namespace
