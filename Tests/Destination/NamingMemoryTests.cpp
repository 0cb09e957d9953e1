#include "TidewellCore/Destination/NamingMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/FileNaming.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const MediaNaming berlin{.timeZone = {"Europe/Berlin"}, .locale = {"de_DE"}};
const MediaNaming cairo{.timeZone = {"Africa/Cairo"}, .locale = {"ar_EG"}};

TEST(NamingMemory, LoadsWhatItSaved) {
  const Fixture::TemporaryDirectory root;
  EXPECT_EQ(NamingMemory::load(root.path()), std::nullopt);
  NamingMemory::save(root.path(), berlin);
  EXPECT_EQ(NamingMemory::load(root.path()), berlin);
  EXPECT_EQ(ExportTest::textOf(root / ".tidewell-names.json"),
            "{\n  \"locale\": \"de_DE\",\n  \"timeZone\": \"Europe/Berlin\",\n  \"version\": 1\n}\n");
  NamingMemory::save(root.path(), cairo);
  EXPECT_EQ(NamingMemory::load(root.path()), cairo);
}

TEST(NamingMemory, AFileThatSaysTheSameKeepsItsDate) {
  const Fixture::TemporaryDirectory root;
  const fs::path file = root / ".tidewell-names.json";
  const auto old = fs::file_time_type::clock::now() - std::chrono::hours(24);
  NamingMemory::save(root.path(), berlin);
  fs::last_write_time(file, old);
  NamingMemory::save(root.path(), berlin);
  EXPECT_EQ(fs::last_write_time(file), old);
  NamingMemory::save(root.path(), cairo);
  EXPECT_NE(fs::last_write_time(file), old);
}

TEST(NamingMemory, WhatCannotBeBelievedIsAsGoodAsAbsent) {
  const Fixture::TemporaryDirectory root;
  for (const char* text :
       {"", "{", "[]", "null", R"({"locale": "de_DE", "timeZone": "Europe/Berlin"})",
        R"({"locale": "de_DE", "timeZone": "Europe/Berlin", "version": 2})",
        R"({"locale": "de_DE", "timeZone": "Europe/Berlin", "version": "1"})", R"({"locale": "de_DE", "version": 1})",
        R"({"timeZone": "Europe/Berlin", "version": 1})", R"({"locale": "xx_YY", "timeZone": "UTC", "version": 1})",
        R"({"locale": "de_DE", "timeZone": "Mars/Olympus", "version": 1})",
        R"({"locale": 7, "timeZone": ["UTC"], "version": 1})"}) {
    Fixture::writeFile(root / ".tidewell-names.json", text);
    EXPECT_EQ(NamingMemory::load(root.path()), std::nullopt) << text;
  }
}

TEST(NamingMemory, ReadsNeitherALinkNorAFolder) {
  const Fixture::TemporaryDirectory root;
  NamingMemory::save(root.path(), berlin);
  fs::rename(root / ".tidewell-names.json", root / "elsewhere");
  fs::create_symlink(root / "elsewhere", root / ".tidewell-names.json");
  EXPECT_EQ(NamingMemory::load(root.path()), std::nullopt);
  fs::remove(root / ".tidewell-names.json");
  fs::create_directory(root / ".tidewell-names.json");
  EXPECT_EQ(NamingMemory::load(root.path()), std::nullopt);
  EXPECT_THROW(NamingMemory::save(root.path(), berlin), fs::filesystem_error);
}

TEST(NamingMemory, WhatIsRememberedCountsBeforeTheSystem) {
  EXPECT_EQ(NamingMemory::decide({.naming = cairo}, std::nullopt), NamingMemory::Decision{.naming = cairo});
  EXPECT_EQ(NamingMemory::decide({.naming = cairo}, berlin), NamingMemory::Decision{.naming = berlin});
}

TEST(NamingMemory, WhatIsChosenCountsBeforeAllAndIsToldOf) {
  const auto zone = NamingMemory::decide({.naming = cairo, .isTimeZoneChosen = true}, berlin);
  EXPECT_EQ(zone.naming, (MediaNaming{.timeZone = cairo.timeZone, .locale = berlin.locale}));
  EXPECT_THAT(zone.warnings, testing::ElementsAre(testing::AllOf(HasSubstr("time zone “Africa/Cairo”"),
                                                                 HasSubstr("used “Europe/Berlin”"))));
  const auto locale = NamingMemory::decide({.naming = cairo, .isLocaleChosen = true}, berlin);
  EXPECT_EQ(locale.naming, (MediaNaming{.timeZone = berlin.timeZone, .locale = cairo.locale}));
  EXPECT_THAT(locale.warnings,
              testing::ElementsAre(testing::AllOf(HasSubstr("locale “ar_EG”"), HasSubstr("used “de_DE”"))));
  const NamingMemory::Wish both{.naming = cairo, .isTimeZoneChosen = true, .isLocaleChosen = true};
  EXPECT_EQ(NamingMemory::decide(both, berlin).warnings.size(), 2U);
}

TEST(NamingMemory, WhatIsRememberedCanBeReadBackWhateverTheLanguage) {
  const Fixture::TemporaryDirectory folder;
  for (const char* language : {"oc_FR", "nds_DE", "la_VA", "garbage"}) {
    const MediaNaming system{.timeZone = {"Asia/Tokyo"}, .locale = {language}};
    const MediaNaming decided = NamingMemory::decide({.naming = system}, std::nullopt).naming;
    NamingMemory::save(folder.path(), decided);
    EXPECT_EQ(NamingMemory::load(folder.path()), decided) << language;
    const Date date = dateFromUnixTime(1'700'000'000);
    EXPECT_EQ(FileNaming::stamp(date, decided.timeZone, decided.locale),
              FileNaming::stamp(date, system.timeZone, system.locale))
        << language;
  }
}

TEST(NamingMemory, AChoiceThatChangesNothingNeedsNoWord) {
  const NamingMemory::Wish both{.naming = cairo, .isTimeZoneChosen = true, .isLocaleChosen = true};
  EXPECT_EQ(NamingMemory::decide(both, cairo), NamingMemory::Decision{.naming = cairo});
  EXPECT_EQ(NamingMemory::decide(both, std::nullopt), NamingMemory::Decision{.naming = cairo});
}

}  // namespace
