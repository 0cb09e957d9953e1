#include "TidewellCore/ChatData/LinkedIdentities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadSQL.h"
#include "Tests/Support/CallSchema.h"
#include "Tests/Support/Failures.h"
#include "TidewellCore/TidewellError.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<LinkedIdentity> read(const std::string& sql) { return readSQL(sql, LinkedIdentities::load); }

std::vector<LinkedIdentity> identities(const std::string& rows) { return read(linkedIdentitySchema + rows); }

std::string pair(const std::string& lid, const std::string& phone) {
  return "INSERT INTO ZWAPHONENUMBERLIDPAIR (ZLID, ZPHONENUMBER) VALUES (" + lid + ", " + phone + ");";
}

std::string account(const std::string& identifier, const std::string& phone, const std::string& name) {
  return "INSERT INTO ZWAZACCOUNT (ZIDENTIFIER, ZPHONENUMBER, ZDISPLAYNAME) VALUES (" + identifier + ", " + phone +
         ", " + name + ");";
}

const LinkedIdentity linked{.lid = "7700@lid", .phoneJID = "15550000002@s.whatsapp.net"};

TEST(LinkedIdentities, ReadsBothTables) {
  EXPECT_THAT(
      identities(pair("'7700'", "'15550000002'") + account("'8800@lid'", "'+1 555 000 0003'", "' Ben '")),
      ElementsAre(linked, LinkedIdentity{.lid = "8800@lid", .phoneJID = "15550000003@s.whatsapp.net", .name = "Ben"}));
}

TEST(LinkedIdentities, ValuesComeInSeveralForms) {
  for (const std::string& row : {pair("7700", "15550000002"), pair("x'37373030'", "'15550000002@s.whatsapp.net'"),
                                 pair("'7700:3@LID'", "'15550000002:1@s.whatsapp.net'")}) {
    EXPECT_THAT(identities(row), ElementsAre(linked)) << row;
  }
}

TEST(LinkedIdentities, AnIdentityIsNeverTakenForANumber) {
  EXPECT_THAT(identities(pair("'1@lid'", "'2@lid'") + pair("'2@lid'", "'1@lid'")), IsEmpty()) << "a chain";
  EXPECT_THAT(identities(account("'15550000002@s.whatsapp.net'", "'1'", "'Ana'")), IsEmpty());
}

TEST(LinkedIdentities, WhatTellsNothingIsLeftOut) {
  EXPECT_THAT(identities(pair("NULL", "'1'") + pair("'1'", "NULL") + pair("''", "''") + pair("'../x'", "'1'") +
                         account("'1'", "'x'", "' '") + account("'1'", "NULL", "'COah/ZEGIAA='")),
              IsEmpty());
  EXPECT_THAT(identities(account("'1'", "NULL", "'Ana'")), ElementsAre(LinkedIdentity{.lid = "1@lid", .name = "Ana"}));
}

TEST(LinkedIdentities, MissingTablesAndColumnsKnowNobody) {
  EXPECT_THAT(read("CREATE TABLE other (a);"), IsEmpty());
  EXPECT_THAT(read("CREATE TABLE ZWAZACCOUNT (ZDISPLAYNAME); INSERT INTO ZWAZACCOUNT VALUES ('Ana');"), IsEmpty());
}

TEST(LinkedIdentities, AFileThatIsNoDatabaseIsReported) {
  const TemporaryDirectory folder;
  writeFile(folder / "db", std::string(4096, 'x'));
  std::vector<LinkedIdentity> found;
  EXPECT_THAT([&] { LinkedIdentities::load(folder / "db", found); },
              failsWith(TidewellError::invalidDatabase("file is not a database")));
}

}  // namespace
}  // namespace Fixture
