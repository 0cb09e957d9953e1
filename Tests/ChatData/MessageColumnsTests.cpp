#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/ChatData/ReadDatabases.h"

// Columns on which the kinds of messages hang, and without which a phone's messages are poorer than they were.
namespace Fixture {
namespace {

bool isPartial(const std::string& sql) {
  return readTables({.journal = Journal::rollback, .chatStorageSQL = sql}).unread.isPartial;
}

std::string without(const std::string& table, const std::string& column) {
  return "ALTER TABLE " + table + " RENAME COLUMN " + column + " TO Q" + column + ";";
}

TEST(MessageColumns, OneThatEveryPhoneHasIsMissed) {
  struct Column {
    const char* table = "";
    const char* name = "";
  };
  for (const Column& column : {Column{"ZWAMESSAGE", "ZMESSAGETYPE"},
                               {"ZWAMESSAGE", "ZGROUPEVENTTYPE"},
                               {"ZWAMEDIAITEM", "ZTITLE"},
                               {"ZWAMEDIAITEM", "ZVCARDSTRING"},
                               {"ZWAMEDIAITEM", "ZVCARDNAME"},
                               {"ZWAMEDIAITEM", "ZLATITUDE"},
                               {"ZWAMEDIAITEM", "ZLONGITUDE"},
                               {"ZWAMEDIAITEM", "ZMOVIEDURATION"},
                               {"ZWAMEDIAITEM", "ZMETADATA"},
                               {"ZWAMESSAGEINFO", "ZMESSAGE"},
                               {"ZWAMESSAGEINFO", "ZRECEIPTINFO"},
                               {"ZWAMESSAGEDATAITEM", "ZMESSAGE"},
                               {"ZWAMESSAGEDATAITEM", "ZMATCHEDTEXT"},
                               {"ZWAMESSAGEDATAITEM", "ZTITLE"},
                               {"ZWAMESSAGEDATAITEM", "ZSUMMARY"},
                               {"ZWAGROUPINFO", "ZCREATORJID"}}) {
    EXPECT_TRUE(isPartial(without(column.table, column.name))) << column.table << "." << column.name;
  }
}

TEST(MessageColumns, WhatOtherVersionsLackIsNotMissed) {
  EXPECT_FALSE(isPartial(""));
  for (const char* table : {"ZWAMESSAGEINFO", "ZWAMESSAGEDATAITEM", "ZWAGROUPINFO"}) {
    EXPECT_FALSE(isPartial(std::string("DROP TABLE ") + table)) << table;
  }
  EXPECT_FALSE(isPartial(without("ZWAMEDIAITEM", "ZMETADATA") + without("ZWAMEDIAITEM", "ZMEDIAKEY")));
  EXPECT_FALSE(isPartial(without("ZWAGROUPINFO", "ZCREATORJID") + without("ZWAGROUPINFO", "ZCREATIONDATE")));
  for (const char* column : {"ZSORT", "ZSTARRED", "ZFLAGS", "ZMESSAGEINFO", "ZPUSHNAME", "ZTOJID"}) {
    EXPECT_FALSE(isPartial(without("ZWAMESSAGE", column))) << column;
  }
  for (const char* column : {"ZMEDIAURL", "ZAUTHORNAME", "ZMEDIAORIGIN"}) {
    EXPECT_FALSE(isPartial(without("ZWAMEDIAITEM", column))) << column;
  }
}

}  // namespace
}  // namespace Fixture
