#include "TidewellCore/Backup/StoredFileLocation.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(StoredFileLocation, IsInTheFolderOfTheFirstTwoCharacters) {
  EXPECT_EQ(storedFileLocation("/backup", "3d0d7e5fb2ce288813306e4d4636395e047a3d28"),
            "/backup/3d/3d0d7e5fb2ce288813306e4d4636395e047a3d28");
  EXPECT_EQ(storedFileLocation("/backup", "3d"), "/backup/3d/3d");
}

TEST(StoredFileLocation, AnIdentifierOfOneCharacterIsItsOwnFolder) {
  EXPECT_EQ(storedFileLocation("/backup", "a"), "/backup/a/a");
  EXPECT_EQ(storedFileLocation("/backup", "é"), "/backup/é/é");
}

TEST(StoredFileLocation, CountsCharactersNotBytes) {
  EXPECT_EQ(storedFileLocation("/backup", "éàx"), "/backup/éà/éàx");
}

TEST(StoredFileLocation, HostileIdentifiersNeverBecomePaths) {
  using namespace std::string_literals;
  const std::string hostile[] = {"",         ".",      "..",   "..a",        ".hidden",  "../evil", "/etc/passwd",
                                 "ab/cd",    "ab\\cd", "ab\n", "ab\tcd",     "a\0b"s,    "\0"s,     "ab\x7F",
                                 "ab\u0085", "a/",     "\\",   "ab/../../x", "ab\x1B[0m"};
  for (const std::string& fileID : hostile) {
    EXPECT_EQ(storedFileLocation("/backup", fileID), std::nullopt) << testing::PrintToString(fileID);
  }
}

TEST(StoredFileLocation, TakesAtMost128Bytes) {
  EXPECT_TRUE(storedFileLocation("/backup", std::string(128, 'a')));
  EXPECT_FALSE(storedFileLocation("/backup", std::string(129, 'a')));
}

TEST(StoredFileLocation, DotsWithinAnIdentifierStayInsideTheBackup) {
  EXPECT_EQ(storedFileLocation("/backup", "a.."), "/backup/a./a..");
}

}  // namespace
