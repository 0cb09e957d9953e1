#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ArchiveReading.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using namespace ExportTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

Day day(const char* text) { return *dayFromISO8601(text); }
const Selection onlyAna{.chats = {"Ana"}};

// The small backup with a text to each message, and Ana's second message and Bea's a year later.
Fixture::BackupContents backupOfYears() {
  Fixture::BackupContents contents = talkingBackup();
  contents.whatsApp.messages[1].date = firstDate + 366 * 86400.0;
  contents.whatsApp.messages[3].date = firstDate + 367 * 86400.0;
  return contents;
}
const Selection firstYear{.until = day("2023-12-31")};
const Selection secondYear{.since = day("2024-01-01")};

std::vector<std::string> textsOf(const Scene& scene, const std::string& chat) {
  std::vector<std::string> texts;
  for (const Json::Object& message : messagesOf(scene.content, chat)) texts.push_back(textIn(message, "text"));
  return texts;
}

using Files = std::map<std::string, std::string>;
Files filesOf(const Scene& scene) { return filesBelow(scene.destination); }

// The paths of the files that one of them lacks, or has with other bytes.
std::set<std::string> differences(const Files& one, const Files& other) {
  std::set<std::string> paths;
  for (const auto& [files, others] : {std::pair(&one, &other), std::pair(&other, &one)}) {
    for (const auto& [path, bytes] : *files) {
      const auto found = others->find(path);
      if (found == others->end() || found->second != bytes) paths.insert(path);
    }
  }
  return paths;
}

TEST(SelectionExport, TakesTheChosenChatsAlone) {
  for (const bool isEncrypted : {false, true}) {
    const Scene scene(talkingBackup(isEncrypted));
    const ExportSummary summary = scene.runPart(onlyAna, everything);
    EXPECT_EQ(summary.copiedCount, 2);
    EXPECT_EQ(summary.chatFolderCount, 1);
    EXPECT_THAT(listedNames(scene.content), ElementsAre("Ana"));
    EXPECT_TRUE(fs::is_directory(scene.content / "Ana"));
    EXPECT_FALSE(fs::exists(scene.content / "Bea"));
    EXPECT_FALSE(fs::exists(scene.content / "Us"));
    expectWholeArchive(scene.destination);
  }
}

TEST(SelectionExport, TakesAllButWhatIsLeftOut) {
  const Scene scene(talkingBackup());
  EXPECT_EQ(scene.runPart({.notChats = {ana, "bea"}}, everything).copiedCount, 1);
  EXPECT_THAT(listedNames(scene.content), ElementsAre("Us"));
}

TEST(SelectionExport, TakesWhatWasSentWithinTheDays) {
  const Scene scene(backupOfYears());
  EXPECT_EQ(scene.runPart(firstYear, everything).copiedCount, 2);
  EXPECT_THAT(listedNames(scene.content), UnorderedElementsAre("Ana", "Us"));
  EXPECT_EQ(textsOf(scene, "Ana").size(), 1U);
  EXPECT_EQ(scene.runPart(secondYear, everything).copiedCount, 2) << "the document has no message, and no date";
  EXPECT_EQ(textsOf(scene, "Ana").size(), 2U);
  EXPECT_THAT(listedNames(scene.content), UnorderedElementsAre("Ana", "Us", "Bea"));
  expectWholeArchive(scene.destination);
}

TEST(SelectionExport, AChoiceAndThenEverythingIsEverything) {
  const Scene atOnce(backupOfYears());
  atOnce.run(everything);
  for (const Selection& selection : {onlyAna, Selection{.notChats = {"Ana"}}, firstYear, secondYear}) {
    const Scene scene(backupOfYears());
    scene.runPart(selection, everything);
    EXPECT_FALSE(differences(filesOf(scene), filesOf(atOnce)).empty());
    scene.run(everything);
    EXPECT_THAT(differences(filesOf(scene), filesOf(atOnce)), IsEmpty());
  }
}

TEST(SelectionExport, WhatTheExportHasStaysAsItIs) {
  for (const Selection& selection : {onlyAna, secondYear}) {
    const Scene scene(backupOfYears());
    scene.run(everything);
    const auto before = filesOf(scene);
    const ExportSummary summary = scene.runPart(selection, everything);
    EXPECT_EQ(summary.copiedCount, 0);
    EXPECT_EQ(summary.failedCount, 0);
    EXPECT_THAT(differences(filesOf(scene), before), IsEmpty());
  }
}

// With another phone's backup, of which nothing but Ana is chosen.
TEST(SelectionExport, NothingOfAChatThatWasNotChosenIsTouched) {
  Scene scene(talkingBackup());
  scene.run(everything);
  const auto ofBea = filesBelow(scene.content / "Bea");
  fs::rename(scene.content / "Bea", scene.content / "My own name");
  scene.contents.whatsApp.chats[2].name = "Beatriz";
  scene.contents.whatsApp.messages[3].text = "edited";
  scene.contents.whatsApp.messages.push_back({.chat = 1, .date = firstDate + 9000, .text = "new"});
  scene.write();
  scene.runPart(onlyAna, everything);
  EXPECT_THAT(textsOf(scene, "Ana").back(), "new");
  EXPECT_EQ(listedChat(scene.content, "Bea").count("gone"), 0U);
  EXPECT_FALSE(fs::exists(scene.content / "Beatriz"));
  EXPECT_THAT(differences(filesBelow(scene.content / "My own name"), ofBea), IsEmpty());
}

TEST(SelectionExport, AChatGetsTheFolderThatItWouldHaveAmongAll) {
  Fixture::BackupContents contents = talkingBackup();
  contents.whatsApp.chats[2].name = "Ana";
  const Scene atOnce(contents);
  atOnce.run(everything);
  const Scene scene(contents);
  scene.runPart({.chats = {bea}}, everything);
  EXPECT_TRUE(fs::is_directory(scene.content / "Ana-2"));
  EXPECT_FALSE(fs::exists(scene.content / "Ana"));
  scene.run(everything);
  EXPECT_THAT(differences(filesOf(scene), filesOf(atOnce)), IsEmpty());
}

TEST(SelectionExport, WithoutItsMemoryNoFolderOfAnotherChatIsTaken) {
  Fixture::BackupContents contents = talkingBackup();
  contents.whatsApp.chats[2].name = "Ana";
  const Scene scene(contents);
  scene.run(mediaAlone());
  const auto ofAna = filesBelow(scene.content / "Ana");
  for (const auto& entry : fs::directory_iterator(scene.content)) {
    if (entry.path().filename().string().starts_with('.')) fs::remove(entry.path());
  }
  fs::remove_all(scene.content / "Ana-2");
  scene.runPart({.chats = {bea}}, mediaAlone());
  EXPECT_THAT(differences(filesBelow(scene.content / "Ana"), ofAna), IsEmpty());
}

TEST(SelectionExport, MediaAloneAreChosenToo) {
  const Scene scene(backupOfYears());
  EXPECT_EQ(scene.runPart({.chats = {"Ana"}, .until = day("2023-12-31")}).copiedCount, 1);
  EXPECT_EQ(scene.run().copiedCount, 4);
}

TEST(SelectionExport, AWrongNameChangesNothing) {
  const Scene scene(talkingBackup());
  EXPECT_THROW(scene.runPart({.chats = {"Zacharias"}}, everything), TidewellError);
  EXPECT_FALSE(fs::exists(scene.destination));
}

TEST(SelectionExport, NothingWithinTheDaysIsNoFault) {
  const Scene scene(talkingBackup());
  const ExportSummary summary = scene.runPart({.since = day("2030-01-01")}, everything);
  EXPECT_EQ(summary.copiedCount, 0);
  EXPECT_EQ(summary.chatFolderCount, 0);
  EXPECT_THAT(listedNames(scene.content), IsEmpty());
  EXPECT_EQ(scene.run(everything).copiedCount, 5);
}

}  // namespace
