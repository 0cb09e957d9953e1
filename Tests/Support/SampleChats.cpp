#include "Tests/Support/SampleChats.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Tests/Support/OpaqueName.h"

namespace Fixture {

namespace {

SQLValue textOrNull(std::string_view text) {
  SQLValue value;
  if (!text.empty()) value = std::string(text);
  return value;
}

class ChatWriter {
 public:
  ChatWriter(WhatsAppContents& app, SeededRandom& random) : app_(app), random_(random) {}

  std::vector<Conversation> write() {
    addPeople();
    addGroups();
    addOtherChats();
    return std::move(conversations_);
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
    app_.linkedAccounts = {{.lid = samplePeople()[19].jid(), .displayName = std::string(samplePeople()[19].pushName)}};
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
    app_.chats.back().sessionType = 5;
    addChat("5511900001111@status", {}, Language::portuguese);
    app_.chats.back().sessionType = 3;
    addChat("5511900013131@s.whatsapp.net", "Só silêncio", Language::portuguese);
  }

  WhatsAppContents& app_;
  SeededRandom& random_;
  std::vector<Conversation> conversations_;
};

}  // namespace

std::vector<Conversation> addSampleChats(WhatsAppContents& app, SeededRandom& random) {
  return ChatWriter(app, random).write();
}

const SamplePerson& personCalled(const std::string& name) {
  const auto isCalled = [&](const SamplePerson& person) {
    return person.contact.starts_with(name) || (person.contact.empty() && person.chatName.starts_with(name));
  };
  const auto found = std::ranges::find_if(samplePeople(), isCalled);
  if (found == samplePeople().end()) throw std::runtime_error("Nobody is called \"" + name + "\".");
  return *found;
}

std::int64_t memberOf(Conversation& group, const std::string& jid, WhatsAppContents& app) {
  for (const std::int64_t key : group.members) {
    if (app.members[static_cast<std::size_t>(key) - 1].jid == SQLValue(jid)) return key;
  }
  app.members.push_back({.chat = group.pk, .jid = jid});
  group.members.push_back(static_cast<std::int64_t>(app.members.size()));
  return group.members.back();
}

}  // namespace Fixture
