#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/ChatData/SnapshotLoader.h"

namespace Fixture {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* phone = "5511900001111@s.whatsapp.net";
constexpr const char* lid = "77001122334455@lid";

MediaFile media(const std::string& localPath, std::size_t size, std::optional<std::int64_t> message = std::nullopt) {
  return {.localPath = localPath, .content = Bytes(size, 1), .message = message};
}

ScanResult scan(const BackupContents& contents, const std::string& locale = "en_US") {
  const TemporaryDirectory folder;
  writeBackup(contents, folder / "device");
  const auto before = treeSnapshot(folder / "device");
  const BackupSource source = BackupSource::load(OpenedBackup::open(folder / "device", "correct horse"), {});
  ScanResult result = ScanSummary::summarize(source, {}, Locale{locale});
  EXPECT_EQ(treeSnapshot(folder / "device"), before) << "the backup was touched";
  return result;
}

ScanResult scan(WhatsAppContents app) { return scan(BackupContents{.whatsApp = std::move(app)}); }

std::vector<std::string> namesOf(const ScanResult& result) {
  std::vector<std::string> names;
  for (const ScanChat& chat : result.chats) names.push_back(chat.name);
  return names;
}

std::vector<std::string> jidsOf(const ScanResult& result) {
  std::vector<std::string> jids;
  for (const ScanChat& chat : result.chats) jids.push_back(chat.id());
  return jids;
}

TEST(ScanSummary, CountsChatsFilesAndBytesByKind) {
  for (const bool encrypted : {false, true}) {
    BackupContents contents{
        .whatsApp = {.chats = {{.jid = phone, .name = "Ana"}},
                     .messages = {{.chat = 1, .date = 1}, {.chat = 1, .date = 2}},
                     .mediaFiles = {media("Media/5511900001111@s.whatsapp.net/a/b/1.jpg", 100, 1),
                                    media("Media/5511900001111@s.whatsapp.net/a/b/2.JPG", 20),
                                    media("Media/5511900001111@s.whatsapp.net/a/b/3.opus", 3),
                                    media("Media/5511900001111@s.whatsapp.net/a/b/4.xyz", 4000)},
                     .files = {thumbnail("Media/5511900001111@s.whatsapp.net/a/b/1.jpg", Bytes(9))}}};
    if (encrypted) contents.encryption = Encryption{};
    const ScanResult result = scan(contents);
    EXPECT_EQ(result.chatCount, 1);
    EXPECT_EQ(result.mediaFileCount, 4);
    EXPECT_EQ(result.totalBytes, 4123);
    EXPECT_EQ(result.skippedThumbnailCount, 1);
    EXPECT_TRUE(result.hasChatStorage);
    EXPECT_EQ(result.whatsAppDomain, consumerDomain);
    const std::map<MediaKind, MediaTypeStats> stats = {{MediaKind::photos, {.count = 2, .byteCount = 120}},
                                                       {MediaKind::voiceNotes, {.count = 1, .byteCount = 3}},
                                                       {MediaKind::documents, {.count = 1, .byteCount = 4000}}};
    EXPECT_EQ(result.statsByKind, stats);
    EXPECT_THAT(result.chats, ElementsAre(ScanChat{.jid = phone,
                                                   .name = "Ana",
                                                   .messageCount = 2,
                                                   .mediaFileCount = 4,
                                                   .mediaBytes = 4123,
                                                   .statsByKind = stats}));
  }
}

TEST(ScanSummary, AddsUpTheKindsThatAreAskedFor) {
  const ScanResult result{.statsByKind = {{MediaKind::photos, {.count = 2, .byteCount = 120}},
                                          {MediaKind::documents, {.count = 1, .byteCount = 4000}}}};
  EXPECT_EQ(result.count({MediaKind::photos, MediaKind::documents}), 3);
  EXPECT_EQ(result.bytes({MediaKind::photos, MediaKind::documents}), 4120);
  EXPECT_EQ(result.count({MediaKind::photos, MediaKind::videos}), 2);
  EXPECT_EQ(result.bytes({MediaKind::videos}), 0);
  EXPECT_EQ(result.count({}), 0);
}

TEST(ScanSummary, HugeRecordedSizesDoNotOverflowASum) {
  constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
  WhatsAppContents app{.mediaFiles = {media("Media/a@g.us/1.jpg", 1), media("Media/a@g.us/2.jpg", 1)}};
  for (MediaFile& file : app.mediaFiles) file.storage.recordedSize = huge;
  const ScanResult result = scan(app);
  EXPECT_EQ(result.totalBytes, huge);
  EXPECT_EQ(result.statsByKind.at(MediaKind::photos).byteCount, huge);
  EXPECT_EQ(result.chats.at(0).mediaBytes, huge);
  EXPECT_EQ(result.bytes({MediaKind::photos}), huge);
}

TEST(ScanSummary, MediaWithoutAMessageAndAChatFolderAreUnknown) {
  const ScanResult result = scan({.withChatStorage = false,
                                  .withContacts = false,
                                  .files = {{"", "Message/Media/1.jpg", Bytes(5)}, {"", "Message/Media//", Bytes(6)}}});
  EXPECT_FALSE(result.hasChatStorage);
  // The first piece below Media is the chat's folder, whatever it is called.
  EXPECT_THAT(jidsOf(result), ElementsAre("1.jpg", "Unknown"));
  EXPECT_EQ(result.chats[1], (ScanChat{.jid = "Unknown",
                                       .name = "Unknown",
                                       .mediaFileCount = 1,
                                       .mediaBytes = 6,
                                       .statsByKind = {{MediaKind::documents, {.count = 1, .byteCount = 6}}}}));
}

TEST(ScanSummary, ListsChatsWithMessagesWithMediaAndWithBoth) {
  const ScanResult result = scan({.chats = {{.jid = "1-1@g.us", .name = "Messages"},
                                            {.jid = "2-2@g.us", .name = "Media"},
                                            {.jid = "3-3@g.us", .name = "Neither"},
                                            {.jid = "4-4@g.us", .name = "Both"}},
                                  .messages = {{.chat = 1}, {.chat = 4}},
                                  .mediaFiles = {media("Media/2-2@g.us/1.jpg", 1), media("Media/x/2.jpg", 1, 2)}});
  EXPECT_THAT(namesOf(result), ElementsAre("Both", "Media", "Messages"));
  EXPECT_EQ(result.chatCount, 3);
}

TEST(ScanSummary, BothRecordsOfOnePersonAreOneRow) {
  const ScanResult result = scan({.chats = {{.jid = lid, .name = "Aninha"}, {.jid = phone, .name = "Ana"}},
                                  .messages = {{.chat = 1}, {.chat = 2}, {.chat = 2}},
                                  .contacts = {{.whatsAppID = phone, .lid = lid}},
                                  .mediaFiles = {media(std::string("Media/") + lid + "/1.jpg", 10),
                                                 media(std::string("Media/") + phone + "/2.jpg", 5)}});
  EXPECT_THAT(result.chats, ElementsAre(ScanChat{.jid = phone,
                                                 .name = "Ana",
                                                 .messageCount = 3,
                                                 .mediaFileCount = 2,
                                                 .mediaBytes = 15,
                                                 .statsByKind = {{MediaKind::photos, {.count = 2, .byteCount = 15}}}}));
}

TEST(ScanSummary, NamesThatDifferInLetterCaseAloneAreOrderedByJid) {
  const ScanResult result = scan({.chats = {{.jid = "2-2@g.us", .name = "ana"},
                                            {.jid = "3-3@g.us", .name = "Bia"},
                                            {.jid = "1-1@g.us", .name = "ANA"},
                                            {.jid = "4-4@g.us", .name = "Ana"}},
                                  .messages = {{.chat = 1}, {.chat = 2}, {.chat = 3}, {.chat = 4}}});
  EXPECT_THAT(jidsOf(result), ElementsAre("1-1@g.us", "2-2@g.us", "4-4@g.us", "3-3@g.us"));
}

TEST(ScanSummary, NamesStandInTheOrderOfTheLanguage) {
  const BackupContents contents{.whatsApp = {.chats = {{.jid = "1-1@g.us", .name = "Zoe"},
                                                       {.jid = "2-2@g.us", .name = "Ärger"},
                                                       {.jid = "3-3@g.us", .name = "Álvaro"}},
                                             .messages = {{.chat = 1}, {.chat = 2}, {.chat = 3}}}};
  EXPECT_THAT(namesOf(scan(contents, "en_US")), ElementsAre("Álvaro", "Ärger", "Zoe"));
  EXPECT_THAT(namesOf(scan(contents, "sv_SE")), ElementsAre("Álvaro", "Zoe", "Ärger"));
}

TEST(ScanSummary, WhatBelongsToNoChatThatCanBeToldIsCountedUnderUnknown) {
  const ScanResult result =
      scan({.chats = {{.name = "Lost"}, {.jid = " "}}, .messages = {{.chat = 1}, {.chat = 2}, {.chat = 99}}});
  EXPECT_THAT(result.chats, ElementsAre(ScanChat{.jid = "Unknown", .name = "Unknown", .messageCount = 3}));
}

TEST(ScanSummary, ABackupWithoutWhatsAppIsEmpty) {
  const ScanResult result = scan({.withChatStorage = false, .withContacts = false});
  EXPECT_EQ(result, ScanResult{});
}

TEST(ScanSummary, OfBothAppsTheChatDatabasesDomainIsNamed) {
  BackupContents contents{.whatsApp = {.withChatStorage = false, .withContacts = false}};
  contents.businessApp = WhatsAppContents{
      .domain = std::string(businessDomain), .chats = {{.jid = phone, .name = "Ana"}}, .messages = {{.chat = 1}}};
  const ScanResult result = scan(contents);
  EXPECT_EQ(result.whatsAppDomain, businessDomain);
  EXPECT_THAT(namesOf(result), ElementsAre("Ana"));
}

}  // namespace
}  // namespace Fixture
