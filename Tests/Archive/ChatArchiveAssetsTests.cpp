#include "TidewellCore/Archive/ChatArchiveAssets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/ExportTexts.h"
#include "TidewellCore/Platform/Base64.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string page(const ChatArchiveStrings& strings = ChatArchiveStrings::english()) {
  return ChatArchiveAssets::indexHTML(strings, "messages/_viewer/");
}

TEST(ChatArchiveAssets, ThePageSpeaksTheChosenLanguage) {
  EXPECT_THAT(page(), HasSubstr("<html lang=\"en\">"));
  EXPECT_THAT(page(), HasSubstr("<title>Chat Archive</title>"));
  const std::string brazilian = page(ChatArchiveStrings::brazilianPortuguese());
  EXPECT_THAT(brazilian, HasSubstr("<html lang=\"pt-BR\">"));
  EXPECT_THAT(brazilian, HasSubstr("Filtrar conversas"));
  EXPECT_THAT(brazilian, Not(HasSubstr("Filter chats")));
}

TEST(ChatArchiveAssets, ThePageHasTheElementsThatScriptAndStyleShare) {
  for (const char* id :
       {"app", "sidebar", "mode-chats", "mode-messages", "search", "chat-list", "search-results", "thread", "back",
        "thread-avatar", "thread-title", "thread-sub", "messages", "lightbox", "lightbox-close", "lightbox-img"}) {
    EXPECT_THAT(page(), HasSubstr("id=\"" + std::string(id) + "\""));
  }
  for (const char* name : {"side-head", "modes", "thread-head"}) {
    EXPECT_THAT(page(), HasSubstr("class=\"" + std::string(name)));
  }
}

TEST(ChatArchiveAssets, ThePageForbidsTheNetworkAndEveryScriptButItsOwn) {
  EXPECT_THAT(page(), HasSubstr("default-src 'none'"));
  EXPECT_THAT(page(), Not(HasSubstr("unsafe")));
  EXPECT_THAT(page(), Not(HasSubstr("http:")));
  const std::string text = page();
  const auto begin = text.find("<script>") + std::string("<script>").size();
  const std::string script = text.substr(begin, text.find("</script>", begin) - begin);
  EXPECT_THAT(script, HasSubstr("window.ARCHIVE_BASE = \"messages/\""));
  EXPECT_THAT(text, HasSubstr("'sha256-" + Fixture::sha256Base64(script) + "'"));
}

TEST(ChatArchiveAssets, TheScriptLeavesNothingInTheWindow) {
  EXPECT_TRUE(ChatArchiveAssets::script().starts_with("(function () {\n\"use strict\";\n"));
  EXPECT_TRUE(ChatArchiveAssets::script().ends_with("})();\n"));
}

TEST(ChatArchiveAssets, TheScriptCarriesEveryTextInEnglish) {
  const std::string script(ChatArchiveAssets::script());
  for (const auto& [name, text] : ExportTexts::section("en", "page")) {
    EXPECT_THAT(script, HasSubstr("\n  " + name + ": \"" + text + "\",\n"));
  }
}

TEST(ChatArchiveStrings, EveryFieldHasATextInBothLanguages) {
  EXPECT_EQ(ChatArchiveStrings::fields().size(), 39U);
  std::set<std::string_view> names;
  for (const auto& [name, text] : ChatArchiveStrings::fields()) {
    EXPECT_FALSE((ChatArchiveStrings::english().*text).empty()) << name;
    EXPECT_FALSE((ChatArchiveStrings::brazilianPortuguese().*text).empty()) << name;
    names.insert(name);
  }
  EXPECT_EQ(names.size(), 39U);
}

TEST(ChatArchiveStrings, PortugueseIsForPortuguese) {
  for (const char* code : {"pt", "pt-BR", "pt_PT", "PT"}) {
    EXPECT_EQ(ChatArchiveStrings::forLanguageCode(code), ChatArchiveStrings::brazilianPortuguese()) << code;
  }
  for (const char* code : {"en", "de", "", "ptx", "x-pt"}) {
    EXPECT_EQ(ChatArchiveStrings::forLanguageCode(code), ChatArchiveStrings::english()) << code;
  }
  EXPECT_EQ(ChatArchiveStrings::forStyle(TranscriptStyle::portuguese()).language, "pt-BR");
}

TEST(ChatArchiveStrings, EachKindHasItsLabel) {
  const ChatArchiveStrings& strings = ChatArchiveStrings::english();
  EXPECT_EQ(strings.mediaLabel(MediaKind::photos), "Photo");
  EXPECT_EQ(strings.mediaLabel(MediaKind::videos), "Video");
  EXPECT_EQ(strings.mediaLabel(MediaKind::voiceNotes), "Voice note");
  EXPECT_EQ(strings.mediaLabel(MediaKind::stickers), "Sticker");
  EXPECT_EQ(strings.mediaLabel(MediaKind::documents), "Document");
}

}  // namespace
