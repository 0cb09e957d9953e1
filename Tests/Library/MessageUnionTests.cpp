#include "TidewellCore/Library/MessageUnion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "TidewellCore/Library/KeptChats.h"
#include "TidewellCore/Library/MessageFacts.h"
#include "TidewellCore/Library/MessageMatching.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Lists that are united, and the texts that come of it.
struct MessageUnionTest : testing::Test {
  std::string_view facts(MessageDetails details) { return texts.add(MessageFacts::write(details)); }

  std::vector<KeptMessage> changes(const std::vector<KeptMessage>& kept, const std::vector<KeptMessage>& told,
                                   bool isNewer) {
    return changes({kept, 100}, {told, isNewer ? 200.0 : 50.0});
  }
  std::vector<KeptMessage> changes(const MessageUnion::Side& kept, const MessageUnion::Side& told) {
    std::vector<KeptMessage> changed;
    MessageUnion::changes(kept, told, texts, MessageUnion::everyFile,
                          [&](const KeptMessage& message) { changed.push_back(message); });
    return changed;
  }

  // What is kept once `told` was taken in.
  std::vector<KeptMessage> united(std::vector<KeptMessage> kept, const std::vector<KeptMessage>& told, bool isNewer) {
    for (const KeptMessage& change : changes(kept, told, isNewer)) {
      const auto place = std::ranges::find(kept, change.key, &KeptMessage::key);
      place == kept.end() ? kept.push_back(change) : void(*place = change);
    }
    KeptChats::sort(kept);
    return kept;
  }

  TextArena texts;
};

std::vector<std::string_view> textsOf(const std::vector<KeptMessage>& messages) {
  std::vector<std::string_view> texts;
  for (const KeptMessage& message : messages) texts.push_back(message.text);
  return texts;
}

TEST_F(MessageUnionTest, CountsWhatIsNewAsItWouldBeAdded) {
  const std::vector<KeptMessage> kept{{.key = 1, .time = 10, .stanzaID = "A", .text = "one"},
                                      {.key = 2, .time = 20, .text = "two"}};
  EXPECT_EQ(MessageMatching(kept, kept).newCount(), 0);
  EXPECT_EQ(MessageMatching({}, kept).newCount(), 2);
  EXPECT_EQ(MessageMatching(kept, {}).newCount(), 0);
  const std::vector<KeptMessage> told{{.key = 7, .time = 10, .stanzaID = "A", .text = "one, edited"},
                                      {.key = 2, .time = 20, .text = "two"},
                                      {.key = 3, .time = 20, .text = "two"}};
  EXPECT_EQ(MessageMatching(kept, told).newCount(), 1);
  EXPECT_EQ(united(kept, told, true).size(), 3U);
}

TEST_F(MessageUnionTest, TheSameAgainChangesNothing) {
  const std::vector<KeptMessage> told{{.key = 1, .time = 10, .stanzaID = "A", .text = "one"},
                                      {.key = 2, .time = 20, .text = "two"},
                                      {.key = 3, .text = "undated"}};
  const auto kept = united({}, told, true);
  EXPECT_EQ(kept.size(), 3U);
  EXPECT_THAT(changes(kept, told, true), IsEmpty());
  EXPECT_THAT(changes(kept, told, false), IsEmpty());
}

TEST_F(MessageUnionTest, WhatAnOlderBackupTellsOfAChatThatTheNewerHasEmptyIsGone) {
  const auto kept = united({}, {{.key = 1, .time = 10, .text = "one"}}, false);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_TRUE(kept[0].isGone(100));
}

TEST_F(MessageUnionTest, AMessageIsKnownByItsStanzaUnderAnyKey) {
  const std::vector<KeptMessage> kept{{.key = 7, .time = 10, .stanzaID = "A", .text = "before"}};
  const std::vector<KeptMessage> told{{.key = 1, .time = 10, .stanzaID = "A", .text = "edited"}};
  const auto newer = united(kept, told, true);
  ASSERT_EQ(newer.size(), 1U);
  EXPECT_EQ(newer[0].key, 7);
  EXPECT_EQ(newer[0].text, "edited");
  EXPECT_EQ(united(kept, told, false)[0].text, "before");
}

TEST_F(MessageUnionTest, AnotherMessageUnderATakenKeyGetsAFreeOne) {
  const std::vector<KeptMessage> kept{{.key = 1, .time = 10, .stanzaID = "A", .text = "old phone"}};
  const std::vector<KeptMessage> told{{.key = 1, .time = 20, .stanzaID = "B", .text = "new phone"},
                                      {.key = 2, .time = 30, .stanzaID = "C", .text = "and more"}};
  const auto all = united(kept, told, true);
  EXPECT_THAT(textsOf(all), ElementsAre("old phone", "new phone", "and more"));
  EXPECT_EQ(all[1].key, 3) << "the key 2 is wanted by another";
  EXPECT_EQ(all[2].key, 2);
  EXPECT_TRUE(all[0].isGone(200));
  EXPECT_FALSE(all[1].isGone(200));
}

TEST_F(MessageUnionTest, EqualWordsOfOneSecondStayAsManyAsTheyAre) {
  const KeptMessage first{.key = 1, .time = 10, .text = "ok"};
  const KeptMessage second{.key = 2, .time = 10, .placeInSecond = 1, .text = "ok"};
  const auto kept = united({}, {first, second}, true);
  EXPECT_THAT(textsOf(kept), ElementsAre("ok", "ok"));
  const KeptMessage oneOfThem{.key = 5, .time = 10, .text = "ok"};
  EXPECT_EQ(united(kept, {oneOfThem}, true).size(), 2U);
}

TEST_F(MessageUnionTest, ADeletedMessageKeepsItsWordsInWhateverOrderItIsTold) {
  const KeptMessage said{.key = 1, .time = 10, .stanzaID = "A", .text = "secret", .medium = 4};
  const KeptMessage deleted{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = DeletedMessage()})};
  for (const auto& outcome : {united({said}, {deleted}, true), united({deleted}, {said}, false)}) {
    ASSERT_EQ(outcome.size(), 1U);
    EXPECT_EQ(outcome[0].text, "secret");
    EXPECT_EQ(outcome[0].medium, 4);
    EXPECT_EQ(outcome[0].facts, "");
    EXPECT_TRUE(outcome[0].isDeletedLater);
    EXPECT_FALSE(outcome[0].isGone(200));
  }
}

TEST_F(MessageUnionTest, WhatIsWaitedForOrNotUnderstoodTakesNoWordsPlace) {
  const KeptMessage said{.key = 1, .time = 10, .stanzaID = "A", .text = "hello"};
  for (const MessageContent& content : {MessageContent(WaitingMessage()), MessageContent(UnsupportedMessage{99})}) {
    const KeptMessage little{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = content})};
    for (const auto& outcome : {united({said}, {little}, true), united({little}, {said}, false)}) {
      EXPECT_EQ(outcome[0].text, "hello");
      EXPECT_FALSE(outcome[0].isDeletedLater);
    }
    EXPECT_EQ(united({little}, {said}, true)[0].text, "hello") << "what was waited for came";
  }
}

TEST_F(MessageUnionTest, AMediumStaysWhenThePhoneHasLostIt) {
  const KeptMessage whole{.key = 1, .time = 10, .stanzaID = "A", .medium = 4};
  const KeptMessage lost{
      .key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = MissingMedia{.part = MessagePart::video}})};
  for (const auto& outcome : {united({whole}, {lost}, true), united({lost}, {whole}, false)}) {
    EXPECT_EQ(outcome[0].medium, 4);
  }
}

TEST_F(MessageUnionTest, ReactionsAndMarksAreTheNewerOnes) {
  const auto liked = facts({.reactions = {{.emoji = "👍"}}, .marks = {.isStarred = true}});
  const KeptMessage before{.key = 1, .time = 10, .stanzaID = "A", .text = "hi", .facts = liked};
  const KeptMessage after{.key = 1, .time = 10, .stanzaID = "A", .text = "hi"};
  EXPECT_EQ(united({before}, {after}, true)[0].facts, "");
  EXPECT_EQ(united({after}, {before}, false)[0].facts, "");
  EXPECT_EQ(united({after}, {before}, true)[0].facts, liked);
}

TEST_F(MessageUnionTest, AQuoteStaysThatTheNewerRecordLacks) {
  const Quote quote{.stanzaID = "Q", .words = "what?"};
  const KeptMessage before{.key = 1, .time = 10, .stanzaID = "A", .text = "hi", .facts = facts({.quote = quote})};
  const KeptMessage after{
      .key = 1, .time = 10, .stanzaID = "A", .text = "hi", .facts = facts({.reactions = {{.emoji = "👍"}}})};
  const MessageDetails both = MessageFacts::read(united({before}, {after}, true)[0].facts);
  EXPECT_EQ(both.quote, quote);
  EXPECT_EQ(both.reactions.size(), 1U);
}

TEST_F(MessageUnionTest, WhatANewerBackupLacksIsGoneAndComesBack) {
  const KeptMessage one{.key = 1, .time = 10, .stanzaID = "A", .text = "one"};
  const KeptMessage two{.key = 2, .time = 20, .stanzaID = "B", .text = "two"};
  auto kept = united({one, two}, {two}, true);
  EXPECT_THAT(textsOf(kept), ElementsAre("one", "two"));
  EXPECT_TRUE(kept[0].isGone(200));
  kept = united(kept, {one, two}, true);
  EXPECT_FALSE(kept[0].isGone(200));
}

TEST_F(MessageUnionTest, WhatOnlyAnOlderBackupHasIsGone) {
  const KeptMessage one{.key = 1, .time = 10, .stanzaID = "A", .text = "one"};
  const KeptMessage two{.key = 2, .time = 20, .stanzaID = "B", .text = "two"};
  const auto kept = united({two}, {one, two}, false);
  EXPECT_TRUE(kept[0].isGone(100));
  EXPECT_FALSE(kept[1].isGone(100));
}

TEST_F(MessageUnionTest, MessagesOfOneSecondKeepTheirOrderWhenOneIsGone) {
  const KeptMessage a{.key = 1, .time = 10, .stanzaID = "A", .text = "a"};
  const KeptMessage b{.key = 2, .time = 10, .placeInSecond = 1, .stanzaID = "B", .text = "b"};
  KeptMessage alone = b;
  alone.placeInSecond = 0;
  EXPECT_THAT(textsOf(united(united({}, {a, b}, true), {alone}, true)), ElementsAre("a", "b"));
  EXPECT_THAT(textsOf(united(united({}, {alone}, true), {a, b}, false)), ElementsAre("a", "b"));
}

TEST_F(MessageUnionTest, WhatAPageToldGivesWayToTheBackup) {
  const KeptMessage page{.key = 1, .time = 11, .text = "hi", .page = R"({"id":"1","text":"hi"})"};
  const KeptMessage told{.key = 9, .time = 10.5, .sender = 3, .stanzaID = "A", .text = "hi"};
  const auto kept = united({page}, {told}, true);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0].key, 1);
  EXPECT_EQ(kept[0].stanzaID, "A");
  EXPECT_FALSE(kept[0].page);
}

TEST_F(MessageUnionTest, APagesFileIsThatOfAnotherPhonesRow) {
  const KeptMessage photo{.key = 1, .time = 10, .medium = 7, .page = R"({"id":"1"})"};
  const KeptMessage place{.key = 2, .time = 20, .page = R"({"id":"2","kind":"place","text":"Here"})"};
  const KeptMessage text{.key = 3, .time = 30, .text = "a", .page = R"({"id":"3","text":"a"})"};
  const auto kept = united({photo, place, text},
                           {{.key = 1, .time = 30, .stanzaID = "A", .text = "b"},
                            {.key = 5, .time = 10, .stanzaID = "B", .medium = 9},
                            {.key = 6, .time = 20, .stanzaID = "C", .facts = facts({.content = SharedLocation()})}},
                           true);
  ASSERT_EQ(kept.size(), 4U);
  EXPECT_EQ(kept[0].key, 1);
  EXPECT_EQ(kept[0].medium, 9);
  EXPECT_EQ(kept[1].key, 2);
  EXPECT_EQ(kept[1].stanzaID, "C");
  EXPECT_THAT(textsOf(kept), ElementsAre("", "", "a", "b"));
}

TEST_F(MessageUnionTest, APagesWordsStayWhenTheMessageWasDeleted) {
  const KeptMessage page{.key = 1, .time = 10, .text = "hi", .page = R"({"id":"1","text":"hi"})"};
  const KeptMessage told{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = DeletedMessage()})};
  const auto kept = united({page}, {told}, true);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_TRUE(kept[0].page);
  EXPECT_TRUE(kept[0].isDeletedLater);
}

TEST_F(MessageUnionTest, WordsOfAPageAreComparedAsPagesShowThem) {
  const KeptMessage lines{.key = 1, .time = 10, .text = "a\nb\uFFFD", .page = R"({"id":"1"})"};
  const KeptMessage document{.key = 2, .time = 20, .text = "plan.pdf\nlook", .page = R"({"id":"2"})"};
  const auto kept =
      united({lines, document},
             {{.key = 8, .time = 10, .stanzaID = "A", .text = "a\r\nb\x01"},
              {.key = 9, .time = 20, .stanzaID = "B", .text = "look", .facts = facts({.heading = "plan.pdf"})}},
             true);
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[0].stanzaID, "A");
  EXPECT_EQ(kept[1].stanzaID, "B");
}

TEST_F(MessageUnionTest, APageIsNoMessageOfTheOtherSide) {
  const KeptMessage page{.key = 1, .time = 10, .isFromMe = true, .medium = 7, .page = R"({"id":"1","me":true})"};
  EXPECT_EQ(united({page}, {{.key = 1, .time = 10, .stanzaID = "A", .medium = 9}}, true).size(), 2U);
}

TEST_F(MessageUnionTest, ANoticeOfAPageIsNobodys) {
  const KeptMessage page{.key = 1, .time = 10, .page = R"({"id":"1","kind":"notice","text":"You left."})"};
  for (const std::int64_t key : {1, 9}) {
    const KeptMessage told{.key = key, .time = 10, .isFromMe = true, .facts = facts({.content = Notice()})};
    const auto kept = united({page}, {told}, true);
    ASSERT_EQ(kept.size(), 1U) << key;
    EXPECT_FALSE(kept[0].page) << key;
  }
}

TEST_F(MessageUnionTest, FilesOfOneSecondAreKnownByTheirPlaceOrNotAtAll) {
  const KeptMessage first{.key = 1, .time = 10, .medium = 7, .page = R"({"id":"1"})"};
  const KeptMessage second{.key = 2, .time = 10, .placeInSecond = 1, .medium = 8, .page = R"({"id":"2"})"};
  const KeptMessage toldAsSecond{.key = 5, .time = 10, .stanzaID = "A", .medium = 8};
  const auto known = united({first, second}, {toldAsSecond}, true);
  ASSERT_EQ(known.size(), 2U);
  EXPECT_TRUE(known[0].page);
  EXPECT_EQ(known[1].stanzaID, "A");
  const KeptMessage other{.key = 5, .time = 10, .stanzaID = "A", .medium = 9};
  EXPECT_EQ(united({first, second}, {other}, true).size(), 3U) << "either might be it";
  EXPECT_EQ(united({first}, {other, {.key = 6, .time = 10, .stanzaID = "B", .medium = 3}}, true).size(), 3U)
      << "it might be either";
}

TEST_F(MessageUnionTest, APollOfAPageIsNoPhoto) {
  const KeptMessage poll{.key = 1, .time = 10, .page = R"({"id":"1","kind":"poll","text":"Tea?"})"};
  EXPECT_EQ(united({poll}, {{.key = 5, .time = 10, .stanzaID = "A", .medium = 9}}, true).size(), 2U);
  const KeptMessage told{.key = 5, .time = 10, .stanzaID = "A", .facts = facts({.content = Poll()})};
  EXPECT_EQ(united({poll}, {told}, true).size(), 1U);
}

TEST_F(MessageUnionTest, WhatAPageAndTheBackupCallDeletedIsNotDeletedLater) {
  const KeptMessage page{.key = 1, .time = 10, .page = R"({"id":"1","kind":"deleted","text":"Deleted"})"};
  const KeptMessage told{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = DeletedMessage()})};
  const auto kept = united({page}, {told}, true);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_FALSE(kept[0].page);
  EXPECT_FALSE(kept[0].isDeletedLater);
}

TEST_F(MessageUnionTest, APagesWordsStayWhenAnotherPhoneSaysThatTheyWereDeleted) {
  const KeptMessage page{.key = 1, .time = 10, .text = "hi", .page = R"({"id":"1","text":"hi"})"};
  const KeptMessage told{.key = 7, .time = 10, .stanzaID = "A", .facts = facts({.content = DeletedMessage()})};
  const auto kept = united({page}, {told}, true);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0].text, "hi");
  EXPECT_TRUE(kept[0].isDeletedLater);
}

TEST_F(MessageUnionTest, APagesWordsAreASurerSignThanItsKey) {
  const KeptMessage first{.key = 1, .time = 10, .text = "one", .page = R"({"id":"1","text":"one"})"};
  const KeptMessage second{.key = 2, .time = 10, .placeInSecond = 1, .text = "two", .page = R"({"id":"2"})"};
  const auto kept = united({first, second},
                           {{.key = 2, .time = 10, .stanzaID = "A", .text = "one"},
                            {.key = 1, .time = 10, .placeInSecond = 1, .stanzaID = "B", .text = "two"}},
                           true);
  EXPECT_THAT(textsOf(kept), ElementsAre("one", "two"));
  EXPECT_EQ(kept[0].key, 1);
  EXPECT_EQ(kept[0].stanzaID, "A");
}

TEST_F(MessageUnionTest, ACallKeepsItsLength) {
  const auto call = [&](const CallRecord& record) {
    return KeptMessage{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = record})};
  };
  const auto kept = united({call({.isVideo = true, .seconds = 60})}, {call({.isMissed = true})}, true);
  EXPECT_EQ(MessageFacts::read(kept[0].facts).content,
            MessageContent(CallRecord{.isVideo = true, .isMissed = true, .seconds = 60}));
}

TEST_F(MessageUnionTest, WhatIsKnownOfALinkStaysAsLongAsItsWordsDo) {
  const LinkPreview link{.url = "https://example.org", .title = "Example", .summary = "A page."};
  const KeptMessage before{.key = 1, .time = 10, .stanzaID = "A", .text = "look", .facts = facts({.content = link})};
  KeptMessage after{.key = 1, .time = 10, .stanzaID = "A", .text = "look"};
  EXPECT_EQ(united({before}, {after}, true)[0].facts, before.facts);
  after.facts = facts({.content = LinkPreview{.url = link.url}});
  EXPECT_EQ(united({before}, {after}, true)[0].facts, before.facts);
  after.text = "look there";
  EXPECT_EQ(united({before}, {after}, true)[0].facts, after.facts) << "the link may be another";
}

TEST_F(MessageUnionTest, AQuotesWordsStay) {
  const Quote whole{.stanzaID = "Q", .sender = Person{.isOwner = true}, .words = "what?"};
  const KeptMessage before{.key = 1, .time = 10, .stanzaID = "A", .text = "hi", .facts = facts({.quote = whole})};
  KeptMessage after = before;
  after.facts = facts({.quote = Quote{.stanzaID = "Q"}});
  EXPECT_EQ(MessageFacts::read(united({before}, {after}, true)[0].facts).quote, whole);
  after.facts = facts({.quote = Quote{.stanzaID = "R"}});
  EXPECT_EQ(united({before}, {after}, true)[0].facts, after.facts) << "it answers another";
}

TEST_F(MessageUnionTest, ARowWithoutAStanzaWhoseFactsChangeIsToldOnce) {
  const auto poll = [&](std::int64_t voters) {
    PollOption tea{.words = "Tea"};
    for (std::int64_t voter = 0; voter < voters; ++voter) tea.voters.push_back({.jid = std::to_string(voter)});
    return facts({.content = Poll{.question = "What?", .options = {tea}}});
  };
  const KeptMessage asked{.key = 1, .time = 10, .sender = 3, .facts = poll(0)};
  const KeptMessage answered{.key = 1, .time = 10, .sender = 3, .facts = poll(2)};
  const auto kept = united({asked}, {answered}, true);
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0].facts, poll(2));

  const KeptMessage said{.key = 1, .time = 10, .sender = 3, .text = "ok"};
  const KeptMessage liked{.key = 8, .time = 10, .sender = 3, .text = "ok", .facts = facts({.reactions = {{"👍"}}})};
  EXPECT_EQ(united({said}, {liked}, true).size(), 1U) << "under another phone's key";
  const KeptMessage anothers{.key = 8, .time = 10, .sender = 4, .text = "ok", .facts = liked.facts};
  EXPECT_EQ(united({said}, {anothers}, true).size(), 2U);
  const KeptMessage call{.key = 1, .time = 10, .sender = 3, .facts = facts({.content = CallRecord()})};
  EXPECT_EQ(united({asked}, {call}, true).size(), 2U) << "another phone's row of that number";
}

TEST_F(MessageUnionTest, TheLastWordsOfADeletedMessageStayInEveryOrder) {
  struct Told {
    KeptMessage message;
    double at;
  };
  const std::vector<Told> tellings{
      {{.key = 1, .time = 10, .stanzaID = "A", .text = "first"}, 100},
      {{.key = 1, .time = 10, .stanzaID = "A", .text = "edited"}, 200},
      {{.key = 1, .time = 10, .stanzaID = "A", .facts = facts({.content = DeletedMessage()})}, 300}};
  std::vector<int> order{0, 1, 2};
  do {
    std::vector<KeptMessage> kept;
    double keptAt = 0;
    for (const int number : order) {
      const Told& told = tellings[static_cast<std::size_t>(number)];
      const auto changed = changes({kept, keptAt}, {{&told.message, 1}, told.at});
      if (!changed.empty()) kept = changed;
      keptAt = std::max(keptAt, told.at);
    }
    const std::string when = testing::PrintToString(order);
    ASSERT_EQ(kept.size(), 1U) << when;
    EXPECT_EQ(kept[0].text, "edited") << when;
    EXPECT_TRUE(kept[0].isDeletedLater) << when;
    EXPECT_EQ(kept[0].saidAt, 200) << when;
    EXPECT_FALSE(kept[0].lastTold) << when;
  } while (std::ranges::next_permutation(order).found);
}

TEST_F(MessageUnionTest, TheLastKeyOfAllLeavesOthersFree) {
  constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
  const auto kept = united({}, {{.key = last, .time = 1, .text = "a"}, {.key = last, .time = 2, .text = "b"}}, true);
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[1].key, 1);
}

}  // namespace
