#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/UnfinishedTransaction.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Library/ArchiveOwner.h"
#include "TidewellCore/Library/LibraryFile.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

constexpr const char* ana = "5511900001111@s.whatsapp.net";
constexpr const char* bea = "5511900002222@s.whatsapp.net";
constexpr const char* friends = "5511900003333@s.whatsapp.net";
constexpr const char* refusal = "These chats belong to +55 11 90000-1111. Choose another folder for this phone.\n";

// A phone with a chat, a photo in it and, unless the owner is not known, a notice that names them.
Fixture::BackupContents phoneOf(const char* owner, const std::string& photo) {
  Fixture::WhatsAppContents app{.chats = {{.jid = friends, .name = "Caio"}},
                                .messages = {{.chat = 1, .date = 700000000, .text = photo}},
                                .mediaFiles = {{.localPath = Fixture::mediaPath(friends, photo, "jpg"),
                                                .content = Fixture::bytesOf("the bytes of " + photo),
                                                .message = 1}}};
  if (owner != nullptr) app.messages.push_back({.chat = 1, .date = 700000060, .toJID = owner, .type = 10});
  return {.whatsApp = std::move(app)};
}

class ForeignArchive : public testing::Test {
 protected:
  ForeignArchive() {
    Fixture::writeBackup(phoneOf(ana, "aa1"), commandLine / "anas");
    Fixture::writeBackup(phoneOf(bea, "bb2"), commandLine / "beas");
    Fixture::writeBackup(phoneOf(nullptr, "cc3"), commandLine / "somebodys");
  }

  Finished exportOf(const std::string& device, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"export", device, "saved", "--no-progress"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return commandLine.run(arguments);
  }
  ArchiveOwner::JIDs owner() const { return ArchiveOwner::known(LibraryFile::look(saved / "messages")); }
  bool hasPhoto(const std::string& name) const {
    const fs::path folder = saved / "messages/Caio";
    return fs::exists(folder) && std::ranges::any_of(fs::directory_iterator(folder), [&](const auto& entry) {
             return entry.path().filename().string().ends_with("_" + name + ".jpg");
           });
  }

  CommandLine commandLine;
  fs::path saved = commandLine / "saved";
};

TEST_F(ForeignArchive, RefusesAnotherOwnersPhoneAndChangesNothing) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  EXPECT_THAT(owner(), ElementsAre(ana));
  const auto before = Fixture::treeSnapshot(saved);
  const auto dateBefore = fs::last_write_time(saved);
  const Finished finished = exportOf("beas");
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(finished.errors, refusal);
  EXPECT_EQ(finished.output, "");
  EXPECT_EQ(exportOf("beas", {"--no-transcripts"}).errors, refusal);
  EXPECT_EQ(Fixture::treeSnapshot(saved), before);
  EXPECT_EQ(fs::last_write_time(saved), dateBefore);
  EXPECT_THAT(commandLine.temporaryFiles(), IsEmpty());
}

TEST_F(ForeignArchive, TellsItsCaseToPrograms) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  const Finished finished = exportOf("beas", {"--json"});
  EXPECT_EQ(finished.exitCode, 1);
  const Json::Object object = finished.json();
  const Json::Object& error = *object.at("error").as<Json::Object>();
  EXPECT_EQ(*error.at("case").as<std::string>(), "foreignArchive");
  EXPECT_EQ(*error.at("errorDescription").as<std::string>() + "\n", refusal);
}

TEST_F(ForeignArchive, TakesTheSamePersonInUnderAnotherNumber) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  const Finished told = exportOf("beas", {"--same-person"});
  EXPECT_EQ(told.exitCode, 0) << told.errors;
  EXPECT_THAT(owner(), ElementsAre(ana, bea));
  EXPECT_TRUE(hasPhoto("aa1") && hasPhoto("bb2"));
  EXPECT_EQ(exportOf("beas").exitCode, 0) << "it is known from now on";
  EXPECT_EQ(exportOf("anas").exitCode, 0);
}

TEST_F(ForeignArchive, KeepsTheNewNumberWithoutTranscriptsToo) {
  ASSERT_EQ(exportOf("anas", {"--no-transcripts"}).exitCode, 0);
  EXPECT_EQ(exportOf("beas", {"--no-transcripts"}).errors, refusal);
  EXPECT_EQ(exportOf("beas", {"--no-transcripts", "--same-person"}).exitCode, 0);
  EXPECT_THAT(owner(), ElementsAre(ana, bea));
}

TEST_F(ForeignArchive, TakesTheSameOwnerAgain) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  Fixture::writeBackup(phoneOf(ana, "dd4"), commandLine / "newer");
  EXPECT_EQ(exportOf("newer").exitCode, 0);
  EXPECT_TRUE(hasPhoto("aa1") && hasPhoto("dd4"));
  EXPECT_THAT(owner(), ElementsAre(ana));
}

TEST_F(ForeignArchive, RefusesNothingWhereNobodyIsKnown) {
  ASSERT_EQ(exportOf("somebodys").exitCode, 0);
  EXPECT_THAT(owner(), IsEmpty());
  EXPECT_EQ(exportOf("anas").exitCode, 0);
  EXPECT_EQ(exportOf("somebodys").exitCode, 0);
  EXPECT_EQ(exportOf("beas").errors, refusal);
}

TEST_F(ForeignArchive, ABusyFolderIsTheFirstThingToldOf) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  const DestinationLock lock(saved);
  EXPECT_EQ(exportOf("beas").errors, "Another export is writing into this folder. Wait until it has finished.\n");
}

TEST_F(ForeignArchive, WithoutALibraryNothingIsKnown) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  for (const char* memory : {LibraryFile::fileName, OwnFiles::receipt}) fs::remove(saved / "messages" / memory);
  EXPECT_EQ(exportOf("beas").exitCode, 0);
}

// A power cut in the middle of a transaction: who the owner is can be read when that is undone.
TEST_F(ForeignArchive, IsRefusedAfterAPowerCutToo) {
  ASSERT_EQ(exportOf("anas").exitCode, 0);
  const auto owners = owner();
  Fixture::leaveUnfinished(saved / "messages" / LibraryFile::fileName, "DELETE FROM owner");
  const auto chat = Fixture::treeSnapshot(saved / "messages/Caio");
  EXPECT_EQ(exportOf("beas").errors, refusal);
  EXPECT_EQ(Fixture::treeSnapshot(saved / "messages/Caio"), chat);
  EXPECT_EQ(owner(), owners);
}

}  // namespace
