#include "Tests/Support/SampleConversations.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/SampleMedia.h"
#include "Tests/Support/SampleTexts.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

namespace {

// Seconds since 2001: January 2018 and May 2024.
constexpr double firstDate = 536'500'000;
constexpr double lastDate = 738'000'000;
constexpr double distantPast = -63'114'076'800;
constexpr double distantFuture = 63'113'904'000;

enum MessageType : std::int64_t {
  photoType = 1,
  videoType = 2,
  audioType = 3,
  groupEventType = 6,
  documentType = 8,
  deletedType = 14,
  stickerType = 15
};

std::string base64(const Bytes& bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t index = 0; index + 2 < bytes.size(); index += 3) {
    const std::uint32_t group = static_cast<std::uint32_t>(bytes[index]) << 16U |
                                static_cast<std::uint32_t>(bytes[index + 1]) << 8U | bytes[index + 2];
    for (const unsigned shift : {18U, 12U, 6U, 0U}) text += digits[group >> shift & 63U];
  }
  return text;
}

// What newer versions put where a name was: a protobuf's bytes in base64.
std::string opaqueName(SeededRandom& random) {
  Bytes message = {0x0A, 0x1C};
  append(message, random.bytes(28));
  return base64(message);
}

SQLValue textOrNull(std::string_view text) {
  SQLValue value;
  if (!text.empty()) value = std::string(text);
  return value;
}

// A chat of the sample and who takes part in it.
struct Conversation {
  std::int64_t pk = 0;
  std::string jid;
  Language language = Language::english;
  // Keys of a group's members; empty in all other chats.
  std::vector<std::int64_t> members;
};

class SampleWriter {
 public:
  explicit SampleWriter(const SampleOptions& options) : options_(options), random_(options.seed) {}

  BackupContents write() {
    addPeople();
    addGroups();
    addOtherChats();
    addMessages();
    addLooseMedia();
    addProfilePictures();
    BackupContents contents{.deviceName = "iPhone de Ana", .encryption = options_.encryption, .seed = options_.seed};
    contents.whatsApp = std::move(app_);
    addOtherFiles(contents);
    return contents;
  }

 private:
  void addChat(const std::string& jid, SQLValue name, Language language, std::vector<std::int64_t> members = {}) {
    const auto pk = static_cast<std::int64_t>(app_.chats.size() + 1);
    app_.chats.push_back({.pk = pk, .jid = jid, .name = std::move(name), .archived = pk % 11 == 0});
    conversations_.push_back({pk, jid, language, std::move(members)});
  }

  void addPeople() {
    for (const SamplePerson& person : samplePeople()) {
      addChat(person.jid(), textOrNull(person.chatName), person.language);
      if (!person.contact.empty()) app_.contacts.push_back(contactOf(person));
      if (!person.pushName.empty()) {
        PushName name{.jid = person.jid(), .name = std::string(person.pushName)};
        if (app_.pushNames.size() % 6 == 5) name.name = bytesOf(person.pushName);
        app_.pushNames.push_back(std::move(name));
      }
    }
    app_.contacts.front().lid = samplePeople()[1].jid();
    app_.lidPairs = {{.lid = samplePeople()[18].jid(), .phoneNumber = "5511900012345"}};
  }

  // Names as text or as blob, identifiers with and without their server part or absent.
  Contact contactOf(const SamplePerson& person) {
    const std::string name(person.contact);
    const std::size_t variant = app_.contacts.size() % 5;
    Contact contact{.whatsAppID = person.jid(), .phoneNumber = std::string("+").append(person.user)};
    if (variant == 1) contact.whatsAppID = std::string(person.user);
    if (variant == 3) contact.whatsAppID = {};
    if (name.starts_with("Padaria")) {
      contact.businessName = name;
    } else {
      contact.fullName = variant == 2 ? SQLValue(bytesOf(name)) : SQLValue(name);
      contact.givenName = name.substr(0, name.find(' '));
    }
    return contact;
  }

  void addGroups() {
    for (const SampleGroup& group : sampleGroups()) {
      const auto chat = static_cast<std::int64_t>(app_.chats.size() + 1);
      std::vector<std::int64_t> members;
      for (std::size_t count = 4 + random_.below(6); count > 0; --count) members.push_back(addMember(chat));
      addChat(group.jid(), std::string(group.name), group.language, std::move(members));
    }
  }

  // A person of the address book, or a stranger with a name of their own, an opaque one, or none.
  std::int64_t addMember(std::int64_t chat) {
    GroupMember member{.chat = chat};
    if (random_.chance(60)) {
      const SamplePerson& person = random_.pick(samplePeople());
      member.jid = person.jid();
      if (random_.chance(50)) member.firstName = textOrNull(person.pushName);
    } else {
      const std::string number = std::to_string(100'000 + random_.below(900'000));
      member.jid = random_.chance(50) ? "55119" + number + "00@s.whatsapp.net" : "20000000" + number + "@lid";
      if (random_.chance(50)) member.contactName = random_.chance(60) ? opaqueName(random_) : "";
      if (random_.chance(60)) app_.pushNames.push_back({.jid = member.jid, .name = "Convidado " + number.substr(3)});
    }
    app_.members.push_back(std::move(member));
    return static_cast<std::int64_t>(app_.members.size());
  }

  void addOtherChats() {
    addChat("status@broadcast", {}, Language::english);
    addChat("1400000000@broadcast", "Avisos", Language::portuguese);
    addChat("120363000000000099@newsletter", "Notícias do bairro", Language::portuguese);
    addChat("5511900013131@s.whatsapp.net", "Só silêncio", Language::portuguese);
  }

  // Talks of a few messages in one chat, one talk after the other; the keys follow the dates.
  void addMessages() {
    const double talkGap = (lastDate - firstDate) * 8 / static_cast<double>(options_.messageCount);
    double date = firstDate;
    while (app_.messages.size() < options_.messageCount) {
      const Conversation& conversation = pickConversation();
      double now = date;
      for (std::size_t left = 3 + random_.below(11); left > 0 && app_.messages.size() < options_.messageCount; --left) {
        addMessage(conversation, now);
        if (!random_.chance(6)) now += static_cast<double>(5 + random_.below(400));
      }
      date += talkGap;
    }
    if (app_.messages.size() > 10) {
      app_.messages[3].date = distantPast;
      app_.messages[8].date = distantFuture;
    }
  }

  // The first chats are the busiest, the last one stays without a message.
  const Conversation& pickConversation() {
    const std::size_t chats = conversations_.size() - 1;
    const std::size_t range = random_.chance(40) ? 1 + random_.below(chats) : chats;
    return conversations_[random_.below(range)];
  }

  void addMessage(const Conversation& conversation, double date) {
    const bool mine = random_.chance(45) && conversation.jid != "120363000000000099@newsletter";
    const std::size_t done = app_.messages.size();
    Message message{.chat = conversation.pk, .isFromMe = mine ? 1 : 0};
    if (mine) {
      message.date = date + static_cast<double>(random_.below(1'000'000)) / 1e6;
      message.toJID = conversation.jid;
    } else {
      message.date = date;
      message.fromJID = conversation.jid;
      if (!conversation.members.empty()) message.member = random_.pick(conversation.members);
      message.pushName = messagePushName();
    }
    const std::size_t share = options_.mediaCount;
    if ((done + 1) * share / options_.messageCount > done * share / options_.messageCount) {
      attachMedia(conversation, message, static_cast<std::int64_t>(done + 1));
    } else if (random_.chance(2)) {
      message.type = conversation.members.empty() ? deletedType : groupEventType;
    } else {
      message.text = sampleText(conversation.language, random_);
    }
    app_.messages.push_back(std::move(message));
  }

  SQLValue messagePushName() {
    const std::size_t roll = random_.below(100);
    if (roll < 25) return opaqueName(random_);
    if (roll < 30) return bytesOf("Convidada");
    return {};
  }

  void attachMedia(const Conversation& conversation, Message& message, std::int64_t pk) {
    MediaFile file = makeMedia(conversation.jid, message);
    file.message = pk;
    if (message.type == photoType && random_.chance(20)) file.title = sampleText(conversation.language, random_);
    addThumbnail(file, message.type);
    app_.mediaFiles.push_back(std::move(file));
  }

  void addThumbnail(MediaFile& file, std::int64_t type) {
    if (type != photoType && type != videoType) return;
    app_.files.push_back(thumbnail(file.localPath, jpegPhoto(random_, 48, 36)));
    file.thumbnailPath = app_.files.back().relativePath.substr(std::string_view("Message/").size());
  }

  MediaFile makeMedia(const std::string& jid, Message& message) {
    const std::size_t roll = random_.below(100);
    if (roll < 58) {
      message.type = photoType;
      return media(jid, roll < 3 ? "JPG" : "jpg", photo());
    }
    if (roll < 68) {
      message.type = videoType;
      MediaFile video = media(jid, "mp4", mp4Video(random_, 20'000 + random_.below(180'000)));
      video.duration = static_cast<std::int64_t>(5 + random_.below(90));
      return video;
    }
    if (roll < 82) {
      message.type = audioType;
      const std::size_t length = 4'000 + random_.below(36'000);
      MediaFile voice =
          roll < 79 ? media(jid, "opus", opusVoiceNote(random_, length)) : media(jid, "m4a", m4aAudio(random_, length));
      voice.duration = static_cast<std::int64_t>(length / 2'000);
      return voice;
    }
    if (roll < 90) {
      message.type = stickerType;
      return media(jid, "webp", webpSticker(random_));
    }
    message.type = documentType;
    return document(jid, roll < 97);
  }

  // A forwarded photo has the bytes of the one it came from.
  Bytes photo() {
    if (lastPhoto_.empty() || !random_.chance(5)) {
      const auto width = static_cast<std::uint32_t>(160 + 16 * random_.below(8));
      lastPhoto_ = jpegPhoto(random_, width, random_.chance(50) ? width * 3 / 4 : width * 4 / 3);
    }
    return lastPhoto_;
  }

  MediaFile document(const std::string& jid, bool asPDF) {
    constexpr std::array names = {"Contrato", "Orçamento 2023", "Invoice", "Meeting notes", "Receita"};
    const std::string name = random_.pick(names);
    MediaFile file = asPDF ? media(jid, "pdf", pdfDocument("Page " + std::to_string(random_.below(10'000))))
                           : media(jid, "docx", docxDocument(random_, 6'000 + random_.below(20'000)));
    file.title = name + (asPDF ? ".pdf" : ".docx");
    return file;
  }

  MediaFile media(const std::string& jid, const std::string& extension, Bytes content) {
    return {.localPath = mediaPath(jid, random_.uuid(), extension), .content = std::move(content)};
  }

  // Files that no message carries: in a known chat, and in a chat that has no record any more.
  void addLooseMedia() {
    for (const std::string& jid : {conversations_.front().jid, std::string("5511900014141@s.whatsapp.net")}) {
      for (int count = 0; count < 4; ++count) app_.mediaFiles.push_back(media(jid, "jpg", photo()));
    }
  }

  void addProfilePictures() {
    for (const Conversation& conversation : conversations_) {
      if (conversation.pk % 3 == 0) continue;
      const std::string user = conversation.jid.substr(0, conversation.jid.find('@'));
      const auto number = static_cast<std::int64_t>(1'600'000'000 + random_.below(100'000'000));
      app_.files.push_back(profilePicture(user, number, jpegPhoto(random_, 160, 160)));
      app_.files.push_back(profilePicture(user, number, jpegPhoto(random_, 48, 48), "thumb"));
    }
  }

  void addOtherFiles(BackupContents& contents) {
    const std::string domain = contents.whatsApp.domain;
    // An app that writes while the phone is backed up: the record has the size from before.
    contents.whatsApp.databaseStorage["ChatStorage.sqlite"].recordedSize = 65'536;
    contents.whatsApp.files.push_back({.relativePath = "Axolotl.sqlite", .content = random_.bytes(8'192)});
    contents.whatsApp.files.push_back({.relativePath = "Library/Preferences/group.net.whatsapp.WhatsApp.shared.plist",
                                       .content = bytesOf("bplist00")});
    contents.otherFiles = {{"CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG", jpegPhoto(random_, 320, 240)},
                           {"HomeDomain", "Library/SMS/sms.db", random_.bytes(12'288), {.protectionClass = 4}},
                           {"AppDomain-com.example.notes", "Documents/notes.json", bytesOf("[]\n")},
                           {"AppDomain-com.example.notes", "Documents/ChatStorage.sqlite", bytesOf("not WhatsApp's")}};
    contents.indexRows = {{domain, "", 2},
                          {domain, "Message", 2},
                          {domain, "Message/Media", 2},
                          {domain, "Media/Profile", 2},
                          {"CameraRollDomain", "Media/DCIM", 2},
                          {"HomeDomain", "Library/Caches/link", 4}};
  }

  const SampleOptions& options_;
  SeededRandom random_;
  WhatsAppContents app_;
  std::vector<Conversation> conversations_;
  Bytes lastPhoto_;
};

}  // namespace

BackupContents sampleBackup(const SampleOptions& options) { return SampleWriter(options).write(); }

}  // namespace Fixture
