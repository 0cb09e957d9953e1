#include "TidewellCore/ChatData/ChatFinder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/TidewellError.h"

namespace {

using ExportTest::ana;
using ExportTest::anaLID;
using ExportTest::bea;
using ExportTest::group;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string otherAna = "447700900123@s.whatsapp.net";

struct ChatFinderTest : testing::Test {
  ChatFinderTest() {
    contents.whatsApp.chats = {{.jid = ana, .name = "Ana Conceição"},
                               {.jid = bea, .name = "Bea"},
                               {.jid = group, .name = "Família"},
                               {.jid = otherAna, .name = "bea"}};
    for (std::int64_t chat = 1; chat <= 4; ++chat) contents.whatsApp.messages.push_back({.chat = chat, .date = 1});
  }

  const BackupSource& source() {
    if (!source_) {
      Fixture::writeBackup(contents, folder / "device");
      source_.emplace(BackupSource::load(OpenedBackup::open(folder / "device", std::nullopt), {}));
    }
    return *source_;
  }
  std::string found(const std::string& wanted) { return ChatFinder(source()).find(wanted).text(); }

  template <typename Case>
  Case fault(const std::string& wanted) {
    try {
      found(wanted);
    } catch (const TidewellError& error) {
      if (const auto* fault = std::get_if<Case>(&error.value())) return *fault;
    }
    ADD_FAILURE() << wanted;
    return {};
  }

  Fixture::TemporaryDirectory folder;
  Fixture::BackupContents contents;
  std::optional<BackupSource> source_;
};

TEST_F(ChatFinderTest, FindsByTheWholeName) {
  for (const char* name : {"Ana Conceição", "ana conceicao", " ANA CONCEIÇÃO", "Ana Conceic\u0327a\u0303o"}) {
    EXPECT_EQ(found(name), ana) << name;
  }
  EXPECT_EQ(found("familia"), group);
}

TEST_F(ChatFinderTest, FindsByTheNumberHoweverItIsWritten) {
  for (const char* number : {"+55 11 90000-1111", "5511900001111", "+55 (11) 90000.1111", "0055 11 900001111",
                             "\u202A+55\u00A011\u00A090000\u20111111\u202C"}) {
    EXPECT_EQ(found(number), ana) << number;
  }
  EXPECT_EQ(found("+44 7700 900123"), otherAna);
  fault<TidewellError::UnknownChat>("90000-1111");
  fault<TidewellError::UnknownChat>("+55 11 90000-1111 Ana");
  fault<TidewellError::UnknownChat>("");
}

TEST_F(ChatFinderTest, FindsByTheJIDOfEitherIdentity) {
  EXPECT_EQ(found(group), group);
  fault<TidewellError::UnknownChat>(anaLID);
}

TEST_F(ChatFinderTest, TwoThatFitAreAllNamed) {
  const auto fault = this->fault<TidewellError::AmbiguousChat>("BEA");
  EXPECT_EQ(fault.wanted, "BEA");
  EXPECT_THAT(fault.chats, ElementsAre("“bea” · +447700900123 · " + otherAna, "“Bea” · +55 11 90000-2222 · " + bea));
  EXPECT_EQ(found(bea), bea);
}

TEST_F(ChatFinderTest, AnUnknownNameTellsTheNearestOnes) {
  const auto near = fault<TidewellError::UnknownChat>("conceicao");
  EXPECT_TRUE(near.areNearest);
  EXPECT_THAT(near.chats, ElementsAre("“Ana Conceição” · +55 11 90000-1111 · " + ana));
  EXPECT_THAT(fault<TidewellError::UnknownChat>("Familla").chats, ElementsAre("“Família” · " + group));
}

TEST_F(ChatFinderTest, AnUnknownNameThatIsNearNoneTellsAll) {
  const auto fault = this->fault<TidewellError::UnknownChat>("Zacharias");
  EXPECT_FALSE(fault.areNearest);
  EXPECT_EQ(fault.chats.size(), 4U);
}

TEST_F(ChatFinderTest, TellsTwentyAndHowManyMore) {
  for (int number = 10; number < 40; ++number) {
    const std::string digits = "55119000030" + std::to_string(number);
    contents.whatsApp.chats.push_back({.jid = digits + "@s.whatsapp.net", .name = "Zoe " + std::to_string(number)});
    contents.whatsApp.messages.push_back(
        {.chat = static_cast<std::int64_t>(contents.whatsApp.chats.size()), .date = 1});
  }
  const auto fault = this->fault<TidewellError::UnknownChat>("Zoe");
  ASSERT_EQ(fault.chats.size(), 21U);
  EXPECT_EQ(fault.chats.back(), "… and 10 more");
}

TEST_F(ChatFinderTest, NamesOfTheBackupSteerNothing) {
  contents.whatsApp.chats[2].name = "Us\n\x1b[2J\u202E";
  const auto fault = this->fault<TidewellError::UnknownChat>("Us \x1b[2");
  EXPECT_THAT(fault.chats, ElementsAre("“Us \uFFFD[2J” · " + group));
}

TEST_F(ChatFinderTest, AChatWithNothingInItIsNone) {
  contents.whatsApp.messages.pop_back();
  EXPECT_EQ(found("Bea"), bea);
}

TEST_F(ChatFinderTest, AChatOfFilesAloneIsOne) {
  contents.whatsApp.messages.erase(contents.whatsApp.messages.begin());
  contents.whatsApp.mediaFiles = {ExportTest::media(ana, "aa1", "jpg", "a photo")};
  EXPECT_EQ(found("ana conceicao"), ana);
}

}  // namespace
