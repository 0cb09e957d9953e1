#include <gmock/gmock.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <map>

#include "Tests/Application/Services/SourceTexts.h"
#include "Tidewell/Services/ResourceBundle.h"
#include "TidewellCore/Backup/DatabaseCheck.h"
#include "TidewellCore/ChatData/MissingMessages.h"
#include "TidewellCore/ChatData/UnreadApps.h"
#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/ExportTiming.h"
#include "TidewellCore/ExportProgress.h"

namespace {

using std::filesystem::path;
using testing::ElementsAre;
using testing::IsEmpty;

const path sourceFolder = TIDEWELL_SOURCE_FOLDER;
const path bundle = sourceFolder / "Tidewell/Resources" / ResourceBundle::name;

std::map<std::string, std::string> readTable(const path& file) {
  QFile opened(file);
  EXPECT_TRUE(opened.open(QIODevice::ReadOnly)) << file;
  QJsonParseError error;
  const QJsonObject table = QJsonDocument::fromJson(opened.readAll(), &error).object();
  EXPECT_EQ(error.error, QJsonParseError::NoError) << file << ": " << error.errorString().toStdString();
  std::map<std::string, std::string> texts;
  for (auto entry = table.begin(); entry != table.end(); ++entry) {
    EXPECT_TRUE(entry.value().isString()) << entry.key().toStdString();
    texts.emplace(entry.key().toStdString(), entry.value().toString().toStdString());
  }
  return texts;
}

SourceTexts textsOf(std::initializer_list<const char*> folders) {
  SourceTexts texts;
  for (const char* folder : folders) texts.readFolder(sourceFolder / folder);
  return texts;
}

TEST(SourceTexts, FindsWhatIsLookedUp) {
  SourceTexts texts;
  texts.read(R"(a.text("one"); b = format(QStringLiteral("two"), {x}); L10n.text( "three" ) fmt::format("four");
                text(u"five"_s); context("six"); text(name, "seven"); PathText::text("eight"))");
  EXPECT_THAT(texts.lookedUp, ElementsAre("five", "one", "three", "two"));
  EXPECT_EQ(texts.all.size(), 8U);
}

TEST(SourceTexts, ReadsLiteralsAsTheCompilerDoes) {
  SourceTexts texts;
  texts.read("text(\"one \"\n     \"line\"); // not \"this\"\n/* nor \"this\" */ '\"' text(\"q \\\"\\n\")");
  EXPECT_THAT(texts.all, ElementsAre("one line", "q \"\n"));
  EXPECT_THAT(texts.lookedUp, ElementsAre("one line", "q \"\n"));
}

TEST(Texts, EnglishMapsToItself) {
  const auto english = readTable(bundle / "en.json");
  EXPECT_FALSE(english.empty());
  for (const auto& [key, text] : english) EXPECT_EQ(key, text);
}

TEST(Texts, EveryTextThatIsLookedUpHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const std::string& text : textsOf({"Tidewell"}).lookedUp) {
    EXPECT_TRUE(english.contains(text)) << "en.json lacks: " << text;
  }
}

// They are looked up by a name, so nobody finds them where that happens.
TEST(Texts, EveryPhaseOfARunHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const auto& [phase, name] : rawValueTable(ExportProgress::Phase{})) {
    EXPECT_TRUE(english.contains(std::string(ExportProgress::title(phase)))) << name;
  }
}

TEST(Texts, EveryTimeLeftHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const auto unit : {TimeLeft::Unit::second, TimeLeft::Unit::minute, TimeLeft::Unit::hour}) {
    for (const std::string_view text : {ExportTiming::words(unit).one, ExportTiming::words(unit).many}) {
      EXPECT_TRUE(english.contains(std::string(text))) << text;
    }
  }
}

TEST(Texts, EveryHeadlineOfFailuresHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const FailureReason reason : CopyFailures::allReasons) {
    for (const std::string_view text : {CopyFailures::words(reason).one, CopyFailures::words(reason).many}) {
      EXPECT_TRUE(english.contains(std::string(text))) << text;
    }
  }
}

TEST(Texts, EveryEarlyEndHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const char* text : {EarlyEnd::fullDestination, EarlyEnd::fullTemporaryFolder, EarlyEnd::backupGone,
                           EarlyEnd::backupGoneWhileRead, EarlyEnd::destinationBroken}) {
    EXPECT_TRUE(english.contains(text)) << text;
  }
}

TEST(Texts, EveryFaultOfADatabaseHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const DatabaseCheck::Sentence& sentence : DatabaseCheck::sentences) {
    EXPECT_TRUE(english.contains(sentence.text)) << sentence.text;
  }
}

TEST(Texts, EveryWarningOfMissingMessagesHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const MissingMessages::Words& words : MissingMessages::allWords) {
    for (const std::string_view text : {words.one, words.many}) {
      EXPECT_TRUE(english.contains(std::string(text))) << text;
    }
  }
}

TEST(Texts, EveryWarningOfAnAppThatIsNotReadHasAKey) {
  const auto english = readTable(bundle / "en.json");
  for (const char* text : {UnreadApps::businessNotRead, UnreadApps::personalNotRead,
                           UnreadApps::personalWithoutMessages, UnreadApps::businessWithoutMessages}) {
    EXPECT_TRUE(english.contains(text)) << text;
  }
}

TEST(Texts, EveryKeyStandsInTheApplicationOrTheCore) {
  const SourceTexts known = textsOf({"Tidewell", "TidewellCore"});
  for (const auto& [key, text] : readTable(bundle / "en.json")) {
    EXPECT_TRUE(known.all.contains(key)) << "nobody says: " << key;
  }
}

TEST(Texts, EveryLanguageTranslatesKnownTexts) {
  const auto english = readTable(bundle / "en.json");
  for (const auto& entry : std::filesystem::directory_iterator(bundle)) {
    EXPECT_EQ(entry.path().extension(), ".json");
    for (const auto& [key, text] : readTable(entry.path())) {
      EXPECT_TRUE(english.contains(key)) << entry.path().filename() << " translates what nobody says: " << key;
    }
  }
}

}  // namespace
