#include "TidewellCore/Destination/OwnFiles.h"

#include <gtest/gtest.h>

#include "TidewellCore/Platform/Files.h"

namespace {

using OwnFiles::Kind;

TEST(OwnFiles, AreToldByTheirNames) {
  EXPECT_EQ(OwnFiles::kindOf("_transcript.txt"), Kind::transcript);
  EXPECT_EQ(OwnFiles::kindOf("_transcript.html"), Kind::transcript);
  EXPECT_EQ(OwnFiles::kindOf("_messages.jsonl"), Kind::transcript);
  EXPECT_EQ(OwnFiles::kindOf("_messages.csv"), Kind::transcript);
  EXPECT_EQ(OwnFiles::kindOf(".tidewell-manifest.json"), Kind::memory);
  EXPECT_EQ(OwnFiles::kindOf(".tidewell-names.json"), Kind::memory);
  EXPECT_EQ(OwnFiles::kindOf(".tidewell-dedupe.json"), Kind::journal);
  EXPECT_EQ(OwnFiles::kindOf(Files::partialName()), Kind::partial);
  EXPECT_EQ(OwnFiles::kindOf(".DS_Store"), Kind::fileManagers);
}

TEST(OwnFiles, AreNotMediaNorSomebodys) {
  for (const char* name : {"2023-03-08_202640_a.jpg", "_transcript.txt.bak", "_Transcript.txt", ".ds_store", ".hidden",
                           "my notes.txt", ""}) {
    EXPECT_EQ(OwnFiles::kindOf(name), Kind::none) << name;
  }
}

TEST(OwnFiles, ThoseMadeForChatsTellAChatsFolder) {
  EXPECT_TRUE(OwnFiles::isMadeForChats("_transcript.html"));
  EXPECT_TRUE(OwnFiles::isMadeForChats("_messages.csv"));
  EXPECT_TRUE(OwnFiles::isMadeForChats("2023-03-08_202640_a.jpg"));
  EXPECT_FALSE(OwnFiles::isMadeForChats("my notes.txt"));
  EXPECT_FALSE(OwnFiles::isMadeForChats(".DS_Store"));
  EXPECT_FALSE(OwnFiles::isMadeForChats(".tidewell-manifest.json"));
}

}  // namespace
