#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Tests/EndToEnd/CommandLine.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

TEST(Usage, TellsItsVersion) {
  const Finished finished = CommandLine().run({"--version"});
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.output, StartsWith("tidewell "));
}

TEST(Usage, HelpsWithEveryCommand) {
  const CommandLine commandLine;
  EXPECT_THAT(commandLine.run({"--help"}).output, HasSubstr("export"));
  for (const std::string command : {"list", "scan", "export", "dedupe", "verify", "render"}) {
    const Finished finished = commandLine.run({command, "--help"});
    EXPECT_EQ(finished.exitCode, 0) << command;
    EXPECT_THAT(finished.output, HasSubstr("--json")) << command;
  }
}

TEST(Usage, EndsWithTwoForWhatItDoesNotUnderstand) {
  const CommandLine commandLine;
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"bake"},
      {"list", "--frobnicate"},
      {"scan"},
      {"export", "backup"},
      {"export", "backup", "destination", "surplus"},
      {"export", "backup", "destination", "--kinds", "photos,paintings"},
      {"export", "backup", "destination", "--kinds", ""},
      {"export", "backup", "destination", "--formats", "json,xml"},
      {"export", "backup", "destination", "--formats", ""},
      {"export", "backup", "destination", "--formats", "csv", "--no-transcripts"},
      {"export", "backup", "destination", "--time-zone", "Mars/Olympus"},
      {"export", "backup", "destination", "--locale", "xx_QQ"},
      {"scan", "backup", "--password-stdin", "--password-file", "file"},
      {"scan", "backup", "--password", "secret"},
      {"scan", ""},
      {"export", "", "destination"},
      {"export", "backup", ""},
      {"dedupe", ""},
      {"verify", ""},
      {"render", ""},
      {"list", "--root", ""},
      {"scan", "backup", "--password-file", ""},
      {"scan", "backup", "--chat"},
      {"scan", "backup", "--chat", ""},
      {"scan", "backup", "--since", "yesterday"},
      {"scan", "backup", "--until", "2023-02-29"},
      {"export", "backup", "destination", "--since", "2024-05-02", "--until", "2024-05-01"},
  };
  for (const auto& arguments : wrong) {
    const Finished finished = commandLine.run(arguments);
    EXPECT_EQ(finished.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_NE(finished.errors, "") << testing::PrintToString(arguments);
    EXPECT_EQ(finished.output, "") << testing::PrintToString(arguments);
  }
  EXPECT_FALSE(std::filesystem::exists(commandLine / "destination"));
}

TEST(Usage, FailsWhereItsHelpCannotBeWritten) {
  for (const char* question : {"--help", "--version"}) {
    EXPECT_EQ(CommandLine().runWithoutStreams({question}, {}), 1) << question;
    EXPECT_EQ(CommandLine().runWithoutStreams({question}, {STDOUT_FILENO}), 1) << question;
  }
}

TEST(Usage, NamesWhatIsEmpty) {
  EXPECT_EQ(CommandLine().run({"export", "backup", ""}).errors,
            "DESTINATION: may not be empty\nRun with --help for more information.\n");
}

TEST(Usage, NeverRepeatsWhatMayBeAPassword) {
  const std::vector<std::vector<std::string>> wrong{
      {"scan", "backup", "secret"},
      {"scan", "backup", "--password", "secret"},
      {"scan", "backup", "--password=secret"},
      {"scan", "backup", "-psecret"},
      {"scan", "backup", "--password-stdin=secret"},
      {"scan", "backup", "--password-stdin", "secret"},
      {"export", "backup", "destination", "-p", "secret"},
      {"secret"},
  };
  for (const auto& arguments : wrong) {
    const Finished finished = CommandLine().run(arguments);
    EXPECT_EQ(finished.exitCode, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(finished.errors, Not(HasSubstr("secret"))) << testing::PrintToString(arguments);
    EXPECT_THAT(finished.errors, HasSubstr("--help")) << testing::PrintToString(arguments);
  }
}

TEST(Usage, NamesTheOptionThatIsUnknown) {
  EXPECT_THAT(CommandLine().run({"scan", "backup", "--password=secret"}).errors,
              StartsWith("--password was not expected. A password is never an argument"));
}

}  // namespace
