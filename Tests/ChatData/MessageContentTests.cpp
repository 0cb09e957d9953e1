#include "TidewellCore/ChatData/MessageContent.h"

#include <gtest/gtest.h>

#include <set>

namespace {

// Every raw value stands for one case, in the order of the cases.
template <typename Enumeration>
void expectWholeTable(Enumeration last) {
  std::set<std::string_view> texts;
  int place = 0;
  for (const auto& [value, text] : rawValueTable(Enumeration{})) {
    EXPECT_EQ(static_cast<int>(value), place++) << text;
    EXPECT_TRUE(texts.insert(text).second) << text;
    EXPECT_EQ(fromRawValue<Enumeration>(text), value);
  }
  EXPECT_EQ(static_cast<int>(last), place - 1) << "the last case has a raw value";
}

TEST(NoticeKind, HasARawValueForEveryCase) { expectWholeTable(NoticeKind::channelPrivacyChanged); }

TEST(MessagePart, HasARawValueForEveryCase) { expectWholeTable(MessagePart::invite); }

TEST(MessageDetails, AreEqualWhenAllTheirPartsAre) {
  const MessageDetails details{.content = Poll{.question = "When?", .options = {{.words = "Now"}}},
                               .quote = Quote{.stanzaID = "3A"},
                               .reactions = {{.emoji = "👍", .person = Person{.isOwner = true}}},
                               .marks = {.isStarred = true}};
  MessageDetails other = details;
  EXPECT_EQ(details, other);
  std::get<Poll>(other.content).options[0].voters.push_back({.jid = "1@lid"});
  EXPECT_NE(details, other);
  other = details;
  other.reactions[0].person->isOwner = false;
  EXPECT_NE(details, other);
}

}  // namespace
