#include "TidewellCore/Archive/NoticeWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TidewellCore/Platform/RawValue.h"

namespace {

using enum NoticeKind;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const TranscriptStyle english = TranscriptStyle::english();
const TranscriptStyle portuguese = TranscriptStyle::portuguese();
const Person you{.isOwner = true};
const Person ana{.jid = "Ana"};
const Person ben{.jid = "Ben"};
const Person carla{.jid = "Carla"};

std::string sentence(const Notice& notice, const TranscriptStyle& style = english, std::string_view partner = "") {
  const Wording wording{.style = style, .nameOf = [](const Person& person) { return person.jid; }};
  return NoticeWords::sentence(notice, wording, partner);
}

std::string inPortuguese(const Notice& notice) { return sentence(notice, portuguese); }

TEST(NoticeWords, PeopleAreAdded) {
  const auto added = [](std::optional<Person> actor, std::vector<Person> targets) {
    return Notice{.kind = memberAdded, .actor = std::move(actor), .targets = std::move(targets)};
  };
  EXPECT_EQ(sentence(added(ana, {ben})), "Ana added Ben");
  EXPECT_EQ(sentence(added(you, {ben, carla})), "You added Ben and Carla");
  EXPECT_EQ(sentence(added(ana, {ben, you, carla})), "Ana added Ben, you and Carla");
  EXPECT_EQ(sentence(added({}, {you})), "You were added");
  EXPECT_EQ(sentence(added({}, {ben})), "Ben was added");
  EXPECT_EQ(sentence(added({}, {you, ben})), "You and Ben were added");
  EXPECT_EQ(sentence(added({}, {ben, you})), "Ben and you were added");
  EXPECT_EQ(inPortuguese(added(ana, {you})), "Ana adicionou você");
  EXPECT_EQ(inPortuguese(added(you, {ben})), "Você adicionou Ben");
  EXPECT_EQ(inPortuguese(added({}, {you, ben})), "Adicionaram você e Ben");
  EXPECT_EQ(inPortuguese(added({}, {you})), "Adicionaram você");
}

TEST(NoticeWords, PeopleComeAndGo) {
  EXPECT_EQ(sentence({.kind = memberLeft, .actor = ana}), "Ana left");
  EXPECT_EQ(sentence({.kind = memberLeft}), "Someone left");
  EXPECT_EQ(inPortuguese({.kind = memberLeft, .actor = you}), "Você saiu");
  EXPECT_EQ(sentence({.kind = memberJoinedByLink, .actor = you}), "You joined using the invite link");
  EXPECT_EQ(sentence({.kind = memberRemoved, .actor = ana, .targets = {you}}), "Ana removed you");
  EXPECT_EQ(sentence({.kind = memberRemoved, .targets = {you}}), "You were removed");
  EXPECT_EQ(inPortuguese({.kind = memberRemoved, .targets = {ben}}), "Removeram Ben");
  EXPECT_EQ(sentence({.kind = adminGained, .targets = {you}}), "You are now an admin");
  EXPECT_EQ(sentence({.kind = adminGained, .actor = ana, .targets = {ben}}), "Ben is now an admin");
  EXPECT_EQ(inPortuguese({.kind = adminLost, .targets = {ben}}), "Ben não é mais admin do grupo");
}

TEST(NoticeWords, WhatAGroupIsCalled) {
  EXPECT_EQ(sentence({.kind = groupCreated, .actor = you, .parameter = "Garden"}), "You created the group “Garden”");
  EXPECT_EQ(sentence({.kind = groupCreated}), "The group was created");
  EXPECT_EQ(sentence({.kind = groupRenamed, .actor = ana, .parameter = "{actor}"}),
            "Ana changed the group name to “{actor}”");
  EXPECT_EQ(inPortuguese({.kind = groupRenamed, .parameter = "Horta"}), "O nome do grupo mudou para “Horta”");
  EXPECT_EQ(inPortuguese({.kind = communityLinked, .actor = ana, .parameter = "Bairro"}),
            "Ana vinculou o grupo à comunidade “Bairro”");
}

TEST(NoticeWords, HowLongMessagesStay) {
  const auto timer = [](std::int64_t seconds) {
    return sentence({.kind = timerSet, .actor = ana, .seconds = seconds});
  };
  EXPECT_EQ(timer(0), "Ana turned off disappearing messages");
  for (const auto& [seconds, words] : std::map<std::int64_t, std::string>{{1, "1 second"},
                                                                          {61, "61 seconds"},
                                                                          {60, "1 minute"},
                                                                          {5'400, "90 minutes"},
                                                                          {3'600, "1 hour"},
                                                                          {86'400, "24 hours"},
                                                                          {90'000, "25 hours"},
                                                                          {172'800, "2 days"},
                                                                          {604'800, "7 days"},
                                                                          {7'776'000, "90 days"}}) {
    EXPECT_EQ(timer(seconds), "Ana set messages to disappear after " + words);
  }
  EXPECT_EQ(sentence({.kind = timerSet, .seconds = 604'800}), "Messages now disappear after 7 days");
  EXPECT_EQ(sentence({.kind = defaultTimerSet, .seconds = 0}), "Disappearing messages: off");
  EXPECT_EQ(inPortuguese({.kind = defaultTimerSet, .seconds = 86'400}), "Mensagens temporárias: 24 horas");
}

TEST(NoticeWords, AChatOfTwoMeansItsPartner) {
  EXPECT_EQ(sentence({.kind = securityCodeChanged}, english, "Ana"), "Your security code with Ana changed");
  EXPECT_EQ(sentence({.kind = securityCodeChanged}), "A security code changed");
  EXPECT_EQ(sentence({.kind = memberChangedNumber}, portuguese, "Ana"), "Ana mudou de número de telefone");
  EXPECT_EQ(sentence({.kind = memberChangedNumber, .actor = you}, english, "Ana"), "You changed your phone number");
  EXPECT_EQ(sentence({.kind = memberChangedNumber, .actor = ben}), "Ben changed their phone number");
  EXPECT_EQ(sentence({.kind = contactBlocked}, english, "Ana"), "You blocked Ana");
  EXPECT_EQ(sentence({.kind = contactBlocked}), "You blocked this contact");
  EXPECT_EQ(sentence({.kind = memberLeft}, english, "Ana"), "Someone left");
}

TEST(NoticeWords, NamesStayOnOneLine) {
  EXPECT_EQ(sentence({.kind = memberLeft, .actor = Person{.jid = "A\r\nB"}}), "A B left");
  EXPECT_EQ(sentence({.kind = memberLeft, .actor = Person{.jid = " "}}), "Someone left");
  EXPECT_EQ(sentence({.kind = contactBlocked}, english, "A\nB"), "You blocked A B");
}

// Large groups have members of whom the phone knows no more than a LID.
TEST(NoticeWords, NobodyIsNamedUnknown) {
  const Person nobody{.jid = ""};
  EXPECT_EQ(sentence({.kind = memberLeft, .actor = nobody}), "Someone left");
  EXPECT_EQ(sentence({.kind = groupRenamed, .actor = nobody, .parameter = "Garden"}),
            "The group name was changed to “Garden”");
  EXPECT_EQ(sentence({.kind = securityCodeChanged, .actor = nobody}, english, "Ana"),
            "Your security code with Ana changed");
  EXPECT_EQ(sentence({.kind = memberRemoved, .actor = nobody, .targets = {ben}}), "Ben was removed");
  EXPECT_EQ(sentence({.kind = memberRemoved, .actor = nobody, .targets = {you}}), "You were removed");
  EXPECT_EQ(sentence({.kind = memberRemoved, .actor = nobody, .targets = {nobody}}), "Someone was removed");
  EXPECT_EQ(sentence({.kind = memberAdded, .actor = ana, .targets = {nobody}}), "Ana added someone");
  EXPECT_EQ(sentence({.kind = memberAdded, .actor = ana, .targets = {nobody, nobody}}), "Ana added 2 people");
  EXPECT_EQ(sentence({.kind = memberAdded, .actor = ana, .targets = {nobody, ben}}),
            "Ana added Ben and one more person");
  EXPECT_EQ(sentence({.kind = memberAdded, .targets = {nobody, you, ben, nobody}}),
            "You, Ben and 2 more people were added");
  EXPECT_EQ(inPortuguese({.kind = adminGained, .targets = {nobody}}), "Alguém agora é admin do grupo");
  EXPECT_EQ(inPortuguese({.kind = memberRemoved, .actor = nobody, .targets = {nobody, nobody}}), "Removeram 2 pessoas");
  EXPECT_EQ(inPortuguese({.kind = memberAdded, .actor = ana, .targets = {ben, nobody}}),
            "Ana adicionou Ben e mais uma pessoa");
}

TEST(NoticeWords, CodesThatNobodyKnowsAreTold) {
  EXPECT_EQ(sentence({.kind = unknownGroupEvent, .code = 77}), "Group notice (code 77)");
  EXPECT_EQ(sentence({.kind = unknownNotice, .code = 58, .actor = ana}), "Notice (code 58)");
  EXPECT_EQ(inPortuguese({.kind = unknownNotice, .code = 58}), "Aviso (código 58)");
}

// Whatever a notice holds or lacks, it is a sentence of its own kind without a place left open.
TEST(NoticeWords, EveryKindIsAWholeSentence) {
  const std::vector<std::optional<Person>> actors{std::nullopt, you, ana};
  const std::vector<std::vector<Person>> targets{{}, {you}, {ben}, {ben, carla}};
  for (const TranscriptStyle& style : {english, portuguese}) {
    for (const auto& [kind, name] : rawValueTable(NoticeKind())) {
      for (const auto& actor : actors) {
        for (const auto& people : targets) {
          Notice notice{.kind = kind, .actor = actor, .targets = people};
          if (people.empty() &&
              (kind == memberAdded || kind == memberRemoved || kind == adminGained || kind == adminLost))
            continue;
          for (const auto& parameter : {std::optional<std::string>(), std::optional<std::string>("Garden")}) {
            notice.parameter = parameter;
            const std::string words = sentence(notice, style);
            EXPECT_THAT(words, Not(AnyOf(HasSubstr("{"), HasSubstr("  "), StartsWith(" "), HasSubstr("“”")))) << name;
            const bool isUnknown = words.find("(code 0)") != std::string::npos;
            EXPECT_TRUE(!isUnknown || kind == unknownGroupEvent || kind == unknownNotice) << name;
          }
        }
      }
    }
  }
}

// The decoder makes none; what other tables hold shall not end the program.
TEST(NoticeWords, WhatHappenedToNobodyIsANotice) {
  EXPECT_EQ(sentence({.kind = memberAdded, .code = 2, .actor = ana}), "Group notice (code 2)");
}

}  // namespace
