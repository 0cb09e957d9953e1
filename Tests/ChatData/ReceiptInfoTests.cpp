#include "TidewellCore/ChatData/ReceiptInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "Tests/Support/ProtobufWriter.h"
#include "TidewellCore/Platform/Text.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::array<std::string, 1> own = {"15550000001@s.whatsapp.net"};
const std::string ana = "15550000002@s.whatsapp.net";
const std::string ben = "77001122@lid";

const Person owner{.isOwner = true};

Protobuf theirs(std::string_view jid, std::string_view emoji, std::int64_t milliseconds) {
  return Protobuf().text(1, "3A").text(2, jid).text(3, emoji).integer(4, milliseconds);
}

Protobuf mine(std::string_view emoji, std::int64_t milliseconds) {
  return Protobuf().text(1, "3A").text(2, emoji).integer(3, milliseconds).integer(4, 1);
}

std::vector<Reaction> reactions(const Protobuf& field) {
  return ReceiptInfo::read(Protobuf().message(7, field).bytes(), own).value().reactions;
}

Reaction reaction(const std::string& emoji, const Person& person, std::int64_t milliseconds) {
  return {.emoji = emoji, .person = person, .milliseconds = milliseconds};
}

TEST(ReceiptInfo, NothingIsThereWithoutTheFields) {
  EXPECT_EQ(ReceiptInfo::read({}, own), ReceiptInfo{});
  EXPECT_EQ(ReceiptInfo::read(Protobuf().message(2, Protobuf().integer(1, 5)).integer(1, 8).bytes(), own),
            ReceiptInfo{});
}

TEST(ReceiptInfo, ReactionsStandInTheOrderOfTheirTimes) {
  EXPECT_THAT(reactions(Protobuf()
                            .message(1, theirs(ana, "❤️", 2'000))
                            .message(1, theirs(ben, "👨‍👩‍👧", 1'000))
                            .message(2, mine("👍", 3'000))),
              ElementsAre(reaction("👨‍👩‍👧", {.jid = ben}, 1'000), reaction("❤️", {.jid = ana}, 2'000),
                          reaction("👍", owner, 3'000)));
}

TEST(ReceiptInfo, OfOnePersonTheNewestReactionCounts) {
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, "❤️", 2'000)).message(1, theirs(ana, "👍", 1'000))),
              ElementsAre(reaction("❤️", {.jid = ana}, 2'000)));
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, "❤️", 1'000)).message(1, theirs(ana, "👍", 1'000))),
              ElementsAre(reaction("👍", {.jid = ana}, 1'000)));
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, "❤️", 1'000)).message(1, theirs(ana, "", 2'000))),
              IsEmpty())
      << "withdrawn";
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, "", 1'000)).message(1, theirs(ana, "❤️", 2'000))),
              ElementsAre(reaction("❤️", {.jid = ana}, 2'000)));
}

TEST(ReceiptInfo, TheOwnerIsOnePersonWhereverTheReactionStands) {
  EXPECT_THAT(reactions(Protobuf().message(1, Protobuf().text(3, "👍").integer(4, 1'000))),
              ElementsAre(reaction("👍", owner, 1'000)))
      << "without a JID";
  EXPECT_THAT(reactions(Protobuf()
                            .message(1, theirs(own[0], "❤️", 1'000))
                            .message(1, theirs("", "😮", 2'000))
                            .message(2, mine("👍", 3'000))),
              ElementsAre(reaction("👍", owner, 3'000)));
}

TEST(ReceiptInfo, WhatIsNoReactionShowsNothing) {
  for (const std::string& emoji :
       {std::string(1'000'000, 'a'), std::string(33, 'a'), Text::fromScalars(std::u32string(17, U'👍')),
        std::string("a\nb"), std::string("\u202E👍"), std::string("\xFF"), std::string(" "), std::string("\0", 1)}) {
    EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, emoji, 1))), IsEmpty()) << emoji.substr(0, 10);
  }
  EXPECT_THAT(reactions(Protobuf().message(1, theirs("nobody", "👍", 1))), IsEmpty());
  const std::string longest = Text::fromScalars(std::u32string(16, U'👍'));
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, longest, 1))),
              ElementsAre(reaction(longest, {.jid = ana}, 1)))
      << "as much as the viewer shows";
  EXPECT_THAT(reactions(Protobuf().message(1, theirs("../x@y", "👍", 1))), IsEmpty());
  EXPECT_THAT(reactions(Protobuf().message(1, theirs(ana, "<script>", -5))),
              ElementsAre(reaction("<script>", {.jid = ana}, 0)))
      << "text, which whoever shows it escapes";
}

TEST(ReceiptInfo, AnotherOnesReactionHundredsOfTimesIsOne) {
  Protobuf field;
  for (int i = 0; i < 4'000; ++i) field.message(1, theirs(ana, i % 2 == 0 ? "👍" : "❤️", i));
  EXPECT_THAT(reactions(field), ElementsAre(reaction("❤️", {.jid = ana}, 3'999)));
}

TEST(ReceiptInfo, AThousandReactionsAreEnough) {
  Protobuf field;
  for (int i = 0; i < 1'100; ++i) field.message(1, theirs(std::to_string(i) + "@lid", "👍", i));
  EXPECT_EQ(reactions(field).size(), 1'000U);
}

TEST(ReceiptInfo, AChannelCounts) {
  const auto total = [](const char* emoji, std::int64_t count) { return Protobuf().text(1, emoji).integer(2, count); };
  const Protobuf totals =
      Protobuf().message(1, total("👍", 250)).message(1, total("❤️", 1)).message(1, total("x", 0));
  const Reaction hearts{.emoji = "❤️"};
  EXPECT_THAT(reactions(Protobuf().message(3, totals)), ElementsAre(Reaction{.emoji = "👍", .count = 250}, hearts));
  EXPECT_THAT(reactions(Protobuf().message(3, totals).message(2, mine("👍", 5))),
              ElementsAre(reaction("👍", owner, 5), Reaction{.emoji = "👍", .count = 249}, hearts))
      << "the owner is one of them";
  EXPECT_THAT(reactions(Protobuf().message(3, Protobuf().message(1, total("👍", INT64_MAX)))), IsEmpty());
  EXPECT_THAT(reactions(Protobuf().message(3, Protobuf().message(1, total("👍", -1)))), IsEmpty());
}

Poll poll(const Protobuf& field) {
  return ReceiptInfo::read(Protobuf().message(8, field).bytes(), own).value().poll.value();
}

Protobuf monday() {
  return Protobuf()
      .text(2, "Which day?")
      .message(3, Protobuf().text(1, "Monday"))
      .message(3, Protobuf().text(1, "Friday"));
}

TEST(ReceiptInfo, APollHasOptionsAndVoters) {
  EXPECT_EQ(poll(monday()), (Poll{.question = "Which day?", .options = {{.words = "Monday"}, {.words = "Friday"}}}));
  EXPECT_EQ(poll(monday()
                     .message(5, Protobuf().integer(1, 1).text(4, ben))
                     .message(5, Protobuf().packed(1, {0, 1}).text(4, ana))
                     .message(6, Protobuf().integer(1, 0))),
            (Poll{.question = "Which day?",
                  .options = {{.words = "Monday", .voters = {{.jid = ana}, owner}},
                              {.words = "Friday", .voters = {{.jid = ben}, {.jid = ana}}}}}));
}

TEST(ReceiptInfo, WhatIsNoOptionAndNoVoteCountsAsNeither) {
  Protobuf poll;
  poll.integer(3, 1).message(3, Protobuf().text(1, "Monday")).message(3, Protobuf().text(1, "\xFF"));
  poll.message(6, Protobuf().integer(1, 0)).integer(6, 1);
  const auto read = ReceiptInfo::read(Protobuf().message(8, poll).bytes(), {});
  ASSERT_TRUE(read && read->poll);
  EXPECT_THAT(read->poll->options, ElementsAre(PollOption{.words = "Monday", .voters = {Person{.isOwner = true}}},
                                               PollOption{.words = "?"}));
}

TEST(ReceiptInfo, APollWithoutWordsIsOne) {
  EXPECT_EQ(poll(Protobuf()), Poll{});
  EXPECT_EQ(
      poll(Protobuf().message(3, Protobuf()).message(3, Protobuf().text(1, "b")).message(6, Protobuf().integer(1, 1))),
      (Poll{.options = {{}, {.words = "b", .voters = {owner}}}}))
      << "options are known by their places";
}

TEST(ReceiptInfo, ANewVoteTakesThePlaceOfAnOld) {
  EXPECT_EQ(poll(monday()
                     .message(5, Protobuf().integer(1, 0).text(4, ana))
                     .message(5, Protobuf().integer(1, 1).text(4, ana))
                     .message(5, Protobuf().integer(1, 0).text(4, own[0]))
                     .message(6, Protobuf().integer(1, 1))),
            (Poll{.question = "Which day?",
                  .options = {{.words = "Monday"}, {.words = "Friday", .voters = {{.jid = ana}, owner}}}}));
  EXPECT_EQ(poll(monday().message(5, Protobuf().integer(1, 0).text(4, ana)).message(5, Protobuf().text(4, ana))),
            poll(monday()))
      << "withdrawn";
}

TEST(ReceiptInfo, VotesForNothingAndOfNobodyDoNotCount) {
  EXPECT_EQ(poll(monday()
                     .message(5, Protobuf().integer(1, -1).text(4, ana))
                     .message(5, Protobuf().integer(1, INT64_MIN).text(4, ben))
                     .message(5, Protobuf().integer(1, 2).text(4, "1@lid"))
                     .message(5, Protobuf().integer(1, 0))
                     .message(5, Protobuf().integer(1, 0).text(4, "x"))),
            poll(monday()));
  EXPECT_EQ(poll(monday().message(6, Protobuf().packed(1, {0, 0, 0}).integer(1, 0))).options[0].voters.size(), 1U);
}

TEST(ReceiptInfo, OptionsAndVotesHaveLimits) {
  Protobuf many;
  for (int i = 0; i < 1'100; ++i) many.message(3, Protobuf().text(1, "o"));
  EXPECT_EQ(poll(many).options.size(), 1'000U);
  Protobuf all;
  for (int i = 0; i < 1'000; ++i) all.integer(1, i);
  for (int i = 0; i < 100; ++i) many.message(5, Protobuf(all).text(4, std::to_string(i) + "@lid"));
  std::size_t votes = 0;
  for (const PollOption& option : poll(many).options) votes += option.voters.size();
  EXPECT_EQ(votes, 20'000U);
}

TEST(ReceiptInfo, MoreThanAMessageHoldsMakesAllAbsent) {
  Protobuf votes;
  for (int i = 0; i < 5'000; ++i) votes.message(5, Protobuf().integer(1, 0).text(4, ana));
  EXPECT_EQ(ReceiptInfo::read(Protobuf().message(8, votes).bytes(), own), std::nullopt);
  Protobuf options;
  for (int i = 0; i < 5'000; ++i) options.message(3, Protobuf().text(1, "o"));
  EXPECT_EQ(ReceiptInfo::read(Protobuf().message(8, options).bytes(), own), std::nullopt);
}

TEST(ReceiptInfo, AnErrorAnywhereMakesAllAbsent) {
  const Protobuf whole = Protobuf().message(7, Protobuf().message(2, mine("👍", 1)));
  const Protobuf cut = Protobuf().text(1, "\x0B");
  EXPECT_EQ(ReceiptInfo::read(Protobuf(whole).text(7, "\x0B").bytes(), own), std::nullopt);
  EXPECT_EQ(ReceiptInfo::read(Protobuf(whole).message(7, cut).bytes(), own), std::nullopt);
  EXPECT_EQ(ReceiptInfo::read(Protobuf(whole).message(7, Protobuf().message(3, cut)).bytes(), own), std::nullopt);
  EXPECT_EQ(ReceiptInfo::read(Protobuf(whole).text(8, "\x0B").bytes(), own), std::nullopt);
  for (const std::uint32_t field : {3U, 5U, 6U}) {
    EXPECT_EQ(ReceiptInfo::read(Protobuf(whole).message(8, Protobuf().text(field, "\x0B")).bytes(), own), std::nullopt);
  }
  EXPECT_EQ(
      ReceiptInfo::read(Protobuf(whole).message(8, Protobuf().message(6, Protobuf().text(1, "\x80"))).bytes(), own),
      std::nullopt);
}

}  // namespace
}  // namespace Fixture
