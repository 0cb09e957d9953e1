#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/BackupBuilder.h"

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* ana = "5511900001111@s.whatsapp.net";

Fixture::BackupContents smallBackup() {
  return {.whatsApp = {.chats = {{.jid = ana, .name = "Ana"}},
                       .messages = {{.chat = 1, .date = 700000000, .text = "oi"}, {.chat = 1, .date = 700000001}},
                       .mediaFiles = {{.localPath = Fixture::mediaPath(ana, "ab-photo", "jpg"),
                                       .content = Fixture::Bytes(1200, 7),
                                       .message = 2}}}};
}

Fixture::BackupContents encryptedBackup() {
  Fixture::BackupContents contents = smallBackup();
  contents.encryption = Fixture::Encryption{.keyBag = {.password = "correct horse"}};
  return contents;
}

TEST(ScanCommand, ShowsChatsAndKindsOfAPlainBackup) {
  const CommandLine commandLine;
  Fixture::writeBackup(smallBackup(), commandLine / "device");
  const Finished finished = commandLine.run({"scan", "device"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.errors, "");
  EXPECT_THAT(finished.output, HasSubstr("Photos           1   1.2 kB\n"));
  EXPECT_THAT(finished.output, HasSubstr("\n\nChat  Messages  Files    Size\nAna          2      1  1.2 kB\n"
                                         "\n1 chat · 0 thumbnails left out\n"));
}

TEST(ScanCommand, ANameSteersNeitherTheTerminalNorTheDirectionOfItsLine) {
  const CommandLine commandLine;
  Fixture::BackupContents contents = smallBackup();
  contents.whatsApp.chats.front().name = "A\u202En\u2066\x1b[2Ja";
  Fixture::writeBackup(contents, commandLine / "device");
  EXPECT_THAT(commandLine.run({"scan", "device"}).output, HasSubstr("\nAn\uFFFD[2Ja "));
}

TEST(ScanCommand, GivesTheFieldsOfTheResultAsJson) {
  const CommandLine commandLine;
  Fixture::writeBackup(smallBackup(), commandLine / "device");
  const Json::Object object = commandLine.run({"scan", "device", "--json"}).json();
  for (const char* key : {"chatCount", "totalBytes", "statsByKind", "skippedThumbnailCount", "hasChatStorage",
                          "whatsAppDomain", "chats", "warnings"}) {
    EXPECT_TRUE(object.contains(key)) << key;
  }
  const Json::Object& photos = *object.at("statsByKind").as<Json::Object>()->at("photos").as<Json::Object>();
  EXPECT_EQ(*photos.at("count").as<std::int64_t>(), 1);
  EXPECT_EQ(*photos.at("byteCount").as<std::int64_t>(), 1200);
  const Json::Object& chat = *object.at("chats").as<Json::Array>()->at(0).as<Json::Object>();
  EXPECT_EQ(*chat.at("jid").as<std::string>(), ana);
  EXPECT_EQ(*chat.at("messageCount").as<std::int64_t>(), 2);
}

TEST(ScanCommand, SaysWhatMayBeMissingAndEndsWithAnotherCode) {
  const std::string warning =
      "The newest messages may be missing: the journal of WhatsApp’s chat database is damaged. Copy the backup again "
      "from where it came, or make a new one with the iPhone.";
  for (Fixture::BackupContents contents : {smallBackup(), encryptedBackup()}) {
    for (int i = 0; i < 300; ++i) contents.whatsApp.messages.push_back({.chat = 1, .text = std::string(100, 'a')});
    const CommandLine commandLine;
    const auto backup = Fixture::writeBackup(contents, commandLine / "device");
    const auto journal = backup.storedFile("ChatStorage.sqlite-wal");
    Fixture::Bytes bytes = Fixture::readFile(journal);
    bytes.at(3000) ^= 1;
    Fixture::writeFile(journal, bytes);
    const Finished finished = commandLine.run({"scan", "device", "--password-stdin"}, "correct horse");
    EXPECT_EQ(finished.exitCode, 3);
    EXPECT_THAT(finished.errors, HasSubstr(warning + "\n"));
    EXPECT_THAT(finished.output, HasSubstr("2 chats")) << "of a file, and of messages whose chat is lost";
    const Finished asJson = commandLine.run({"scan", "device", "--password-stdin", "--json"}, "correct horse");
    EXPECT_EQ(asJson.exitCode, 3);
    const Json::Object object = asJson.json();
    ASSERT_FALSE(object.at("warnings").as<Json::Array>()->empty());
    EXPECT_EQ(*object.at("warnings").as<Json::Array>()->at(0).as<std::string>(), warning);
  }
}

TEST(ScanCommand, AnEmptyChatDatabaseIsAnErrorAndNotNothing) {
  const CommandLine commandLine;
  const auto backup = Fixture::writeBackup(smallBackup(), commandLine / "device");
  Fixture::writeFile(backup.storedFile("ChatStorage.sqlite"), "");
  const Finished finished = commandLine.run({"scan", "device"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, testing::StartsWith("Could not read WhatsApp’s chat database. Its list of messages"));
}

TEST(ScanCommand, TakesThePasswordFromAFileOrStandardInput) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  Fixture::writeFile(commandLine / "password.txt", "correct horse\r\nsecond line\n");
  EXPECT_EQ(commandLine.run({"scan", "device", "--password-file", "password.txt"}).exitCode, 0);
  EXPECT_EQ(commandLine.run({"scan", "device", "--password-stdin"}, "correct horse\nmore").exitCode, 0);
  EXPECT_EQ(commandLine.run({"scan", "device", "--password-stdin"}, "correct horse").exitCode, 0);
}

TEST(ScanCommand, AsksForThePasswordOnATerminalWithoutShowingIt) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  const Finished finished = commandLine.runOnTerminal({"scan", "device"}, "correct horse\n");
  EXPECT_EQ(finished.exitCode, 0) << finished.output;
  EXPECT_THAT(finished.output, HasSubstr("Password of this backup: "));
  EXPECT_THAT(finished.output, HasSubstr("Ana "));
  EXPECT_THAT(finished.output, Not(HasSubstr("correct horse")));
}

bool isShown(int terminal) {
  termios state{};
  return ::tcgetattr(terminal, &state) == 0 && (state.c_lflag & ECHO) != 0;
}

TEST(ScanCommand, WhoStopsItAtThePasswordAndComesBackTypesUnseen) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  const Finished finished =
      commandLine.runOnTerminal({"scan", "device"}, "correct horse\n", [](pid_t process, int terminal) {
        ::kill(process, SIGTSTP);
        int status = 0;
        EXPECT_EQ(::waitpid(process, &status, WUNTRACED), process);
        EXPECT_TRUE(WIFSTOPPED(status));
        EXPECT_TRUE(isShown(terminal)) << "the shell's own line";
        ::kill(process, SIGCONT);
        for (int tries = 0; isShown(terminal) && tries < 500; ++tries) ::usleep(10'000);
        EXPECT_FALSE(isShown(terminal));
      });
  EXPECT_EQ(finished.exitCode, 0) << finished.output;
  EXPECT_THAT(finished.output, Not(HasSubstr("correct horse")));
}

TEST(ScanCommand, ListsNamesAsPeopleExpectThemWithoutALanguageToo) {
  Fixture::BackupContents contents;
  for (const char* name : {"Team", "ana", "Zoe", "Äpfel", "Ana"}) {
    const auto number = std::to_string(5511900001111 + static_cast<std::int64_t>(contents.whatsApp.chats.size()));
    contents.whatsApp.chats.push_back({.jid = number + "@s.whatsapp.net", .name = name});
    contents.whatsApp.messages.push_back({.chat = static_cast<std::int64_t>(contents.whatsApp.chats.size())});
  }
  CommandLine commandLine;
  Fixture::writeBackup(contents, commandLine / "device");
  for (const char* language : {"C", "C.UTF-8", "POSIX", "en_US_POSIX", ""}) {
    commandLine.set("LC_ALL", language);
    std::vector<std::string> names;
    const Json::Object result = commandLine.run({"scan", "device", "--json"}).json();
    for (const Json& chat : *result.at("chats").as<Json::Array>()) {
      names.push_back(*chat.as<Json::Object>()->at("name").as<std::string>());
    }
    EXPECT_THAT(names, testing::ElementsAre("ana", "Ana", "Äpfel", "Team", "Zoe")) << language;
  }
}

TEST(ScanCommand, NeedsAPasswordWhenThereIsNoWayToAskForIt) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  const Finished finished = commandLine.run({"scan", "device"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("This iPhone backup is encrypted. Enter the password you set in Finder.\n\n"));
  const Json::Object error = *commandLine.run({"scan", "device", "--json"}).json().at("error").as<Json::Object>();
  EXPECT_EQ(*error.at("case").as<std::string>(), "needsBackupPassword");
}

TEST(ScanCommand, CanBeInterruptedWhileItWaitsForThePasswordFile) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  ASSERT_EQ(::mkfifo((commandLine / "password").c_str(), 0600), 0);
  for (const int signal : {SIGINT, SIGTERM}) {
    const Finished finished = commandLine.interruptWaiting({"scan", "device", "--password-file", "password"}, signal);
    EXPECT_EQ(finished.exitCode, 130) << finished.errors;
  }
}

TEST(ScanCommand, PrintsTheUnlockStagesOnSuccessAndOnFailure) {
  const CommandLine commandLine;
  Fixture::writeBackup(encryptedBackup(), commandLine / "device");
  EXPECT_THAT(commandLine.run({"scan", "device", "--password-stdin"}, "correct horse").errors,
              HasSubstr("unlock: class keys 8/11 unwrapped\n"));
  const Finished refused = commandLine.run({"scan", "device", "--password-stdin", "--json"}, "wrong");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.errors, HasSubstr("unlock: class keys 0/11 unwrapped\n"));
  EXPECT_THAT(refused.errors, Not(HasSubstr("wrong")));
  EXPECT_EQ(*refused.json().at("error").as<Json::Object>()->at("case").as<std::string>(), "wrongBackupPassword");
  EXPECT_TRUE(commandLine.temporaryFiles().empty());
}

TEST(ScanCommand, ReportsAFolderThatIsNoBackup) {
  const CommandLine commandLine;
  std::filesystem::create_directory(commandLine / "empty");
  EXPECT_THAT(commandLine.run({"scan", "empty"}).errors,
              testing::StartsWith("This folder isn't an iPhone backup.\n\n"));
  const Json::Object object = commandLine.run({"scan", "nowhere", "--json"}).json();
  EXPECT_EQ(*object.at("error").as<Json::Object>()->at("case").as<std::string>(), "backupNotFound");
}

TEST(ScanCommand, ReportsWhatIsPassedOnAsAnIOFailure) {
  const CommandLine commandLine;
  Fixture::writeBackup(smallBackup(), commandLine / "device");
  Fixture::writeFile(commandLine / "device/Manifest.plist", "not a property list");
  const Finished finished = commandLine.run({"scan", "device", "--json"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(*finished.json().at("error").as<Json::Object>()->at("case").as<std::string>(), "ioFailure");
}

}  // namespace
