#include "Tests/Support/SampleProfilePictures.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "Tests/Support/PictureFormats.h"
#include "Tests/Support/SampleAvatars.h"
#include "Tests/Support/SampleMedia.h"
#include "Tests/Support/SampleScenes.h"

namespace Fixture {

namespace {

// The creator of a group with a picture has none: the group's must not stand for her.
constexpr std::array<std::string_view, 8> withoutPicture = {"5511900002222", "98765432101234",    "5541900005555",
                                                            "15550004444",   "5511900007777",     "5581900002020",
                                                            "5511900013131", "120363000000000003"};
constexpr std::string_view withOldVersion = "5511900001111";
constexpr std::string_view withThumbnailOnly = "5571900001010";
constexpr std::string_view withWebP = "15550002222";
constexpr std::string_view footballGroup = "5511900002222-1400000000";
constexpr std::string_view bakery = "551130001111";
// The LID of a chat, and the phone number its picture is stored under.
constexpr std::pair<std::string_view, std::string_view> storedByPhone = {"45678901234567", "5511900012345"};

// Portraits that suit their people.
constexpr std::array<std::pair<std::string_view, std::uint64_t>, 20> portraits = {
    {{"120363000000000001", 79}, {"5511900001111", 1008}, {"5521900003333", 1005}, {"15550001111", 1023},
     {"15550002222", 1025},      {"447700900123", 1006},  {"5531900004444", 1024}, {"351900000111", 1016},
     {"966500000111", 1004},     {"972500000111", 1013},  {"819000000111", 1021},  {"8613000000111", 1022},
     {"4930001111", 1003},       {"55119000066", 1002},   {"5511900012345", 1026}, {"71234567890123", 1019},
     {"5511900008888", 1018},    {"15550003333", 1014},   {"5511900009999", 1010}, {"5571900001010", 1009}}};

std::uint64_t seedOf(std::string_view user) {
  const auto* found = std::ranges::find(portraits, user, [](const auto& portrait) { return portrait.first; });
  if (found != portraits.end()) return found->second;
  std::uint64_t seed = 7;
  for (const char letter : user) seed = seed * 31 + static_cast<unsigned char>(letter);
  return seed;
}

class PictureWriter {
 public:
  PictureWriter(bool drawn, SeededRandom& random) : drawn_(drawn), random_(random) {}

  void add(std::string_view user, bool group) {
    const auto version = static_cast<std::int64_t>(1'600'000'000 + random_.below(100'000'000));
    const std::uint64_t seed = seedOf(user);
    const std::string name(user);
    if (user == withOldVersion)
      files_.push_back(profilePicture(name, 1'500'000'001, picture(user, group, seed + 4, 800)));
    if (user != withThumbnailOnly) files_.push_back(profilePicture(name, version, picture(user, group, seed, 640)));
    files_.push_back(profilePicture(name, version, picture(user, group, seed, 96), "thumb"));
  }

  std::vector<BackupFile> files() { return std::move(files_); }

 private:
  Bytes picture(std::string_view user, bool group, std::uint64_t seed, std::uint32_t side) {
    if (!drawn_) return jpegPhoto(random_, side / 4, side / 4);
    Canvas canvas(side, side);
    if (user == footballGroup) {
      paintFootball(canvas);
    } else if (user == bakery) {
      Scenes::table(canvas, SeededRandom(seed), 0);
    } else if (group) {
      paintGroup(canvas, seed);
    } else {
      paintPerson(canvas, seed);
    }
    return user == withWebP && side > 100 ? webpOf(canvas) : jpegOf(canvas, 85);
  }

  bool drawn_;
  SeededRandom& random_;
  std::vector<BackupFile> files_;
};

}  // namespace

std::vector<BackupFile> sampleProfilePictures(std::span<const Chat> chats, bool drawn, SeededRandom& random) {
  PictureWriter writer(drawn, random);
  for (const Chat& chat : chats) {
    const std::string jid = std::get<std::string>(chat.jid);
    std::string_view user = std::string_view(jid).substr(0, jid.find('@'));
    const bool isOfAll = jid.ends_with("@broadcast") || jid.ends_with("@status");
    if (isOfAll || std::ranges::find(withoutPicture, user) != withoutPicture.end()) continue;
    if (user == storedByPhone.first) user = storedByPhone.second;
    writer.add(user, jid.ends_with("@g.us") || jid.ends_with("@newsletter"));
  }
  return writer.files();
}

}  // namespace Fixture
