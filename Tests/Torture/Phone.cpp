#include "Tests/Torture/Phone.h"

#include <array>
#include <variant>

#include "Tests/Support/TestCrypto.h"
#include "Tests/Torture/NastyNames.h"

namespace Torture {
namespace {

using Fixture::Journal;

constexpr std::size_t mostChats = 6;
constexpr std::size_t mostMessages = 80;
constexpr std::size_t mostMedia = 40;
constexpr double firstDate = 700'000'000;
constexpr std::size_t markLength = 17;  // "w" and 16 digits

const std::array journals{Journal::rollback, Journal::walHeader, Journal::walWithPendingRows};
const std::array decorations = std::to_array<std::string>(
    {"", " <b>&amp;\"", "\nsecond line", " 👍🏽", " `${x}`", " \u202E", " </script>", "\r\n", " مرحبا"});
const std::array extensions = std::to_array<std::string>({"jpg", "mp4", "opus", "webp", "pdf"});

const std::string& text(const Fixture::SQLValue& value) { return std::get<std::string>(value); }

// "Media/JID/x/y/MARK name.extension"
std::string jidIn(const std::string& localPath) {
  const auto first = localPath.find('/') + 1;
  return localPath.substr(first, localPath.find('/', first) - first);
}

std::string markIn(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.substr(0, name.find('_'));
}

}  // namespace

Phone::Phone(Fixture::SeededRandom& random) : random_(random) {
  contents_.seed = random.next();
  if (random.chance(40)) contents_.encryption = Fixture::Encryption{};
  if (!isEncrypted() && random.chance(50)) contents_.manifestJournal = random.pick(journals);
  contents_.whatsApp.journal = random.pick(journals);
  for (std::size_t count = 1 + random.below(mostChats); count > 0; --count) addChat();
  addMessages(random.below(mostMessages + 1));
  addMedia(random.below(mostMedia + 1));
}

void Phone::write(const std::filesystem::path& backup) const {
  std::filesystem::remove_all(backup);
  Fixture::writeBackup(contents_, backup);
}

std::string Phone::change() {
  std::string told = "the phone";
  if (random_.chance(60)) addMessages(1 + random_.below(20)), told += ", new messages";
  if (random_.chance(60)) addMedia(1 + random_.below(8)), told += ", new media";
  if (random_.chance(30)) addChat(), told += ", a new chat";
  if (random_.chance(30)) renameChat(), told += ", a new name";
  if (random_.chance(20)) removeChat(), told += ", a chat gone";
  contents_.backupTime += 86'400;
  return told;
}

void Phone::addChat() {
  auto& app = contents_.whatsApp;
  const std::int64_t number = ++lastChat_;
  const std::string user = "55119" + std::to_string(10'000'000 + number);
  const bool isGroup = random_.chance(25);
  const std::string jid = isGroup ? user + "-1500000000@g.us" : user + "@s.whatsapp.net";
  app.chats.push_back({.pk = number, .jid = jid, .name = NastyNames::chat(random_)});
  if (!random_.chance(40)) return;
  Fixture::Bytes picture = Fixture::bytesOf("\xFF\xD8\xFF");
  Fixture::append(picture, random_.bytes(20 + random_.below(3000)));
  app.files.push_back(Fixture::profilePicture(jid.substr(0, jid.find('@')), 1, picture));
}

void Phone::addMessages(std::size_t count) {
  auto& app = contents_.whatsApp;
  for (; count > 0; --count) {
    Fixture::Message message{
        .pk = ++lastMessage_, .chat = random_.pick(app.chats).pk, .isFromMe = random_.chance(50) ? 1 : 0};
    if (!random_.chance(4)) message.date = firstDate + static_cast<double>(random_.below(40'000'000)) / 4;
    message.text = "w" + Fixture::hex(random_.bytes(8)) + random_.pick(decorations);
    app.messages.push_back(std::move(message));
  }
}

void Phone::addMedia(std::size_t count) {
  for (; count > 0; --count) addMedium();
}

// No two are of one size: a medium that is there already is known by its name and size.
std::size_t Phone::freshSize() {
  while (true) {
    const std::size_t size = random_.below(std::size_t{1} << (1 + random_.below(18)));
    if (size <= 200'000 && sizes_.insert(size).second) return size;
  }
}

void Phone::addMedium() {
  auto& app = contents_.whatsApp;
  const std::size_t size = freshSize();
  Fixture::MediaFile medium{.content = random_.bytes(size)};
  std::int64_t chat = random_.pick(app.chats).pk;
  std::string name;
  if (!app.mediaFiles.empty() && size > 0 && random_.chance(15)) {
    // One more of a name that is there.
    const std::string& other = random_.pick(app.mediaFiles).localPath;
    const std::string jid = jidIn(other);
    for (const Fixture::Chat& candidate : app.chats) {
      if (text(candidate.jid) == jid) chat = candidate.pk;
    }
    name = other.substr(other.rfind('/') + 1);
  } else {
    const std::string mark = (size == 0 ? "empty" : "k") + std::to_string(++lastMedium_) + "_";
    name = mark + NastyNames::file(random_) + "." + random_.pick(extensions);
  }
  const std::string folders = "/" + Fixture::hex(random_.bytes(1)) + "/" + Fixture::hex(random_.bytes(3)) + "/";
  medium.localPath = "Media/" + jidOf(chat) + folders + name;
  if (!random_.chance(20)) {
    medium.message = ++lastMessage_;
    Fixture::Message message{.pk = lastMessage_, .chat = chat};
    if (!random_.chance(5)) message.date = firstDate + static_cast<double>(random_.below(10'000'000));
    app.messages.push_back(std::move(message));
  }
  app.mediaFiles.push_back(std::move(medium));
}

void Phone::renameChat() {
  auto& chats = contents_.whatsApp.chats;
  chats[random_.below(chats.size())].name = NastyNames::chat(random_);
}

void Phone::removeChat() {
  auto& app = contents_.whatsApp;
  if (app.chats.size() < 2) return;
  const Fixture::Chat gone = random_.pick(app.chats);
  const std::string& jid = text(gone.jid);
  const std::string user = jid.substr(0, jid.find('@')) + "-1.";
  std::erase_if(app.chats, [&](const auto& chat) { return chat.pk == gone.pk; });
  std::erase_if(app.messages, [&](const auto& message) { return std::get<std::int64_t>(message.chat) == gone.pk; });
  std::erase_if(app.mediaFiles, [&](const auto& medium) { return jidIn(medium.localPath) == jid; });
  std::erase_if(app.files, [&](const auto& file) { return file.relativePath.find(user) != std::string::npos; });
}

std::string Phone::jidOf(std::int64_t chat) const {
  for (const Fixture::Chat& candidate : contents_.whatsApp.chats) {
    if (candidate.pk == chat) return text(candidate.jid);
  }
  return {};
}

std::vector<Medium> Phone::media() const {
  std::vector<Medium> media;
  for (const auto& file : contents_.whatsApp.mediaFiles) {
    media.push_back({Fixture::sha1Hex(file.content), markIn(file.localPath), jidIn(file.localPath)});
  }
  return media;
}

std::vector<Medium> Phone::pictures() const {
  std::vector<Medium> pictures;
  for (const auto& file : contents_.whatsApp.files) {
    const std::string name = file.relativePath.substr(file.relativePath.rfind('/') + 1);
    pictures.push_back({Fixture::sha1Hex(file.content), name, ""});
  }
  return pictures;
}

std::vector<Text> Phone::texts() const {
  std::vector<Text> texts;
  for (const auto& message : contents_.whatsApp.messages) {
    const auto* written = std::get_if<std::string>(&message.text);
    if (written != nullptr) {
      texts.push_back({written->substr(0, markLength), jidOf(std::get<std::int64_t>(message.chat))});
    }
  }
  return texts;
}

}  // namespace Torture
