#include "TidewellCore/ExportTexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ChatArchiveStrings.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

// All that the core's sources of these kinds say, from the folder on.
std::string sources(const std::string& folder, const std::set<std::string>& endings) {
  std::string text;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TIDEWELL_CORE_FOLDER) / folder)) {
    if (!endings.contains(entry.path().extension())) continue;
    const Fixture::Bytes bytes = Fixture::readFile(entry.path());
    text.append(bytes.begin(), bytes.end());
  }
  return text;
}

std::set<std::string> found(const std::string& text, const char* pattern) {
  std::set<std::string> names;
  const std::regex expression(pattern);
  for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at) names.insert((*at)[1]);
  return names;
}

std::set<std::string> names(const ExportTexts::Section& section) {
  std::set<std::string> names;
  for (const auto& [name, text] : section) names.insert(name);
  return names;
}

TEST(ExportTexts, EveryLanguageHasEveryText) {
  EXPECT_THAT(ExportTexts::languages(), UnorderedElementsAreArray({"en", "pt-BR"}));
  for (const std::string& language : ExportTexts::languages()) {
    ASSERT_EQ(ExportTexts::sectionNames(language), ExportTexts::sectionNames("en")) << language;
    for (const std::string& section : ExportTexts::sectionNames("en")) {
      const auto& texts = ExportTexts::section(language, section);
      const auto& english = ExportTexts::section("en", section);
      EXPECT_EQ(names(texts), names(english)) << language << ", " << section;
      for (const auto& [name, text] : texts) {
        EXPECT_NE(text, "") << language << ", " << name;
        const auto original = english.find(name);
        if (original == english.end()) continue;
        const auto placeholders = found(text, R"((\{\w+\}))");
        EXPECT_EQ(placeholders, found(original->second, R"((\{\w+\}))")) << language << ", " << name;
      }
    }
  }
}

TEST(ExportTexts, ThePageUsesEveryTextAndAsksForNoOther) {
  const std::string script = sources("Archive/Viewer", {".js"});
  const std::string page = sources("Archive/Viewer", {".html"});
  const std::set<std::string> texts = names(ExportTexts::section("en", "page"));
  std::set<std::string> prescribed;
  for (const auto& field : ChatArchiveStrings::fields()) prescribed.emplace(field.name);
  for (const std::string& name : texts) {
    const bool isUsed = script.find('"' + name + '"') != std::string::npos ||
                        page.find("{{" + name + "}}") != std::string::npos || prescribed.contains(name);
    EXPECT_TRUE(isUsed) << "nothing says the text “" << name << "”";
  }
  for (const std::string& name : found(script, R"re(\btext\("(\w+)")re")) EXPECT_THAT(texts, Contains(name));
  for (const std::string& name : found(page, R"(\{\{(\w+)\}\})")) {
    const bool isText = name != "assetPrefix" && name != "base" && name != "scriptHash";
    EXPECT_TRUE(!isText || texts.contains(name)) << "the page asks for the text “" << name << "”";
  }
}

TEST(ExportTexts, TheCoreUsesEveryTextOfTheOtherSections) {
  const std::string core = sources("", {".cpp", ".h"});
  for (const std::string& section : ExportTexts::sectionNames("en")) {
    EXPECT_THAT(core, HasSubstr('"' + section + '"')) << "nothing reads the section";
    if (section == "page") continue;
    for (const std::string& name : names(ExportTexts::section("en", section))) {
      EXPECT_THAT(core.find('"' + name + '"'), testing::Ne(std::string::npos)) << "nothing says “" << name << "”";
    }
  }
}

TEST(ExportTexts, FillsThePlacesOfATextOnce) {
  EXPECT_EQ(ExportTexts::filled("{a} added {b}, {a}!", {{"a", "Ana"}, {"b", "Ben"}}), "Ana added Ben, Ana!");
  EXPECT_EQ(ExportTexts::filled("{a}{b}", {{"a", "{b}"}, {"b", "{a"}}), "{b}{a");
  EXPECT_EQ(ExportTexts::filled("{c} {a", {{"a", "Ana"}}), "{c} {a");
  EXPECT_EQ(ExportTexts::filled("", {}), "");
}

TEST(ExportTextsDeathTest, AskingForWhatIsNotThereIsAFault) {
  EXPECT_DEATH(ExportTexts::section("eo", "page"), "no texts in that language");
  EXPECT_DEATH(ExportTexts::section("en", "nonsense"), "no section of that name");
  EXPECT_DEATH(ExportTexts::text(ExportTexts::section("en", "page"), "nonsense"), "no text of that name");
}

}  // namespace
