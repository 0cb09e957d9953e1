#include "TidewellCore/Archive/ProfilePictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/CopyFailure.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ProfilePictures::FileName;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string ana = "5511900001111@s.whatsapp.net";
const std::string anaLID = "200000000000001@lid";
const std::string group = "5511900001111-1500000000@g.us";

// Something that begins as a file of a format does, and goes on with `rest`.
Fixture::Bytes jpeg(const std::string& rest = "") { return Fixture::bytesOf("\xFF\xD8\xFF\xE0" + rest); }
Fixture::Bytes webp() { return Fixture::bytesOf("RIFF\x10\0\0\0WEBPVP8L and so on"s); }

std::optional<ProfilePictureFormat> formatOf(const std::string& header) {
  return ProfilePictures::detectFormat(bytesOf(header));
}

TEST(ProfilePictures, ParsesUserAndVersion) {
  EXPECT_EQ(ProfilePictures::parseFileName("Media/Profile/5511900001111-1699.jpg"), (FileName{"5511900001111", 1699}));
  EXPECT_EQ(ProfilePictures::parseFileName("Media/Profile/5511900001111-1500000000-1699.thumb"),
            (FileName{"5511900001111-1500000000", 1699}));
  EXPECT_EQ(ProfilePictures::parseFileName("a-b.c-+7.x"), (FileName{"a-b.c", 7}));
  EXPECT_EQ(ProfilePictures::parseFileName("a-9223372036854775807."), (FileName{"a", 9223372036854775807}));
}

TEST(ProfilePictures, IgnoresOtherNames) {
  for (const char* name : {"", "Photo.jpg", "5511-12", "-12.jpg", "a-.jpg", "a-b.jpg", "a-12x.jpg", "a- 12.jpg",
                           "a-9223372036854775808.jpg", "a-+.jpg", "a-++1.jpg", "a-0x1.jpg", "folder-1.d/name.jpg"}) {
    EXPECT_EQ(ProfilePictures::parseFileName(name), std::nullopt) << name;
  }
}

TEST(ProfilePictures, DetectsFormats) {
  using enum ProfilePictureFormat;
  EXPECT_EQ(formatOf("\xFF\xD8\xFF"), jpeg);
  EXPECT_EQ(formatOf("\x89PNG\r\n\x1A\n"), png);
  EXPECT_EQ(formatOf("GIF87a"), gif);
  EXPECT_EQ(formatOf("GIF89a…"), gif);
  EXPECT_EQ(formatOf("RIFF....WEBP"), webp);
  for (const char* brand : {"heic", "heif", "mif1", "msf1"}) EXPECT_EQ(formatOf("....ftyp"s + brand), heic);
  EXPECT_EQ(rawValue(webp), "webp");
}

TEST(ProfilePictures, DetectsNothingElse) {
  for (const std::string& header : {""s, "\xFF\xD8"s, "\x89PNG\r\n\x1A"s, "GIF88a"s, "RIFF....WAVE"s, "RIFF....WEB"s,
                                    "....ftypavif"s, "....ftyphei"s, "ftypheic"s, "\0\xFF\xD8\xFF"s}) {
    EXPECT_EQ(formatOf(header), std::nullopt);
  }
}

class Phone : public testing::TestWithParam<bool> {
 protected:
  void add(const std::string& name, const Fixture::Bytes& content, Fixture::StorageOptions storage = {}) {
    contents.whatsApp.files.push_back(
        {.relativePath = "Media/Profile/" + name, .content = content, .storage = std::move(storage)});
  }

  ProfilePictures::Outcome attach(std::vector<ArchiveChat>& chats) {
    if (GetParam()) contents.encryption = Fixture::Encryption{};
    contents.whatsApp.chats = {{.jid = ana, .name = "Ana"}};
    fs::remove_all(folder / "device");
    Fixture::writeBackup(contents, folder / "device");
    std::optional<std::string_view> password;
    if (contents.encryption) password = contents.encryption->keyBag.password;
    BackupSource source = BackupSource::load(OpenedBackup::open(folder / "device", password), {});
    source.snapshot = ExportTest::snapshotOf({}, {{anaLID, ana}});
    lost.clear();
    return ProfilePictures::attachAndCopy(chats, source, folder / "messages",
                                          [&](const std::exception& error, const ProfilePictures::Loss& loss) {
                                            lost.emplace_back(loss.name, CopyFailures::reasonOf(error, loss.source));
                                          });
  }

  // The picture that the chat of `jid` gets: its path and its bytes.
  std::pair<std::string, Fixture::Bytes> pictureOf(const std::string& jid) {
    std::vector<ArchiveChat> chats{{.id = "the-chat", .jid = jid}};
    attach(chats);
    const std::string path = chats.front().avatarRelativePath.value_or("");
    return {path, path.empty() ? Fixture::Bytes{} : Fixture::readFile(folder / "messages" / path)};
  }

  Fixture::TemporaryDirectory folder;
  Fixture::BackupContents contents;
  std::vector<std::pair<std::string, FailureReason>> lost;  // the pictures and why
};
INSTANTIATE_TEST_SUITE_P(ProfilePictures, Phone, testing::Bool(),
                         [](const auto& isEncrypted) { return isEncrypted.param ? "Encrypted" : "Plain"; });

TEST_P(Phone, CopiesAPictureUnderTheChatsIDAndItsTrueFormat) {
  add("5511900001111-1.jpg", webp());
  EXPECT_EQ(pictureOf(ana), std::pair("avatars/the-chat.webp"s, webp()));
}

TEST_P(Phone, PrefersAFullPictureThenTheNewestThenTheLargest) {
  add("5511900001111-9.thumb", jpeg("a newer thumbnail"));
  add("5511900001111-2.jpg", jpeg("old and much, much larger"));
  add("5511900001111-10.jpg", jpeg("new"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("new"));
  add("5511900001111-10.png", jpeg("new and larger"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("new and larger"));
}

TEST_P(Phone, OfEqualPicturesTheFirstByNameWins) {
  add("5511900001111-1.b", jpeg("b"));
  add("5511900001111-1.a", jpeg("a"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("a"));
}

TEST_P(Phone, TakesAThumbnailWhenThereIsNothingElse) {
  add("5511900001111-1.thumb", jpeg("small"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("small"));
}

TEST_P(Phone, PassesOverFilesThatAreNoPicturesOrCannotBeRead) {
  add("5511900001111-9.enc", Fixture::bytesOf("plain text, no picture"));
  add("5511900001111-8.jpg", {});
  add("5511900001111-7.jpg", jpeg("gone"), {.missing = true});
  add("5511900001111-6.jpg", jpeg("still here"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("still here"));
  EXPECT_THAT(lost, ElementsAre(std::pair("5511900001111-7.jpg"s, FailureReason::missing)));
}

TEST_P(Phone, TellsOfPicturesWhoseBytesAreNone) {
  add("5511900001111-9.jpg", Fixture::bytesOf("random bytes in its place"));
  add("5511900001111-8.JPEG", Fixture::bytesOf("\xFF\xD8"));
  add("5511900001111-7.thumb", Fixture::bytesOf("no thumbnail"));
  EXPECT_EQ(pictureOf(ana).first, "");
  EXPECT_THAT(lost, ElementsAre(std::pair("5511900001111-9.jpg"s, FailureReason::unreadable),
                                std::pair("5511900001111-8.JPEG"s, FailureReason::unreadable),
                                std::pair("5511900001111-7.thumb"s, FailureReason::unreadable)));
}

TEST_P(Phone, TellsOfAPictureThatCannotBeOpened) {
  const auto whole = jpeg("0123456789012345678901234567890123456789");
  add("5511900001111-1.jpg", whole, {.truncatedTo = 33});
  if (GetParam()) {
    EXPECT_EQ(pictureOf(ana).first, "");
    EXPECT_THAT(lost, ElementsAre(std::pair("5511900001111-1.jpg"s, FailureReason::cutShort)));
  } else {
    EXPECT_EQ(pictureOf(ana).second, Fixture::Bytes(whole.begin(), whole.begin() + 33)) << "it has no padding to miss";
  }
}

TEST_P(Phone, FindsPicturesUnderEitherIdentityOfAPerson) {
  add("200000000000001-1.jpg", jpeg("under the LID"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("under the LID"));
  add("5511900001111-2.jpg", jpeg("under the number"));
  EXPECT_EQ(pictureOf(anaLID).second, jpeg("under the number"));
}

TEST_P(Phone, AGroupsPictureIsNotItsCreators) {
  add("5511900001111-1500000000-7.jpg", jpeg("the group"));
  EXPECT_EQ(pictureOf(ana).first, "");
  EXPECT_EQ(pictureOf(group).second, jpeg("the group"));
}

TEST_P(Phone, CountsWhatIsCopiedAndWhatIsNot) {
  add("5511900001111-1.jpg", jpeg("a"));
  std::vector<ArchiveChat> chats{{.id = "ana", .jid = ana}, {.id = "bea", .jid = "5511900002222@s.whatsapp.net"}};
  EXPECT_EQ(attach(chats), (ProfilePictures::Outcome{.copied = 1, .skipped = 1}));
  const auto before = Fixture::treeSnapshot(folder / "messages");
  EXPECT_EQ(attach(chats), (ProfilePictures::Outcome{.copied = 0, .skipped = 2}));
  EXPECT_EQ(Fixture::treeSnapshot(folder / "messages"), before);
  EXPECT_EQ(chats[0].avatarRelativePath, "avatars/ana.jpeg");
  EXPECT_EQ(chats[1].avatarRelativePath, std::nullopt);
}

TEST_P(Phone, ANewPictureTakesThePlaceOfTheOld) {
  add("5511900001111-1.jpg", jpeg("old"));
  pictureOf(ana);
  contents.whatsApp.files.clear();
  add("5511900001111-2.jpg", jpeg("new"));
  EXPECT_EQ(pictureOf(ana).second, jpeg("new"));
}

TEST_P(Phone, AThumbnailTakesNoFullPicturesPlace) {
  add("5511900001111-1.jpg", jpeg("a full picture"));
  pictureOf(ana);
  contents.whatsApp.files.clear();
  add("5511900001111-2.thumb", jpeg("small"));
  EXPECT_EQ(pictureOf(ana), std::pair("avatars/the-chat.jpeg"s, jpeg("a full picture")));
}

TEST(ProfilePictures, ListsAPersonsUserPartsOnce) {
  const ChatStorageSnapshot snapshot = ExportTest::snapshotOf({}, {{anaLID, ana}});
  EXPECT_THAT(ProfilePictures::matchingUsers(ana, snapshot), ElementsAre("5511900001111", "200000000000001"));
  EXPECT_THAT(ProfilePictures::matchingUsers(anaLID, snapshot), ElementsAre("200000000000001", "5511900001111"));
  EXPECT_THAT(ProfilePictures::matchingUsers(group, snapshot), ElementsAre("5511900001111-1500000000"));
  EXPECT_THAT(ProfilePictures::matchingUsers("", snapshot), IsEmpty());
}

}  // namespace
