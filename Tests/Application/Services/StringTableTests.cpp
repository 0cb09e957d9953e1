#include "Tidewell/Services/StringTable.h"

#include <gtest/gtest.h>

#include <string_view>

#include "Tests/Support/TemporaryDirectory.h"

namespace {

class StringTableTest : public testing::Test {
 protected:
  void write(const char* language, std::string_view json) {
    Fixture::writeFile(bundle_ / (std::string(language) + ".json"), json);
  }
  std::string backIn(const QStringList& languages) {
    return StringTable::load(bundle_.path(), languages).text(QStringLiteral("Back")).toStdString();
  }
  std::string backOf(std::string_view json) {
    write("xx", json);
    return backIn({"xx"});
  }

  Fixture::TemporaryDirectory bundle_;
};

TEST_F(StringTableTest, TranslatesAndFallsBackToTheEnglishText) {
  write("pt", R"({"Back": "Voltar"})");
  const StringTable table = StringTable::load(bundle_.path(), {"pt"});
  EXPECT_EQ(table.text("Back"), "Voltar");
  EXPECT_EQ(table.text("Continue"), "Continue");
  EXPECT_EQ(table.text("back"), "back") << "keys are whole texts";
  EXPECT_EQ(table.text(""), "");
}

TEST_F(StringTableTest, WithoutATableSpeaksEnglish) {
  EXPECT_EQ(StringTable().text("Back"), "Back");
  EXPECT_EQ(backIn({"pt"}), "Back");
  EXPECT_EQ(backIn({}), "Back");
  EXPECT_EQ(StringTable::load("/nowhere", {"en"}).text("Back"), "Back");
}

TEST_F(StringTableTest, GoesFromTheParticularLanguageToTheGeneralOne) {
  write("en", R"({"Back": "en"})");
  EXPECT_EQ(backIn({"pt-BR", "en"}), "en");
  write("pt", R"({"Back": "pt"})");
  EXPECT_EQ(backIn({"pt-BR", "en"}), "pt");
  EXPECT_EQ(backIn({"pt-Latn-BR", "en"}), "pt");
  write("pt-BR", R"({"Back": "pt-BR"})");
  EXPECT_EQ(backIn({"pt-BR", "en"}), "pt-BR");
  EXPECT_EQ(backIn({"pt-PT", "en"}), "pt");
}

TEST_F(StringTableTest, PrefersTheLanguageNamedFirst) {
  write("pt", R"({"Back": "pt"})");
  write("de", R"({"Back": "de"})");
  EXPECT_EQ(backIn({"de-AT", "pt-BR"}), "de");
  EXPECT_EQ(backIn({"pt-BR", "de-AT"}), "pt");
  EXPECT_EQ(backIn({"fr", "de"}), "de");
}

TEST_F(StringTableTest, ADamagedTableIsEmpty) {
  EXPECT_EQ(backOf(R"({"Back": "Voltar")"), "Back");
  EXPECT_EQ(backOf(""), "Back");
  EXPECT_EQ(backOf("\xFF\xFE"), "Back");
  EXPECT_EQ(backOf(R"(["Back", "Voltar"])"), "Back");
  EXPECT_EQ(backOf("null"), "Back");
}

TEST_F(StringTableTest, ADamagedTableHidesNoOtherLanguage) {
  write("pt", "{");
  write("de", R"({"Back": "Zurück"})");
  EXPECT_EQ(backIn({"pt", "de"}), "Back") << "no mixture of languages";
  EXPECT_EQ(backIn({"de"}), "Zurück");
}

TEST_F(StringTableTest, LeavesOutWhatIsNoTranslation) {
  EXPECT_EQ(backOf(R"({"Back": ""})"), "Back");
  EXPECT_EQ(backOf(R"({"Back": 7})"), "Back");
  EXPECT_EQ(backOf(R"({"Back": null})"), "Back");
  EXPECT_EQ(backOf(R"({"Back": {"one": "Voltar"}})"), "Back");
}

TEST_F(StringTableTest, PassesOverAFolderOfATablesName) {
  std::filesystem::create_directory(bundle_ / "pt-BR.json");
  write("pt", R"({"Back": "Voltar"})");
  EXPECT_EQ(backIn({"pt-BR"}), "Voltar");
}

}  // namespace
