#include "TidewellCore/ChatData/Scope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/TidewellError.h"

namespace {

using ExportTest::ana;
using ExportTest::bea;
using ExportTest::canonical;
using ExportTest::group;
using testing::ElementsAre;
using testing::IsEmpty;

Day day(const char* text) { return *dayFromISO8601(text); }

// Message 1 of Ana is of 2023-03-08T20:26:40Z, and the others follow within the hour; Bea's is of 21:26:40.
struct ScopeTest : testing::Test {
  ScopeTest() : contents(ExportTest::smallBackup()) {
    contents.whatsApp.messages.push_back({.chat = 1, .text = "undated"});
  }

  const BackupSource& source() {
    if (!source_) {
      Fixture::writeBackup(contents, folder / "device");
      source_.emplace(BackupSource::load(OpenedBackup::open(folder / "device", std::nullopt), {}));
    }
    return *source_;
  }
  Scope scope(const Selection& selection, const char* zone = "UTC") {
    return Scope::of(selection, source(), TimeZone{zone});
  }
  std::vector<std::int64_t> messages(const Selection& selection, const std::string& jid, const char* zone = "UTC") {
    std::vector<std::int64_t> keys;
    for (const MessageRecord& message : scope(selection, zone).messages(source().snapshot, canonical(jid))) {
      keys.push_back(message.pk);
    }
    return keys;
  }
  std::vector<std::string> chats(const Selection& selection) {
    std::vector<std::string> jids;
    const Scope scope = this->scope(selection);
    for (const std::string& jid : {ana, group, bea}) {
      if (scope.has(canonical(jid))) jids.push_back(jid);
    }
    return jids;
  }

  Fixture::TemporaryDirectory folder;
  Fixture::BackupContents contents;
  std::optional<BackupSource> source_;
};

TEST_F(ScopeTest, NothingSaidIsEverything) {
  EXPECT_TRUE(scope({}).isEverything());
  EXPECT_THAT(messages({}, ana), ElementsAre(5, 1, 2));
}

TEST_F(ScopeTest, ChatsAreChosenAndLeftOut) {
  EXPECT_THAT(chats({.chats = {"Ana", "us"}}), ElementsAre(ana, group));
  EXPECT_THAT(chats({.notChats = {"Ana"}}), ElementsAre(group, bea));
  EXPECT_THAT(chats({.chats = {"Ana", "us"}, .notChats = {"US", ana}}), IsEmpty());
  EXPECT_THROW(scope({.notChats = {"Zacharias"}}), TidewellError);
  EXPECT_FALSE(scope({.chats = {"Ana"}}).isEverything());
  EXPECT_TRUE(scope({.chats = {"Ana"}}).hasAllTime());
  EXPECT_THAT(messages({.chats = {"Ana"}}, ana), ElementsAre(5, 1, 2));
  EXPECT_THAT(messages({.chats = {"Ana"}}, bea), IsEmpty());
}

TEST_F(ScopeTest, DaysAreTakenFromTheirFirstMomentToTheirLast) {
  EXPECT_THAT(messages({.since = day("2023-03-08"), .until = day("2023-03-08")}, ana), ElementsAre(1, 2));
  EXPECT_THAT(messages({.since = day("2023-03-09")}, ana), IsEmpty());
  EXPECT_THAT(messages({.until = day("2023-03-07")}, ana), IsEmpty());
  EXPECT_FALSE(scope({.until = day("2023-03-07")}).isEverything());
}

TEST_F(ScopeTest, DaysAreThoseOfTheZone) {
  const Selection ninth{.since = day("2023-03-09")};
  const char* zone = "Pacific/Kiritimati";  // fourteen hours ahead
  EXPECT_THAT(messages(ninth, bea, zone), ElementsAre(4));
  EXPECT_THAT(messages(ninth, bea), IsEmpty());
  contents.whatsApp.messages[0].date = ExportTest::firstDate + 3 * 3600 + 1999.999;  // 23:59:59.999
  contents.whatsApp.messages[1].date = ExportTest::firstDate + 3 * 3600 + 2000;      // midnight
  source_.reset();
  EXPECT_THAT(messages({.until = day("2023-03-08")}, ana), ElementsAre(1));
  EXPECT_THAT(messages(ninth, ana), ElementsAre(2));
}

TEST_F(ScopeTest, AMediumFollowsItsMessage) {
  const Scope days = scope({.since = day("2023-03-08")});
  EXPECT_TRUE(days.has(canonical(ana), dateFromAppleTime(ExportTest::firstDate)));
  EXPECT_FALSE(days.has(canonical(ana), std::nullopt));
  EXPECT_TRUE(scope({.chats = {"Ana"}}).has(canonical(ana), std::nullopt));
  EXPECT_FALSE(scope({.chats = {"Ana"}}).has(canonical(bea), std::nullopt));
}

TEST_F(ScopeTest, AScanCountsWhatIsInIt) {
  const ScanResult ofAna = ScanSummary::summarize(source(), scope({.chats = {"Ana"}}), Locale{});
  EXPECT_EQ(ofAna.mediaFileCount, 2);
  EXPECT_EQ(ofAna.totalBytes, 23);
  ASSERT_EQ(ofAna.chats.size(), 1U);
  EXPECT_EQ(ofAna.chats[0].messageCount, 3);
  EXPECT_EQ(ofAna.chats[0].stats({MediaKind::photos, MediaKind::documents}), (MediaTypeStats{1, 7}));
  const ScanResult ofDay = ScanSummary::summarize(source(), scope({.since = day("2023-03-08")}), Locale{});
  EXPECT_EQ(ofDay.mediaFileCount, 4) << "the document has no message";
  EXPECT_EQ(ofDay.count({MediaKind::documents}), 0);
  EXPECT_EQ(ofDay.chatCount, 3);
  EXPECT_EQ(ofDay.chats[0].messageCount, 2);
  EXPECT_EQ(ScanSummary::summarize(source(), scope({.until = day("2023-03-07")}), Locale{}).chatCount, 0);
}

}  // namespace
