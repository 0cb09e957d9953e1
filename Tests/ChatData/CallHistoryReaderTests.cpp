#include "TidewellCore/ChatData/CallHistoryReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadSQL.h"
#include "Tests/Platform/SQLiteScene.h"
#include "Tests/Support/CallSchema.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<PastCall> readCalls(const std::string& sql) { return readSQL(sql, CallHistoryReader::load); }

std::vector<PastCall> calls(const std::string& rows) { return readCalls(callHistorySchema + rows); }

PastCall only(const std::string& rows) {
  const std::vector<PastCall> found = calls(rows);
  return found.size() == 1 ? found[0] : PastCall{.id = "not one call"};
}

constexpr const char* incoming =
    "INSERT INTO ZWAAGGREGATECALLEVENT (Z_PK, ZINCOMING, ZMISSED, ZVIDEO) VALUES (3, 1, 0, 0);";
constexpr const char* outgoing =
    "INSERT INTO ZWAAGGREGATECALLEVENT (Z_PK, ZINCOMING, ZMISSED, ZVIDEO) VALUES (3, 0, 0, 1);";
constexpr const char* missed =
    "INSERT INTO ZWAAGGREGATECALLEVENT (Z_PK, ZINCOMING, ZMISSED, ZVIDEO) VALUES (3, 1, 1, 0);";

// An event of aggregate 3.
std::string event(const std::string& seconds, int outcome) {
  return "INSERT INTO ZWACDCALLEVENT (Z_PK, Z1CALLEVENTS, ZDATE, ZDURATION, ZOUTCOME, ZCALLIDSTRING) VALUES (7, 3, "
         "700000000.5, " +
         seconds + ", " + std::to_string(outcome) + ", 'call:A1');";
}

std::string participant(const std::string& jid) {
  return "INSERT INTO ZWACDCALLEVENTPARTICIPANT (Z1PARTICIPANTS, ZJIDSTRING) VALUES (7, '" + jid + "');";
}

TEST(CallHistoryReader, ReadsACallWithItsAggregateAndParticipants) {
  EXPECT_EQ(only(outgoing + event("95.4", 0) + participant("15550000002@s.whatsapp.net")),
            (PastCall{.pk = 7,
                      .id = "call:A1",
                      .date = dateFromAppleTime(700000000.5),
                      .call = {.isVideo = true, .seconds = 95},
                      .participantJIDs = {"15550000002@s.whatsapp.net"}}));
  EXPECT_EQ(only(incoming + event("7", 0)).isIncoming, true);
  EXPECT_EQ(only(incoming + event("7", 0)).call, (CallRecord{.isVideo = false, .seconds = 7}));
}

TEST(CallHistoryReader, OnlyTheOwnerMissesCalls) {
  EXPECT_EQ(only(missed + event("0", 0)).call, (CallRecord{.isVideo = false, .isMissed = true}));
  EXPECT_EQ(only(incoming + event("0", 1)).call, (CallRecord{.isVideo = false, .isMissed = true}));
  EXPECT_EQ(only(incoming + event("0", 4)).call, (CallRecord{.isVideo = false})) << "rejected";
  EXPECT_EQ(only(outgoing + event("0", 1)).call, (CallRecord{.isVideo = true})) << "by somebody else";
  EXPECT_EQ(only(missed + event("5", 0)).call, (CallRecord{.isVideo = false, .seconds = 5})) << "but spoken";
}

TEST(CallHistoryReader, AGroupIsThereInAColumnOrAmongTheParticipants) {
  const std::string columns =
      "ALTER TABLE ZWACDCALLEVENT ADD COLUMN ZGROUPJIDSTRING; ALTER TABLE ZWACDCALLEVENT ADD COLUMN "
      "ZGROUPCALLCREATORUSERJIDSTRING;";
  const PastCall call =
      only(columns + incoming + event("5", 0) + participant("1@lid") +
           "UPDATE ZWACDCALLEVENT SET ZGROUPJIDSTRING = '1-2@g.us', ZGROUPCALLCREATORUSERJIDSTRING = '5@lid';");
  EXPECT_EQ(call.groupJID, "1-2@g.us");
  EXPECT_EQ(call.creatorJID, "5@lid");
  EXPECT_TRUE(call.call.isGroup);
  const PastCall other = only(incoming + event("5", 0) + participant("1@lid") + participant("1-2@g.us"));
  EXPECT_EQ(other.groupJID, "1-2@g.us");
  EXPECT_THAT(other.participantJIDs, ElementsAre("1@lid"));
  EXPECT_FALSE(only(incoming + event("5", 0) + participant("1@lid") + participant("2@lid")).call.isGroup)
      << "these may be one person";
}

TEST(CallHistoryReader, CallsStandInTheOrderOfTheirTimes) {
  const auto at = [](int pk, const std::string& date) {
    return "INSERT INTO ZWACDCALLEVENT (Z_PK, ZDATE, ZCALLIDSTRING) VALUES (" + std::to_string(pk) + ", " + date +
           ", '" + std::to_string(pk) + "');";
  };
  std::vector<std::string> ids;
  for (const PastCall& call :
       calls(at(5, "300") + at(1, "'400.5'") + at(2, "300") + at(3, "NULL") + at(4, "'soon'") + at(6, "-5"))) {
    ids.push_back(call.id);
  }
  EXPECT_THAT(ids, ElementsAre("3", "4", "6", "2", "5", "1"));
}

TEST(CallHistoryReader, WhatIsNotThereIsAbsent) {
  EXPECT_THAT(calls(""), IsEmpty());
  EXPECT_THAT(readCalls("CREATE TABLE other (a);"), IsEmpty());
  EXPECT_EQ(only(event("5", 0)),
            (PastCall{.pk = 7, .id = "call:A1", .date = dateFromAppleTime(700000000.5), .call = {.seconds = 5}}))
      << "without its aggregate";
  EXPECT_EQ(only("DROP TABLE ZWACDCALLEVENTPARTICIPANT;" + (incoming + event("5", 0))).call.seconds, 5);
  EXPECT_EQ(only("DROP TABLE ZWAAGGREGATECALLEVENT;" + event("5", 0)).call.isVideo, std::nullopt);
  const std::string rename = "ALTER TABLE ZWACDCALLEVENT RENAME COLUMN ";
  EXPECT_EQ(only(incoming + event("5", 0) + rename + "ZDURATION TO A;" + rename + "ZCALLIDSTRING TO B;" + rename +
                 "ZDATE TO C;"),
            (PastCall{.pk = 7, .isIncoming = true, .call = {.isVideo = false}}));
}

TEST(CallHistoryReader, StrangeValuesAreAbsent) {
  EXPECT_EQ(only(incoming + event("-5", 0)).call.seconds, std::nullopt);
  EXPECT_EQ(only(incoming + event("9e300", 0)).call.seconds, std::nullopt);
  EXPECT_EQ(only(incoming + event("9e999", 0)).call.seconds, std::nullopt) << "infinity";
  EXPECT_EQ(only(incoming + event("'long'", 0)).call.seconds, std::nullopt);
  EXPECT_EQ(only(incoming + event("x'05'", 0)).call.seconds, std::nullopt);
  EXPECT_THAT(only(incoming + event("5", 0) + participant("../x") + participant("")).participantJIDs, IsEmpty());
  EXPECT_THAT(calls("INSERT INTO ZWACDCALLEVENT (Z_PK, Z1CALLEVENTS) VALUES (3, 3); INSERT INTO ZWACDCALLEVENT (Z_PK, "
                    "Z1CALLEVENTS) VALUES (4, 'x');"),
              ElementsAre(PastCall{.pk = 3}, PastCall{.pk = 4}));
}

TEST(CallHistoryReader, ACallHasAThousandParticipantsAtMost) {
  EXPECT_EQ(only(incoming + event("5", 0) +
                 "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1500) INSERT INTO "
                 "ZWACDCALLEVENTPARTICIPANT (Z1PARTICIPANTS, ZJIDSTRING) SELECT 7, i || '@lid' FROM n;")
                .participantJIDs.size(),
            1'000U);
}

TEST(CallHistoryReader, AParticipantWhoIsNobodyIsNoticed) {
  const TemporaryDirectory folder;
  const auto isWhole = [&](const std::string& jid) {
    const auto file = folder / ("of " + std::to_string(jid.size()));
    execute(file, std::string(callHistorySchema) + incoming + event("5", 0) + participant(jid));
    std::vector<PastCall> calls;
    return CallHistoryReader::load(file, calls);
  };
  EXPECT_TRUE(isWhole("15550000001@s.whatsapp.net"));
  EXPECT_TRUE(isWhole(""));
  EXPECT_FALSE(isWhole("1555000\xB0"));
}

TEST(CallHistoryReader, AFileThatIsNoDatabaseIsReported) {
  const TemporaryDirectory folder;
  writeFile(folder / "db", std::string(4096, 'x'));
  std::vector<PastCall> calls;
  EXPECT_THAT([&] { CallHistoryReader::load(folder / "db", calls); },
              failsWith(TidewellError::invalidDatabase("file is not a database")));
}

const PastCall call{.date = dateFromUnixTime(1'000), .isIncoming = true, .call = {.seconds = 100}};

TEST(PastCall, IsKnownByDirectionAndTime) {
  const auto at = [](double time) { return CallMessage{.date = dateFromUnixTime(time)}; };
  EXPECT_TRUE(isSameCall(call, at(1'160)));
  EXPECT_TRUE(isSameCall(call, at(840)));
  EXPECT_FALSE(isSameCall(call, at(1'161)));
  EXPECT_FALSE(isSameCall(call, at(839)));
  CallMessage longer = at(1'260);
  longer.seconds = 200;
  EXPECT_TRUE(isSameCall(call, longer));
  CallMessage own = at(1'000);
  own.isFromMe = true;
  EXPECT_FALSE(isSameCall(call, own));
  EXPECT_FALSE(isSameCall({}, {})) << "at no time";
}

}  // namespace
}  // namespace Fixture
