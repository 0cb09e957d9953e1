#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Library/LibraryRows.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"
#include "Tests/Support/SmallVolume.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Library/LibraryFile.h"

using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

constexpr const char* ana = "5511900001111@s.whatsapp.net";
constexpr const char* password = "correct horse";

Fixture::BackupContents twoFiles() {
  return {.whatsApp = {.chats = {{.jid = ana, .name = "Ana"}},
                       .messages = {{.chat = 1, .date = 700000000}, {.chat = 1, .date = 700000060}},
                       .mediaFiles = {{.localPath = Fixture::mediaPath(ana, "ab-photo", "jpg"),
                                       .content = Fixture::Bytes(1200, 7),
                                       .message = 1},
                                      {.localPath = Fixture::mediaPath(ana, "cd-note", "opus"),
                                       .content = Fixture::Bytes(300, 8),
                                       .message = 2}}}};
}

Fixture::BackupContents encrypted(Fixture::BackupContents contents, std::uint32_t rounds = 100) {
  contents.encryption = Fixture::Encryption{.keyBag = {.password = password, .doubleIterations = rounds}};
  return contents;
}

std::vector<std::string> filesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

// The digest of every file, by its path. The receipt tells of dates.
std::map<std::string, std::string> contentsOf(const fs::path& folder) {
  std::map<std::string, std::string> digests;
  for (const auto& [path, entry] : Fixture::treeSnapshot(folder)) digests[path] = entry.sha1;
  digests.erase(std::string("messages/") + OwnFiles::receipt);
  digests[std::string("messages/") + LibraryFile::fileName] = LibraryRows::of(folder / "messages");
  return digests;
}

TEST(ExportCommand, SavesMessagesForProgramsInTheFormatsItIsGiven) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const Finished finished =
      commandLine.run({"export", "device", "saved", "--formats", "json,csv", "--time-zone", "Asia/Tokyo"});
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  EXPECT_THAT(finished.output, HasSubstr("4 transcripts"));
  const Fixture::Bytes table = Fixture::readFile(commandLine / "saved/messages/Ana/_messages.csv");
  EXPECT_THAT(std::string(table.begin(), table.end()), HasSubstr(",2023-03-08 20:26:40,2023-03-09 05:26:40,+09:00,"));
  EXPECT_TRUE(fs::exists(commandLine / "saved/messages/Ana/_messages.jsonl"));
  EXPECT_THAT(commandLine.run({"export", "device", "other", "--formats", "xml"}).errors,
              HasSubstr("unknown format \"xml\""));
  EXPECT_FALSE(fs::exists(commandLine / "other"));
}

TEST(ExportCommand, LeavesEachChatsFilesInAFolderNamedAfterIt) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const Finished finished = commandLine.run({"export", "device", "saved"});
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  EXPECT_EQ(finished.output, "Export finished\nSaved to " + (commandLine / "saved").string() +
                                 "\n2 copied · 0 already present · 2 transcripts · 0 failed\n"
                                 "To read the chats, open " +
                                 (commandLine / "saved/index.html").string() + "\n");
  EXPECT_EQ(finished.errors, "Preparing…\nReading chats…\nCopying media\nWriting transcripts\nFinished\n");
  EXPECT_THAT(filesIn(commandLine / "saved/messages/Ana"),
              testing::ElementsAre("2023-03-08_202640_ab-photo.jpg", "2023-03-08_202740_cd-note.opus",
                                   "_transcript.html", "_transcript.txt"));
  EXPECT_THAT(filesIn(commandLine / "saved"), testing::ElementsAre("index.html", "messages"));
}

TEST(ExportCommand, CopiesNothingTheSecondTimeAndNeverChangesTheBackup) {
  const CommandLine commandLine;
  Fixture::writeBackup(encrypted(Fixture::sampleBackup({.messageCount = 300, .mediaCount = 60})),
                       commandLine / "device");
  const auto backup = Fixture::treeSnapshot(commandLine / "device");
  const std::vector<std::string> arguments{"export", "device", "saved", "--password-stdin", "--json"};
  const Json::Object first = commandLine.run(arguments, password).json();
  const auto saved = Fixture::treeSnapshot(commandLine / "saved/messages/Ana");
  const Json::Object second = commandLine.run(arguments, password).json();
  EXPECT_GT(*first.at("copiedCount").as<std::int64_t>(), 0);
  EXPECT_EQ(*second.at("copiedCount").as<std::int64_t>(), 0);
  EXPECT_EQ(*second.at("skippedExistingCount").as<std::int64_t>(), *first.at("copiedCount").as<std::int64_t>());
  EXPECT_EQ(Fixture::treeSnapshot(commandLine / "saved/messages/Ana"), saved);
  EXPECT_EQ(Fixture::treeSnapshot(commandLine / "device"), backup);
  EXPECT_TRUE(commandLine.temporaryFiles().empty());
}

TEST(ExportCommand, CopiesOnlyTheKindsAskedFor) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const Finished finished =
      commandLine.run({"export", "device", "saved", "--kinds", "voiceNotes,documents", "--no-transcripts"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, HasSubstr("1 copied · 0 already present · 0 transcripts · 0 failed\n"));
  EXPECT_THAT(filesIn(commandLine / "saved"), testing::ElementsAre("messages"));
  EXPECT_THAT(filesIn(commandLine / "saved/messages/Ana"), testing::ElementsAre("2023-03-08_202740_cd-note.opus"));
}

TEST(ExportCommand, StampsNamesInTheTimeZoneAskedFor) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const std::vector<std::string> arguments{"export",   "device", "saved",        "--time-zone", "America/Sao_Paulo",
                                           "--locale", "pt-BR",  "--no-progress"};
  const Finished finished = commandLine.run(arguments);
  EXPECT_EQ(finished.errors, "");
  EXPECT_TRUE(fs::exists(commandLine / "saved/messages/Ana/2023-03-08_172640_ab-photo.jpg"));
}

TEST(ExportCommand, CopiesNothingAgainWhereverItRuns) {
  CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const auto copiedIn = [&](const char* zone, const char* language) {
    commandLine.set("TZ", zone);
    commandLine.set("LC_ALL", language);
    const Json::Object record = commandLine.run({"export", "device", "saved", "--json"}).json();
    EXPECT_TRUE(record.at("warnings").as<Json::Array>()->empty());
    return *record.at("copiedCount").as<std::int64_t>();
  };
  EXPECT_EQ(copiedIn("Europe/Berlin", "de_DE.UTF-8"), 2);
  EXPECT_EQ(copiedIn("Asia/Tokyo", "ja_JP.UTF-8"), 0);
  EXPECT_EQ(copiedIn("Africa/Cairo", "ar_EG.UTF-8"), 0);
  EXPECT_EQ(copiedIn("UTC", "C"), 0);
  EXPECT_THAT(filesIn(commandLine / "saved/messages/Ana"),
              testing::ElementsAre("2023-03-08_212640_ab-photo.jpg", "2023-03-08_212740_cd-note.opus",
                                   "_transcript.html", "_transcript.txt"));
}

TEST(ExportCommand, WarnsWhenItIsToldToNameOtherwiseThanBefore) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const auto run = [&](const char* option, const char* value) {
    return commandLine.run({"export", "device", "saved", option, value, "--no-transcripts", "--no-progress"});
  };
  EXPECT_EQ(run("--time-zone", "Europe/Berlin").errors, "");
  EXPECT_EQ(run("--time-zone", "Europe/Berlin").errors, "");
  const Finished tokyo = run("--time-zone", "Asia/Tokyo");
  EXPECT_THAT(tokyo.output, HasSubstr("0 copied · 2 already present"));
  EXPECT_THAT(tokyo.errors, testing::AllOf(HasSubstr("time zone “Asia/Tokyo”"), HasSubstr("used “Europe/Berlin”")));
  EXPECT_THAT(run("--locale", "ar_EG").errors, HasSubstr("locale “ar_EG”"));
  const Finished again = run("--locale", "ar-EG");
  EXPECT_THAT(again.output, HasSubstr("0 copied · 2 already present"));
  EXPECT_EQ(again.errors, "");
}

TEST(ExportCommand, EndsWithThreeWhenACopyFailed) {
  const CommandLine commandLine;
  Fixture::BackupContents contents = twoFiles();
  contents.whatsApp.mediaFiles[0].storage.missing = true;
  Fixture::writeBackup(contents, commandLine / "device");
  const Finished finished = commandLine.run({"export", "device", "saved"});
  EXPECT_EQ(finished.exitCode, 3);
  EXPECT_THAT(finished.output,
              HasSubstr("1 copied · 0 already present · 2 transcripts · 1 failed · 1 archive links missing files\n"
                        "2023-03-08_202640_ab-photo.jpg — Ana: It is missing from the backup.\n"
                        "To read the chats, open "));
}

TEST(ExportCommand, ListsTheFirstFailuresAndAllOfThemAsJson) {
  const CommandLine commandLine;
  Fixture::BackupContents contents{.whatsApp = {.chats = {{.jid = ana, .name = "A\x1B[2Jna"}}}};
  for (int i = 10; i < 22; ++i) {
    contents.whatsApp.mediaFiles.push_back({.localPath = Fixture::mediaPath(ana, "ab" + std::to_string(i), "jpg"),
                                            .content = Fixture::Bytes(10, 7),
                                            .storage = {.missing = true}});
  }
  Fixture::writeBackup(contents, commandLine / "device");
  const std::string output = commandLine.run({"export", "device", "saved"}).output;
  EXPECT_THAT(output, HasSubstr("undated_ab19.jpg — A\uFFFD[2Jna: It is missing from the backup.\n"
                                "2 more failed; --json lists all of them.\n"));
  EXPECT_THAT(output, Not(HasSubstr("ab20")));

  const Finished finished = commandLine.run({"export", "device", "saved", "--json"});
  EXPECT_EQ(finished.exitCode, 3);
  const Json::Object record = finished.json();
  EXPECT_EQ(*record.at("failedCount").as<std::int64_t>(), 12);
  EXPECT_TRUE(record.at("warnings").as<Json::Array>()->empty());
  const Json::Array& failures = *record.at("failures").as<Json::Array>();
  ASSERT_EQ(failures.size(), 12U);
  EXPECT_EQ(failures[11].write(),
            R"({"chat":"A\u001b[2Jna","name":"undated_ab21.jpg","reason":"It is missing from the backup."})");
}

TEST(ExportCommand, EndsWhenTheDiskIsFull) {
  constexpr int pagesOfAnEmptyLibrary = 15;
  const CommandLine commandLine;
  Fixture::BackupContents contents = twoFiles();
  // One byte more than a page takes two.
  for (auto& file : contents.whatsApp.mediaFiles) file.content = Fixture::Bytes(4097, 7);
  Fixture::writeBackup(contents, commandLine / "device");
  const Fixture::SmallVolume volume(commandLine / "saved", (5 + pagesOfAnEmptyLibrary) * 4096);
  if (!volume.isMounted()) GTEST_SKIP() << "This user cannot mount a volume.";
  const Finished finished = commandLine.run({"export", "device", "saved"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("\nThe disk is full. Free some space or choose another folder, then export "
                                         "again. What was copied so far is kept.\n"));
  EXPECT_THAT(finished.errors, Not(HasSubstr(".tidewell")));
  EXPECT_THAT(filesIn(commandLine / "saved/messages/Ana"), testing::SizeIs(1));
}

// Not the folder itself: what was opened before it was moved can still be read.
void moveAll(const fs::path& from, const fs::path& to) {
  fs::create_directories(to);
  for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
    fs::rename(entry.path(), to / entry.path().filename());
  }
}

TEST(ExportCommand, EndsWhenTheBackupIsTakenAway) {
  const CommandLine commandLine;
  Fixture::BackupContents contents = twoFiles();
  for (int i = 0; i < 600; ++i) {
    contents.whatsApp.mediaFiles.push_back(
        {.localPath = Fixture::mediaPath(ana, "ab" + std::to_string(i), "jpg"), .content = Fixture::Bytes(1000, 9)});
  }
  Fixture::writeBackup(contents, commandLine / "device");
  const Finished finished = commandLine.runAnd({"export", "device", "saved", "--json"}, "Copying media",
                                               [&](pid_t) { moveAll(commandLine / "device", commandLine / "taken"); });
  EXPECT_EQ(finished.exitCode, 1);
  const Json::Object object = finished.json();
  const Json::Object& error = *object.at("error").as<Json::Object>();
  EXPECT_EQ(*error.at("case").as<std::string>(), "ioFailure");
  EXPECT_EQ(*error.at("errorDescription").as<std::string>(),
            "The backup was moved or removed. Put it back or connect its disk again, then export again. What was "
            "copied so far is kept.");
  EXPECT_TRUE(commandLine.temporaryFiles().empty());

  moveAll(commandLine / "taken", commandLine / "device");
  const Json::Object record = commandLine.run({"export", "device", "saved", "--json"}).json();
  ASSERT_EQ(commandLine.run({"export", "device", "expected"}).exitCode, 0);
  EXPECT_EQ(*record.at("failedCount").as<std::int64_t>(), 0);
  EXPECT_EQ(contentsOf(commandLine / "saved"), contentsOf(commandLine / "expected"));
}

TEST(ExportCommand, LeavesOutKindsWithoutCallingThemMissing) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const Finished finished = commandLine.run({"export", "device", "saved", "--kinds", "photos"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, HasSubstr("1 copied · 0 already present · 2 transcripts · 0 failed\n"));
}

TEST(ExportCommand, WritesInTheLanguageAskedFor) {
  const CommandLine commandLine;
  Fixture::BackupContents contents = twoFiles();
  contents.whatsApp.messages.push_back({.chat = 1, .date = 700000120, .text = "oi", .isFromMe = 1});
  Fixture::writeBackup(contents, commandLine / "device");
  const auto write = [&](const char* destination, const char* locale) {
    EXPECT_EQ(commandLine.run({"export", "device", destination, "--locale", locale}).exitCode, 0);
    const Fixture::Bytes bytes = Fixture::readFile(commandLine / destination / "messages/Ana/_transcript.txt");
    return std::string(bytes.begin(), bytes.end());
  };
  EXPECT_THAT(write("saved", "pt-BR"), HasSubstr("[2023-03-08 20:28:40] Você: oi\n"));
  for (const char* none : {"C", "C.UTF-8", "POSIX", "en_US_POSIX"}) {
    EXPECT_THAT(write(none, none), HasSubstr("[2023-03-08 20:28:40] You: oi\n")) << none;
  }
  EXPECT_THAT(write("gespeichert", "de_DE"), HasSubstr("[2023-03-08 20:28:40] You: oi\n"));
}

TEST(ExportCommand, TellsOfTheArchiveInItsRecord) {
  const CommandLine commandLine;
  Fixture::writeBackup(encrypted(twoFiles()), commandLine / "device");
  const std::vector<std::string> arguments{"export", "device", "saved", "--password-stdin", "--json"};
  const Json::Object record = commandLine.run(arguments, password).json();
  EXPECT_EQ(*record.at("transcriptCount").as<std::int64_t>(), 2);
  EXPECT_EQ(*record.at("unresolvedArchiveLinkCount").as<std::int64_t>(), 0);
  EXPECT_EQ(*record.at("archiveIndexURL").as<std::string>(), (commandLine / "saved/index.html").string());
  const auto before = Fixture::treeSnapshot(commandLine / "saved");
  EXPECT_EQ(*commandLine.run(arguments, password).json().at("transcriptCount").as<std::int64_t>(), 2);
  EXPECT_EQ(Fixture::treeSnapshot(commandLine / "saved"), before);
}

TEST(ExportCommand, AnInterruptedExportIsContinuedToTheSameArchive) {
  const CommandLine commandLine;
  Fixture::writeBackup(Fixture::sampleBackup({.messageCount = 40'000, .mediaCount = 20}), commandLine / "device");
  ASSERT_EQ(commandLine.run({"export", "device", "expected"}).exitCode, 0);
  const Finished stopped = commandLine.interrupt({"export", "device", "saved"}, "Writing transcripts", SIGINT);
  EXPECT_NE(stopped.exitCode, 0);
  ASSERT_EQ(commandLine.run({"export", "device", "saved"}).exitCode, 0);
  EXPECT_EQ(contentsOf(commandLine / "saved"), contentsOf(commandLine / "expected"));
}

TEST(ExportCommand, RefusesToWriteIntoTheBackup) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  const auto before = Fixture::treeSnapshot(commandLine / "device");
  const Finished finished = commandLine.run({"export", "device", "device/saved"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, HasSubstr("Cannot write to the destination folder"));
  EXPECT_EQ(Fixture::treeSnapshot(commandLine / "device"), before);
}

TEST(ExportCommand, ReportsADestinationThatIsAFile) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  Fixture::writeFile(commandLine / "saved", "mine");
  const Json::Object object = commandLine.run({"export", "device", "saved", "--json"}).json();
  const Json::Object& error = *object.at("error").as<Json::Object>();
  EXPECT_EQ(*error.at("case").as<std::string>(), "destinationNotWritable");
  EXPECT_TRUE(error.contains("recoverySuggestion"));
}

TEST(ExportCommand, StopsAtTheFirstInterruptionAndCleansUp) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const CommandLine commandLine;
    // Enough rounds for the signal to arrive while the key is derived.
    Fixture::writeBackup(encrypted(twoFiles(), 3'000'000), commandLine / "device");
    Fixture::writeFile(commandLine / "password.txt", password);
    const Finished finished =
        commandLine.interrupt({"export", "device", "saved", "--password-file", "password.txt"}, "Unlocking", signal);
    EXPECT_EQ(finished.exitCode, 130);
    EXPECT_THAT(finished.errors, HasSubstr("The export was cancelled.\n"));
    EXPECT_TRUE(commandLine.temporaryFiles().empty());
    EXPECT_FALSE(fs::exists(commandLine / "saved"));
  }
}

TEST(ExportCommand, GoesOnWhereItsCallerHasItIgnoreTheEndOfTheTerminal) {
  const CommandLine commandLine;
  Fixture::writeBackup(encrypted(twoFiles(), 3'000'000), commandLine / "device");
  Fixture::writeFile(commandLine / "password.txt", password);
  const auto before = std::signal(SIGHUP, SIG_IGN);  // as `nohup` does
  const Finished finished =
      commandLine.interrupt({"export", "device", "saved", "--password-file", "password.txt"}, "Unlocking", SIGHUP);
  std::signal(SIGHUP, before);
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
}

TEST(ExportCommand, RedrawsOneProgressLineOnATerminal) {
  const CommandLine commandLine;
  Fixture::writeBackup(encrypted(twoFiles()), commandLine / "device");
  const Finished finished = commandLine.runOnTerminal({"export", "device", "saved"}, std::string(password) + "\n");
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, HasSubstr("\r\033[KCopying media [####################] 2 of 2"));
  EXPECT_THAT(finished.output, Not(HasSubstr(password)));
}

TEST(ExportCommand, CarriesOnWhenNobodyReadsItsMessages) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "device");
  ASSERT_EQ(commandLine.run({"export", "device", "expected", "--no-transcripts"}).exitCode, 0);
  const std::vector<std::vector<int>> closings{
      {}, {STDERR_FILENO}, {STDOUT_FILENO}, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}};
  for (const std::vector<int>& closed : closings) {
    fs::remove_all(commandLine / "saved");
    // The result, which is lost, is what the export cannot do without.
    EXPECT_EQ(commandLine.runWithoutStreams({"export", "device", "saved", "--no-transcripts"}, closed), 1);
    EXPECT_EQ(Fixture::treeSnapshot(commandLine / "saved/messages/Ana"),
              Fixture::treeSnapshot(commandLine / "expected/messages/Ana"));
    EXPECT_EQ(commandLine.runWithoutStreams({"export", "nowhere", "saved", "--json"}, closed), 1);
  }
}

TEST(ExportCommand, FollowsALinkBeforeItGoesUp) {
  const CommandLine commandLine;
  Fixture::writeBackup(twoFiles(), commandLine / "shelf/device");
  fs::create_directories(commandLine / "shelf/inner");
  fs::create_directory_symlink(commandLine / "shelf/inner", commandLine / "link");
  const Finished finished = commandLine.run({"export", "link/../device", "link/../saved/"});
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  EXPECT_TRUE(fs::exists(commandLine / "shelf/saved/messages/Ana"));
  EXPECT_FALSE(fs::exists(commandLine / "saved"));
}

}  // namespace
