#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Export/ExportScene.h"

using ExportTest::ana;
using ExportTest::bea;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

struct SelectionTest : testing::Test {
  SelectionTest() {
    contents.whatsApp.chats[1].name = "Família";
    contents.whatsApp.messages[3].date = ExportTest::firstDate + 366 * 86400.0;
  }
  Finished run(std::vector<std::string> arguments) {
    Fixture::writeBackup(contents, commandLine / "device");
    return commandLine.run(arguments);
  }

  Fixture::BackupContents contents = ExportTest::smallBackup();
  CommandLine commandLine;
};

TEST_F(SelectionTest, AScanShowsWhatIsChosen) {
  const Finished chosen = run({"scan", "--chat", "+55 11 90000-1111", "--chat", "familia", "device"});
  EXPECT_EQ(chosen.exitCode, 0);
  EXPECT_THAT(chosen.output, HasSubstr("\nAna "));
  EXPECT_THAT(chosen.output, HasSubstr("\n2 chats · "));
  const Json::Object left = run({"scan", "device", "--not-chat", ana, "--until", "2023-12-31", "--json"}).json();
  EXPECT_EQ(*left.at("chatCount").as<std::int64_t>(), 1);
  EXPECT_EQ(*left.at("mediaFileCount").as<std::int64_t>(), 1);
}

TEST_F(SelectionTest, AnExportTakesWhatIsChosen) {
  EXPECT_EQ(run({"export", "device", "out", "--chat", "Ana", "--chat", "Bea", "--since", "2024-01-01"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(commandLine / "out" / "messages" / "Bea"));
  EXPECT_FALSE(std::filesystem::exists(commandLine / "out" / "messages" / "Ana"));
}

TEST_F(SelectionTest, DaysAreThoseOfTheGivenZone) {
  const std::vector<std::string> ninth{"export", "device", "out", "--since", "2023-03-09", "--until", "2023-03-09"};
  auto ahead = ninth;
  ahead.insert(ahead.end(), {"--time-zone", "Pacific/Kiritimati", "--json"});
  EXPECT_EQ(*run(ahead).json().at("copiedCount").as<std::int64_t>(), 3);
}

TEST_F(SelectionTest, AnUnknownNameEndsWithTheNearestOnes) {
  const Finished finished = run({"export", "device", "out", "--chat", "Anna"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_THAT(finished.errors, EndsWith("No chat of this backup is called “Anna”, or has that number.\n\n"
                                        "These are called much the same:\n“Ana” · +55 11 90000-1111 · " +
                                        ana + "\n"));
  EXPECT_FALSE(std::filesystem::exists(commandLine / "out"));
}

TEST_F(SelectionTest, AnAmbiguousNameEndsWithAllThatFit) {
  contents.whatsApp.chats[2].name = "ANA";
  const Finished finished = run({"scan", "device", "--not-chat", "ana", "--json"});
  EXPECT_EQ(finished.exitCode, 1);
  const Json::Object output = finished.json();
  const Json::Object& error = *output.at("error").as<Json::Object>();
  EXPECT_EQ(*error.at("case").as<std::string>(), "ambiguousChat");
  EXPECT_THAT(*error.at("recoverySuggestion").as<std::string>(), testing::AllOf(HasSubstr(ana), HasSubstr(bea)));
}

}  // namespace
