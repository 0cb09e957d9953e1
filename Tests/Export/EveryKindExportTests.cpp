#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Tests/Archive/GoldenTranscript.h"
#include "Tests/Export/ArchiveReading.h"
#include "Tests/Export/ExportScene.h"
#include "Tests/Support/EveryKind.h"
#include "Tests/Support/SampleConversations.h"

// A message of every kind, from the rows of a backup to what people read.
namespace {

using ExportTest::listedChats;
using ExportTest::messagesOf;
using ExportTest::textIn;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

struct Language {
  const char* code = "";
  const char* locale = "";
  TranscriptStyle style;
};

class EveryKindExport : public testing::TestWithParam<Language> {
 protected:
  EveryKindExport() : scene_({.whatsApp = Fixture::EveryKind::app()}) {
    summary_ = exporter().exportBackup({.backup = scene_.backup, .destination = scene_.destination});
  }

  static Exporter exporter() {
    return {.timeZone = TimeZone{"UTC"}, .locale = Locale{GetParam().locale}, .transcriptStyle = GetParam().style};
  }

  // The transcripts of all chats, in the archive's order.
  std::string transcripts(const char* file) const {
    std::string all;
    for (const Json::Object& chat : listedChats(scene_.content)) {
      all += ExportTest::textOf(scene_.content / textIn(chat, "folder") / file) + "\n";
    }
    return all;
  }

  // Every text that people read: in the list of chats, and of each message.
  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const Json::Object& chat : listedChats(scene_.content)) {
      const std::string name = textIn(chat, "name");
      texts.insert(texts.end(), {name, textIn(chat, "preview")});
      for (const Json::Object& message : messagesOf(scene_.content, name)) {
        texts.insert(texts.end(), {textIn(message, "sender"), textIn(message, "text")});
      }
    }
    return texts;
  }

  ExportTest::Scene scene_;
  ExportSummary summary_;
};

INSTANTIATE_TEST_SUITE_P(Languages, EveryKindExport,
                         testing::Values(Language{"en", "en_US", TranscriptStyle::english()},
                                         Language{"pt-BR", "pt_BR", TranscriptStyle::portuguese()}),
                         [](const auto& language) { return std::string(language.param.code).substr(0, 2); });

// A search goes through the texts of messages.
TEST_P(EveryKindExport, FindsTheWordsOfEveryKind) {
  std::string all;
  for (const std::string& text : texts()) all += text + "\n";
  for (const char* words : {"Friday", "Which day?", "Zoë", "+1 555 000 0003", "emil@example.org", "12 Main St",
                            "What a light", "Prices.pdf", "Report.pdf", "Come and dig", "A lamp", "Track", "“Village”",
                            "Garden friends", "1:02:03", "EUR 19"}) {
    EXPECT_THAT(all, HasSubstr(words));
  }
}

// Without what a machine wrote for a machine.
void expectReadable(const std::string& text) {
  for (const char* raw : {"[media]", "@s.whatsapp.net", "@lid", "@g.us", "@status", "@newsletter", "{\"", "[{", "COah",
                          "3EB0", "AbCd0123"}) {
    EXPECT_THAT(text, Not(HasSubstr(raw)));
  }
  EXPECT_THAT(text, Not(ContainsRegex("[A-Za-z0-9+/]{24}"))) << "base64";
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST_P(EveryKindExport, ReadsWell) {
  expectGolden(transcripts("_transcript.txt"),
               std::string(TIDEWELL_GOLDEN_FOLDER "/every-kind.") + GetParam().code + ".txt");
}

TEST_P(EveryKindExport, ShowsNothingThatOnlyMachinesRead) {
  for (const std::string& text : texts()) expectReadable(text);
  for (const char* file : {"_transcript.txt", "_transcript.html"}) {
    for (const std::string& line : lines(transcripts(file))) expectReadable(line);
  }
}

TEST(SampleExport, LeavesNoMessageWithoutWords) {
  const ExportTest::Scene scene(Fixture::sampleBackup({.messageCount = 1'000, .mediaCount = 100}));
  scene.run(ExportTest::everything);
  std::size_t transcripts = 0;
  for (const auto& [path, content] : ExportTest::filesBelow(scene.content)) {
    if (!path.ends_with("_transcript.txt")) continue;
    ++transcripts;
    EXPECT_THAT(content, Not(HasSubstr("[media]"))) << path;
  }
  EXPECT_GT(transcripts, 30U);
}

TEST_P(EveryKindExport, IsAnArchiveThatIsWholeAndHoldsWhatAScanCounts) {
  ExportTest::expectWholeArchive(scene_.destination);
  EXPECT_EQ(summary_.failures.size(), 0U);
  std::map<std::string, std::size_t> shown;
  for (const Json::Object& chat : listedChats(scene_.content)) {
    const std::string name = textIn(chat, "name");
    shown[name] = messagesOf(scene_.content, name).size();
  }
  std::map<std::string, std::size_t> counted;
  for (const ScanChat& chat : exporter().scan({.backup = scene_.backup}).chats) {
    counted[chat.name] = static_cast<std::size_t>(chat.messageCount);
  }
  EXPECT_EQ(shown, counted);
}

}  // namespace
