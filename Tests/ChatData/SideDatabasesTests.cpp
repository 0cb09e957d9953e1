#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadSQL.h"
#include "Tests/ChatData/SnapshotLoaderScene.h"
#include "Tests/Support/CallSchema.h"
#include "Tests/Support/ChatDatabase.h"

// What is said of the databases of calls and of anonymous identities when they are not as every phone has them.
namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* callHistory = "CallHistory.sqlite";
constexpr const char* identities = "LID.sqlite";

struct Side {
  const char* name = "";
  const char* schema = "";
  const char* warning = "";
};
constexpr std::array sides{
    Side{callHistory, callHistorySchema, "Some calls may be missing: WhatsApp’s list of calls is damaged."},
    Side{identities, linkedIdentitySchema, "Some names may be missing: WhatsApp’s list of anonymous numbers"}};

Bytes database(const std::string& sql) {
  DatabaseWriter writer(Journal::rollback);
  writer.execute(sql);
  return writer.finish().main;
}

class SideDatabases : public SnapshotLoaderTest {
 protected:
  std::vector<std::string> warningsOf(const char* name, Bytes content, StorageOptions storage = {}) {
    contents_.otherFiles = {{std::string(consumerDomain), name, std::move(content), std::move(storage)}};
    return load().warnings;
  }
};

INSTANTIATE_TEST_SUITE_P(PlainAndEncrypted, SideDatabases, testing::Bool());

TEST_P(SideDatabases, HealthyOnesAreNoWarning) {
  for (const Side& side : sides) EXPECT_THAT(warningsOf(side.name, database(side.schema)), IsEmpty()) << side.name;
  for (const char* table : {"ZWAPHONENUMBERLIDPAIR", "ZWAZACCOUNT"}) {
    const std::string other = std::string(linkedIdentitySchema) + "DROP TABLE " + table;
    EXPECT_THAT(warningsOf(identities, database(other)), IsEmpty()) << "of another version, without " << table;
  }
}

TEST_P(SideDatabases, OnesOfNoBytesAreAWarning) {
  for (const Side& side : sides) {
    for (const std::int64_t recorded : {0, 8'192}) {
      const auto warnings = warningsOf(side.name, {}, {.recordedSize = recorded});
      EXPECT_THAT(warnings, ElementsAre(StartsWith(side.warning))) << recorded;
    }
  }
}

TEST_P(SideDatabases, OtherDatabasesInTheirPlaceAreAWarning) {
  WhatsAppContents chats = contents_.whatsApp;
  chats.journal = Journal::rollback;
  for (const Side& side : sides) {
    const Side& other = &side == sides.data() ? sides.back() : sides.front();
    for (const Bytes& content : {writeChatStorage(chats).main, writeContacts(chats).main, database(other.schema)}) {
      EXPECT_THAT(warningsOf(side.name, content), ElementsAre(StartsWith(side.warning))) << content.size();
    }
  }
}

TEST_P(SideDatabases, OnesWithoutATableAreAWarning) {
  for (const char* table : {"ZWACDCALLEVENT", "ZWAAGGREGATECALLEVENT", "ZWACDCALLEVENTPARTICIPANT"}) {
    const auto warnings = warningsOf(callHistory, database(std::string(callHistorySchema) + "DROP TABLE " + table));
    EXPECT_THAT(warnings, ElementsAre(StartsWith(sides[0].warning))) << table;
  }
  EXPECT_THAT(warningsOf(identities, database("CREATE TABLE Z_METADATA (Z_VERSION)")),
              ElementsAre(StartsWith(sides[1].warning)));
}

TEST_P(SideDatabases, OnesWithoutAColumnThatEveryPhoneHasAreAWarning) {
  struct Column {
    const Side& side;
    const char* table = "";
    const char* name = "";
  };
  for (const Column& column : {Column{sides[0], "ZWACDCALLEVENT", "Z_PK"},
                               {sides[0], "ZWACDCALLEVENT", "Z1CALLEVENTS"},
                               {sides[0], "ZWACDCALLEVENT", "ZDATE"},
                               {sides[0], "ZWACDCALLEVENT", "ZDURATION"},
                               {sides[0], "ZWACDCALLEVENT", "ZOUTCOME"},
                               {sides[0], "ZWAAGGREGATECALLEVENT", "Z_PK"},
                               {sides[0], "ZWAAGGREGATECALLEVENT", "ZINCOMING"},
                               {sides[0], "ZWAAGGREGATECALLEVENT", "ZVIDEO"},
                               {sides[0], "ZWAAGGREGATECALLEVENT", "ZMISSED"},
                               {sides[0], "ZWACDCALLEVENTPARTICIPANT", "Z1PARTICIPANTS"},
                               {sides[0], "ZWACDCALLEVENTPARTICIPANT", "ZJIDSTRING"},
                               {sides[1], "ZWAPHONENUMBERLIDPAIR", "ZLID"},
                               {sides[1], "ZWAPHONENUMBERLIDPAIR", "ZPHONENUMBER"},
                               {sides[1], "ZWAZACCOUNT", "ZIDENTIFIER"},
                               {sides[1], "ZWAZACCOUNT", "ZPHONENUMBER"},
                               {sides[1], "ZWAZACCOUNT", "ZDISPLAYNAME"}}) {
    const std::string rename = std::string("ALTER TABLE ") + column.table + " RENAME COLUMN " + column.name + " TO Q";
    EXPECT_THAT(warningsOf(column.side.name, database(column.side.schema + rename)),
                ElementsAre(StartsWith(column.side.warning)))
        << column.table << "." << column.name;
  }
}

TEST_P(SideDatabases, OnesOfWhichOnlyTheJournalIsListedAreAWarning) {
  for (const Side& side : sides) {
    for (const char* ending : {"-wal", "-shm"}) {
      const std::string journal = side.name + std::string(ending);
      EXPECT_THAT(warningsOf(journal.c_str(), bytesOf("x")), ElementsAre(StartsWith(side.warning))) << journal;
    }
  }
}

}  // namespace
}  // namespace Fixture
