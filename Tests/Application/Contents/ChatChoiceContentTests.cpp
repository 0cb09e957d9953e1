#include "Tidewell/Contents/ChatChoiceContent.h"

#include <gtest/gtest.h>

#include "Tests/Application/Contents/ContentTestTexts.h"
#include "Tidewell/Contents/OptionsStepContent.h"

namespace {

const L10n texts = americanTexts();

ExportState scanned() {
  ExportState state;
  state.step = WizardStep::options;
  state.scanResult = ScanResult{.statsByKind = {{MediaKind::photos, {.count = 3, .byteCount = 6'000'000}}}};
  for (const char* name : {"Ana", "Bea", "Família"}) {
    state.scanResult->chats.push_back({.jid = name,
                                       .name = name,
                                       .messageCount = std::string(name) == "Ana" ? 1 : 1'204,
                                       .mediaBytes = 2'000'000,
                                       .statsByKind = {{MediaKind::photos, {.count = 1, .byteCount = 2'000'000}}}});
  }
  return state;
}

TEST(ChatChoiceContent, TellsHowManyAreChosen) {
  ExportState state = scanned();
  EXPECT_EQ(ChatChoiceContent::of(state, texts).chats, "All 3");
  EXPECT_EQ(ChatChoiceContent::of(state, texts).size, "6.0 MB");
  state.chatChoice.leftOut = {"Ana", "Bea"};
  EXPECT_EQ(ChatChoiceContent::of(state, texts).chats, "1 of 3");
  EXPECT_EQ(ChatChoiceContent::of(state, texts).size, "2.0 MB");
  EXPECT_EQ(OptionsStepContent::of(state, texts).kinds[0].count, "1");
  EXPECT_EQ(OptionsStepContent::of(state, texts).chats, "0") << "of the whole backup, as the scan counted them";
  EXPECT_TRUE(ChatChoiceContent::of(state, texts).canChoose);
  EXPECT_FALSE(ChatChoiceContent::of(ExportState(), texts).canChoose);
}

TEST(ChatChoiceContent, DaysMakeTheSizeALimit) {
  ExportState state = scanned();
  EXPECT_EQ(DestinationContent::of(state, texts).willCopy, "6.0 MB");
  state.chatChoice.until = "2024-05-31";
  EXPECT_EQ(DestinationContent::of(state, texts).willCopy, "Up to 6.0 MB");
  EXPECT_EQ(ChatChoiceContent::of(state, texts).lastDay, "2024-05-31");
  EXPECT_EQ(ChatChoiceContent::of(state, texts).fault, "");
  state.chatChoice.until = "soon";
  EXPECT_EQ(ChatChoiceContent::of(state, texts).fault, "Write a day like this: 2024-05-31");
}

TEST(ChatRowContent, HasARowForEachChatThatIsFound) {
  ExportState state = scanned();
  EXPECT_TRUE(ChatRowContent::listOf(state, texts).isEmpty()) << "nobody looks at it";
  state.chatChoice.isListShown = true;
  state.chatChoice.leftOut = {"Bea"};
  const QList<ChatRowContent> all = ChatRowContent::listOf(state, texts);
  ASSERT_EQ(all.size(), 3);
  EXPECT_EQ(all[0], (ChatRowContent{.id = "Ana",
                                    .name = "Ana",
                                    .size = "1 message · 2.0 MB",
                                    .accessibleName = "Ana, 1 message, 2.0 MB",
                                    .included = true}));
  EXPECT_EQ(all[1].size, "1,204 messages · 2.0 MB");
  EXPECT_FALSE(all[1].included);
  state.chatChoice.search = "familia";
  ASSERT_EQ(ChatRowContent::listOf(state, texts).size(), 1);
  EXPECT_EQ(ChatRowContent::listOf(state, texts)[0].name, QString("Família"));
  EXPECT_FALSE(ChatChoiceContent::of(state, texts).foundNone);
  state.chatChoice.search = "nobody";
  EXPECT_TRUE(ChatRowContent::listOf(state, texts).isEmpty());
  EXPECT_TRUE(ChatChoiceContent::of(state, texts).foundNone);
}

}  // namespace
