#include "TidewellCore/MediaKind.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

void expectKind(MediaKind kind, const std::vector<std::string>& extensions) {
  for (const std::string& extension : extensions) {
    EXPECT_EQ(MediaKind::classify(extension), kind) << "extension \"" << extension << '"';
  }
}

TEST(MediaKind, ClassifiesEveryKnownExtension) {
  expectKind(MediaKind::photos, {"jpg", "jpeg", "png", "heic", "heif", "gif", "tif", "tiff", "bmp", "raw", "dng"});
  expectKind(MediaKind::videos, {"mp4", "mov", "m4v", "avi", "3gp", "3gpp", "mkv", "webm"});
  expectKind(MediaKind::voiceNotes, {"opus", "m4a", "aac", "amr", "caf", "ogg", "mp3", "wav"});
  expectKind(MediaKind::stickers, {"webp"});
}

TEST(MediaKind, TakesEverythingElseForADocument) {
  expectKind(MediaKind::documents, {"pdf", "docx", "vcf", "", "jpgx", "jp", ".jpg", "jpg ", "webp\xFF"});
}

TEST(MediaKind, IgnoresLetterCaseOfExtensions) {
  EXPECT_EQ(MediaKind::classify("JPG"), MediaKind::photos);
  EXPECT_EQ(MediaKind::classify("WEBP"), MediaKind::stickers);
  EXPECT_EQ(MediaKind::classify("MP3"), MediaKind::voiceNotes);
  EXPECT_EQ(MediaKind::classify("MoV"), MediaKind::videos);
}

TEST(MediaKind, RecognisesThumbnails) {
  for (const char* name : {"photo.jpg.thumb", "clip.mmsthumb", "page.favicon", "PHOTO.THUMB", "a.FavIcon", ".thumb",
                           "Media/x/photo.thumb"}) {
    EXPECT_TRUE(MediaKind::isSkippedThumbnail(name)) << name;
  }
}

TEST(MediaKind, TakesNoOtherFileForAThumbnail) {
  for (const char* name : {"thumbnail.jpg", "thumb", "photo.thumb.jpg", "photo.thumbs", "", "favicon.ico"}) {
    EXPECT_FALSE(MediaKind::isSkippedThumbnail(name)) << name;
  }
}

TEST(MediaKind, HasRawValuesAndDisplayNames) {
  std::vector<std::string_view> rawValues, displayNames;
  for (const MediaKind kind : MediaKind::allCases) {
    rawValues.push_back(kind.rawValue());
    displayNames.push_back(kind.displayName());
  }
  EXPECT_THAT(rawValues, testing::ElementsAre("photos", "videos", "voiceNotes", "stickers", "documents"));
  EXPECT_THAT(displayNames, testing::ElementsAre("Photos", "Videos", "Voice notes", "Stickers", "Documents"));
}

TEST(MediaKind, IsReadBackFromItsRawValue) {
  for (const MediaKind kind : MediaKind::allCases) EXPECT_EQ(MediaKind::fromRawValue(kind.rawValue()), kind);
}

TEST(MediaKind, IsNotReadFromADisplayNameOrOtherLetterCase) {
  for (const char* raw : {"Photos", "voicenotes", "Voice notes", "", "photo"}) {
    EXPECT_EQ(MediaKind::fromRawValue(raw), std::nullopt) << raw;
  }
}

TEST(MediaKind, SortsInTheOrderOfTheList) {
  EXPECT_LT(MediaKind(MediaKind::photos), MediaKind(MediaKind::documents));
  EXPECT_TRUE(std::ranges::is_sorted(MediaKind::allCases));
  const MediaKinds kinds{MediaKind::documents, MediaKind::photos, MediaKind::stickers};
  EXPECT_THAT(kinds, testing::ElementsAre(MediaKind::photos, MediaKind::stickers, MediaKind::documents));
}

TEST(MediaKind, SkipsThumbnailsLinkPreviewsAndMessageThumbnails) {
  EXPECT_THAT(MediaKind::skippedThumbnailExtensions, testing::UnorderedElementsAre("thumb", "favicon", "mmsthumb"));
}

}  // namespace
