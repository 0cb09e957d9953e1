#include "TidewellCore/Platform/PathText.h"

#include <gtest/gtest.h>

namespace {

TEST(PathText, LastComponentIsWhatFollowsTheLastSlash) {
  EXPECT_EQ(PathText::lastComponent("Media/x/a.jpg"), "a.jpg");
  EXPECT_EQ(PathText::lastComponent("a.jpg"), "a.jpg");
  EXPECT_EQ(PathText::lastComponent("/a.jpg"), "a.jpg");
}

TEST(PathText, SlashesAtTheEndDoNotCount) {
  EXPECT_EQ(PathText::lastComponent("Media/x//"), "x");
  EXPECT_EQ(PathText::lastComponent("///"), "");
  EXPECT_EQ(PathText::lastComponent(""), "");
}

TEST(PathText, ExtensionFollowsTheLastDotOfTheLastComponent) {
  EXPECT_EQ(PathText::extension("Media/x.y/a.tar.gz"), "gz");
  EXPECT_EQ(PathText::extension("photo.JPG"), "JPG");
  EXPECT_EQ(PathText::extension("x.y/a"), "");
}

TEST(PathText, ADotAtEitherEndBeginsNoExtension) {
  EXPECT_EQ(PathText::extension(".hidden"), "");
  EXPECT_EQ(PathText::extension("a/.hidden"), "");
  EXPECT_EQ(PathText::extension("photo."), "");
  EXPECT_EQ(PathText::extension("."), "");
  EXPECT_EQ(PathText::extension(""), "");
}

TEST(PathText, TakesAnExtensionAway) {
  EXPECT_EQ(PathText::withoutExtension("archive.tar.gz"), "archive.tar");
  EXPECT_EQ(PathText::withoutExtension(".hidden"), ".hidden");
  EXPECT_EQ(PathText::withoutExtension("photo."), "photo.");
  EXPECT_EQ(PathText::withoutExtension("photo"), "photo");
}

TEST(PathText, PathsKeepTheirBytes) {
  EXPECT_EQ(PathText::text(PathText::path("/tmp/Zoë 🎉")), "/tmp/Zoë 🎉");
  EXPECT_EQ(PathText::text(PathText::path("a\xFF")), "a\xFF");
}

}  // namespace
