#include "TidewellCore/FileNaming.h"

#include <gmock/gmock.h>

#include "TidewellCore/Platform/Text.h"

namespace {

using testing::ElementsAre;

const TimeZone utc{.identifier = "UTC"};
const Locale english{.identifier = "en_US"};
const std::string family = "👨‍👩‍👧‍👦";  // one character of 25 bytes: people joined by U+200D

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(FileNaming, KeyIgnoresLetterCaseAndComposition) {
  EXPECT_EQ(FileNaming::normalizedKey("ANÁ"), "aná");
  EXPECT_EQ(FileNaming::normalizedKey("ANA\u0301"), "aná");
  EXPECT_EQ(FileNaming::normalizedKey("İ"), FileNaming::normalizedKey("I\u0307"));
}

TEST(FileNaming, NamesMatchByKey) {
  EXPECT_TRUE(FileNaming::namesMatch("Ana", "ana"));
  EXPECT_TRUE(FileNaming::namesMatch("A\u0301", "Á"));
  EXPECT_TRUE(FileNaming::namesMatch("a\u0301", "Á"));
  EXPECT_TRUE(FileNaming::namesMatch("Straße", "STRASSE")) << "one folder where letter case is folded in full";
  EXPECT_TRUE(FileNaming::namesMatch("ΟΔΟΣ", "οδοσ"));
  EXPECT_FALSE(FileNaming::namesMatch("Ana", "Aná"));
  EXPECT_FALSE(FileNaming::namesMatch("Ana", "Ana "));
}

TEST(FileNaming, KeepsOnlyTheLastComponentOfAFileName) {
  EXPECT_EQ(FileNaming::sanitizeFileName("a/b:c.jpg"), "b-c.jpg");
  EXPECT_EQ(FileNaming::sanitizeFileName("/etc/passwd"), "passwd");
  EXPECT_EQ(FileNaming::sanitizeFileName("folder/"), "folder");
}

TEST(FileNaming, CallsANamelessFileFile) {
  for (const char* name : {"", "   ", "/", "\u00A0\u2003", "a/ /"}) {
    EXPECT_EQ(FileNaming::sanitizeFileName(name), "file") << '"' << name << '"';
  }
}

TEST(FileNaming, ReplacesARightToLeftOverrideByADash) {
  EXPECT_EQ(FileNaming::sanitizeFileName("photo\u202Egpj.exe"), "photo-gpj.exe");
}

TEST(FileNaming, ReplacesEveryDirectionalMark) {
  for (const char32_t mark : std::u32string(U"\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069")) {
    EXPECT_TRUE(Text::isDirectionalMark(mark));
    EXPECT_EQ(FileNaming::sanitizeFolderName("a" + Text::fromScalars({&mark, 1}) + "b"), "a-b");
  }
  EXPECT_FALSE(Text::isDirectionalMark(U'\u200D'));
  EXPECT_FALSE(Text::isDirectionalMark(U'\u2065'));
}

TEST(FileNaming, ReplacesSeparatorsAndControlCharacters) {
  EXPECT_EQ(FileNaming::sanitizeFolderName("a/b:c\\d"), "a-b-c-d");
  EXPECT_EQ(FileNaming::sanitizeFolderName("a\tb\x01"
                                           "c\x7F"
                                           "d\u0085e"),
            "a-b-c-d-e");
  EXPECT_EQ(FileNaming::sanitizeFolderName(std::string_view("a\0b", 3)), "a-b");
}

TEST(FileNaming, KeepsEverythingElse) {
  EXPECT_EQ(FileNaming::sanitizeFileName("what?*\"<>|.jpg"), "what?*\"<>|.jpg");
  EXPECT_EQ(FileNaming::sanitizeFolderName("Zoë & Şule 🎉"), "Zoë & Şule 🎉");
}

TEST(FileNaming, KeepsJoinedEmoji) {
  EXPECT_EQ(FileNaming::sanitizeFolderName(family), family);
  EXPECT_EQ(FileNaming::sanitizeFolderName("\u00AD"
                                           "soft"),
            "\u00AD"
            "soft")
      << "a format character is no control";
}

TEST(FileNaming, MakesInvalidBytesValidText) {
  EXPECT_EQ(FileNaming::sanitizeFileName("a\xFF"
                                         "b.jpg"),
            "a\uFFFD"
            "b.jpg");
}

TEST(FileNaming, TrimsBlanksFromFileNames) {
  EXPECT_EQ(FileNaming::sanitizeFileName("  a b.jpg\u00A0"), "a b.jpg");
  EXPECT_EQ(FileNaming::sanitizeFileName("..a-"), "..a-") << "dots and dashes stay in file names";
}

TEST(FileNaming, CutsAFileNameAfter200CharactersExtensionIncluded) {
  EXPECT_EQ(FileNaming::sanitizeFileName(repeated("x", 200) + ".jpg"), repeated("x", 200));
  EXPECT_EQ(FileNaming::sanitizeFileName(repeated("x", 196) + ".jpg"), repeated("x", 196) + ".jpg");
}

TEST(FileNaming, CountsUserPerceivedCharacters) {
  const std::string decomposed = repeated("e\u0301", 120);  // 120 characters, 360 bytes: over 255
  EXPECT_EQ(FileNaming::sanitizeFileName(repeated("é", 100) + ".jpg"), repeated("é", 100) + ".jpg");
  EXPECT_EQ(FileNaming::sanitizeFolderName(decomposed), repeated("e\u0301", 85));
}

TEST(FileNaming, KeepsTheExtensionWhenAFileNameIsTooManyBytes) {
  const std::string name = FileNaming::sanitizeFileName(repeated("日", 150) + ".jpeg");
  EXPECT_EQ(name, repeated("日", 83) + ".jpeg");
  EXPECT_LE(name.size(), FileNaming::maximumNameBytes);
}

TEST(FileNaming, NeverCutsThroughACharacter) {
  const std::string name = FileNaming::sanitizeFileName(repeated(family, 40) + ".jpg");
  EXPECT_EQ(name, repeated(family, 10) + ".jpg");
}

TEST(FileNaming, CallsANamelessFolderUntitled) {
  for (const char* name : {"..", "-.-", "", ".", "  ", " .- ", "///"}) {
    EXPECT_EQ(FileNaming::sanitizeFolderName(name), "Untitled") << '"' << name << '"';
  }
}

TEST(FileNaming, CallsAFolderWhoseNameNobodySeesUntitled) {
  for (const char* name : {"\u061C", "\u200B", "\uFEFF", "\u00AD", "\u2060 \u200D", "\u3164", "-\u200B-"}) {
    EXPECT_EQ(FileNaming::sanitizeFolderName(name), "Untitled") << '"' << name << '"';
  }
  EXPECT_EQ(FileNaming::sanitizeFolderName("\u200BAna"), "\u200BAna");
}

TEST(FileNaming, TrimsBlanksThenDotsAndDashesFromFolderNames) {
  EXPECT_EQ(FileNaming::sanitizeFolderName(" .Family. "), "Family");
  EXPECT_EQ(FileNaming::sanitizeFolderName("--Family--"), "Family");
  EXPECT_EQ(FileNaming::sanitizeFolderName(". Family"), " Family") << "blanks behind a dot stay";
  EXPECT_EQ(FileNaming::sanitizeFolderName("A.-B"), "A.-B");
  EXPECT_EQ(FileNaming::sanitizeFolderName("/a/b/"), "a-b") << "a folder's name is no path";
}

TEST(FileNaming, CutsAFolderNameAfter180CharactersAndTrimsItNoMore) {
  EXPECT_EQ(FileNaming::sanitizeFolderName(repeated("x", 181)), repeated("x", 180));
  EXPECT_EQ(FileNaming::sanitizeFolderName(repeated("x", 179) + " y"), repeated("x", 179) + " ");
}

TEST(FileNaming, CutsAFolderNameAt255Bytes) {
  EXPECT_EQ(FileNaming::sanitizeFolderName(repeated("日", 180)), repeated("日", 85));
  EXPECT_EQ(FileNaming::sanitizeFolderName(repeated(family, 180)), repeated(family, 10));
}

TEST(FileNaming, NamesAFolderAfterOneCharacterLongerThanAName) {
  EXPECT_EQ(FileNaming::sanitizeFolderName("Z" + repeated("\u0301", 200)), "Z" + repeated("\u0301", 127));
}

TEST(FileNaming, StampsADateInItsZone) {
  const Date date = dateFromUnixTime(1680704553);  // 2023-04-05T14:22:33Z
  EXPECT_EQ(FileNaming::stamp(date, utc, english), "2023-04-05_142233");
  EXPECT_EQ(FileNaming::stamp(date, {.identifier = "America/Sao_Paulo"}, english), "2023-04-05_112233");
  EXPECT_EQ(FileNaming::stamp(date, {.identifier = "Asia/Tokyo"}, english), "2023-04-05_232233");
}

TEST(FileNaming, StampsHoursOnATwentyFourHourClock) {
  EXPECT_EQ(FileNaming::stamp(dateFromUnixTime(0), utc, english), "1970-01-01_000000");
  EXPECT_EQ(FileNaming::stamp(dateFromUnixTime(86399.999), utc, english), "1970-01-01_235959");
}

TEST(FileNaming, StampsAnAbsentDateAsUndated) {
  EXPECT_EQ(FileNaming::stamp(std::nullopt, utc, english), "undated");
  EXPECT_EQ(FileNaming::exportFileName(std::nullopt, "a.jpg", utc, english), "undated_a.jpg");
}

TEST(FileNaming, StampsTheDistantPastAndFutureWithoutAShift) {
  EXPECT_EQ(FileNaming::stamp(FileNaming::dateFromAppleTimestamp(-63114076800), utc, english), "0001-01-01_000000");
  EXPECT_EQ(FileNaming::stamp(FileNaming::dateFromAppleTimestamp(63113904000), utc, english), "4001-01-01_000000");
}

TEST(FileNaming, PutsTheStampBeforeTheCleanedName) {
  const Date date = dateFromUnixTime(1680704553);
  EXPECT_EQ(FileNaming::exportFileName(date, "IMG-20230405-WA0007.jpg", utc, english),
            "2023-04-05_142233_IMG-20230405-WA0007.jpg");
  EXPECT_EQ(FileNaming::exportFileName(date, "Media/a:b.jpg", utc, english), "2023-04-05_142233_a-b.jpg");
  EXPECT_EQ(FileNaming::exportFileName(date, "", utc, english), "2023-04-05_142233_file");
}

TEST(FileNaming, OneFormatterServesManyFiles) {
  const DateFormatter formatter = FileNaming::stampFormatter(utc, english);
  EXPECT_EQ(FileNaming::exportFileName(dateFromUnixTime(0), "a", formatter), "1970-01-01_000000_a");
  EXPECT_EQ(FileNaming::exportFileName(dateFromUnixTime(1), "a", formatter), "1970-01-01_000001_a");
  EXPECT_EQ(FileNaming::exportFileName(std::nullopt, "a", formatter), "undated_a");
}

TEST(FileNaming, AnExportedNameFitsAFileSystemAndKeepsItsExtension) {
  const std::string name = FileNaming::exportFileName(dateFromUnixTime(0), repeated("日", 150) + ".jpeg", utc, english);
  EXPECT_EQ(name, "1970-01-01_000000_" + repeated("日", 77) + ".jpeg");
  EXPECT_LE(name.size(), FileNaming::maximumNameBytes);
}

TEST(FileNaming, RecognisesItsOwnStamps) {
  EXPECT_TRUE(FileNaming::hasExportStamp("2023-04-05_142233_a.jpg"));
  EXPECT_TRUE(FileNaming::hasExportStamp("undated_a.jpg"));
  for (const char* locale : {"en_US", "pt_BR", "ar_EG", "fa_IR", "th_TH", "mr_IN", "ja_JP"}) {
    const auto name = FileNaming::exportFileName(dateFromUnixTime(1680704553), "a.jpg", utc, {.identifier = locale});
    EXPECT_TRUE(FileNaming::hasExportStamp(name)) << locale << ": " << name;
  }
}

TEST(FileNaming, TakesNoOtherNameForAStamp) {
  for (const char* name :
       {"2023-04-05_142233", "2023-04-05_1422_a.jpg", "20230405_142233_a.jpg", "undated.jpg", "IMG-20230405-WA0007.jpg",
        "2023-04-05 142233_a.jpg", "", "x2023-04-05_142233_a.jpg", "202a-04-05_142233_a.jpg"}) {
    EXPECT_FALSE(FileNaming::hasExportStamp(name)) << name;
  }
}

TEST(FileNaming, CountsAppleTimeFrom2001) {
  EXPECT_EQ(unixTime(FileNaming::dateFromAppleTimestamp(0)), 978307200);
  EXPECT_EQ(unixTime(FileNaming::dateFromAppleTimestamp(-978307200.5)), -0.5);
}

TEST(FileNaming, NumbersAVariantBeforeTheExtension) {
  EXPECT_EQ(FileNaming::variant("photo.jpg", 3), "photo-3.jpg");
  EXPECT_EQ(FileNaming::variant("archive.tar.gz", 2), "archive.tar-2.gz");
  EXPECT_EQ(FileNaming::variant("Family", 2), "Family-2");
  EXPECT_EQ(FileNaming::variant(".hidden", 2), ".hidden-2");
  EXPECT_EQ(FileNaming::variant(".hidden.txt", 2), ".hidden-2.txt");
  EXPECT_EQ(FileNaming::variant("photo.", 2), "photo.-2");
}

TEST(FileNaming, TheFirstVariantIsTheNameItself) {
  for (const int index : {1, 0, -7}) EXPECT_EQ(FileNaming::variant("photo.jpg", index), "photo.jpg");
}

TEST(FileNaming, AVariantStillFitsAFileSystem) {
  const std::string longest = repeated("x", 251) + ".jpg";
  EXPECT_EQ(FileNaming::variant(longest, 2), repeated("x", 249) + "-2.jpg");
  EXPECT_EQ(FileNaming::variant(repeated("日", 85), 12), repeated("日", 84) + "-12");
}

TEST(FileNaming, ListsCollisionVariants) {
  EXPECT_THAT(FileNaming::collisionVariants("a.jpg", 3), ElementsAre("a.jpg", "a-2.jpg", "a-3.jpg"));
  EXPECT_THAT(FileNaming::collisionVariants("a", 1), ElementsAre("a"));
}

TEST(FileNamingDeathTest, ALimitBelowOneStopsTheProgram) {
  EXPECT_DEATH(FileNaming::collisionVariants("a", 0), "Programming fault");
}

TEST(FileNaming, FindsAnExistingNameByKey) {
  const std::vector<std::string> names{"Rui", "ANÁ", "aná"};
  EXPECT_EQ(FileNaming::existingName(names, "ana\u0301"), "ANÁ");
  EXPECT_EQ(FileNaming::existingName(names, "ana"), std::nullopt);
  EXPECT_EQ(FileNaming::existingName({}, "ana"), std::nullopt);
}

TEST(FileNaming, FindsTheChatOfAMediaPath) {
  const std::string jid = "5511900001111@s.whatsapp.net";
  EXPECT_EQ(FileNaming::chatJID("Message/Media/" + jid + "/a/b.jpg"), jid);
  EXPECT_EQ(FileNaming::chatJID("/Message//Media/" + jid), jid) << "empty pieces do not count";
}

TEST(FileNaming, FindsNoChatInOtherPaths) {
  for (const char* path : {"message/Media/x/y", "Message/media/x/y", "Media/x/y", "Message/Media", "Message/Media/", "",
                           "x/Message/Media/y", "Message/Media///"}) {
    EXPECT_EQ(FileNaming::chatJID(path), std::nullopt) << path;
  }
}

TEST(FileNaming, JoinsOnlyVisibleSingleComponentsToPaths) {
  EXPECT_TRUE(FileNaming::isSafeComponent("Ana"));
  EXPECT_TRUE(FileNaming::isSafeComponent(repeated("x", 255)));
  for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string(".hidden"),
                                  std::string("a/b"), std::string("/"), std::string("a\0b", 3), repeated("x", 256)}) {
    EXPECT_FALSE(FileNaming::isSafeComponent(name)) << name;
  }
}

}  // namespace
