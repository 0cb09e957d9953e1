#include "TidewellCore/Library/ToldPeople.h"

#include <set>
#include <string>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/MentionedDigits.h"

namespace {

// The JIDs of people in a message's details; one function for each kind that has some.
class Collector {
 public:
  explicit Collector(std::set<std::string, std::less<>>& jids) : jids_(jids) {}

  void add(const MessageDetails& details) {
    std::visit(*this, details.content);
    if (details.quote) {
      add(details.quote->sender);
      if (details.quote->words) addMentioned(*details.quote->words);
    }
    for (const Reaction& reaction : details.reactions) add(reaction.person);
  }

  void addMentioned(std::string_view text) {
    MentionedDigits::forEach(text, [this](std::size_t, std::string_view digits) {
      for (const std::string_view server : {UserJIDSuffix, LIDJIDSuffix}) {
        jids_.insert(std::string(digits).append(server));
      }
    });
  }

  void operator()(const Poll& poll) {
    for (const PollOption& option : poll.options) add(option.voters);
  }
  void operator()(const DeletedMessage& message) { add(message.remover); }
  void operator()(const Notice& notice) {
    add(notice.actor);
    add(notice.targets);
  }
  void operator()(const auto&) {}

 private:
  void add(const Person& person) {
    if (!person.isOwner && !person.jid.empty()) jids_.insert(person.jid);
  }
  void add(const std::optional<Person>& person) {
    if (person) add(*person);
  }
  void add(const std::vector<Person>& people) {
    for (const Person& person : people) add(person);
  }

  std::set<std::string, std::less<>>& jids_;
};

}  // namespace

bool ToldPeople::take(const ChatStorageSnapshot& snapshot, const Scope& scope, KeptPeople& people, bool isNewer) {
  std::set<std::string, std::less<>> jids;
  Collector collector(jids);
  for (const ChatStorageSnapshot::Chat& chat : snapshot.chats()) {
    for (const MessageRecord& message : scope.messages(snapshot, chat.jid)) {
      if (const MessageDetails* details = snapshot.details(message)) collector.add(*details);
      if (message.text) collector.addMentioned(*message.text);
    }
  }
  bool hasChanged = false;
  for (const std::string& jid : jids) {
    const bool isOwner = snapshot.isOwner(jid);
    KeptPeople::Known known{.name = isOwner ? std::nullopt : snapshot.knownName(jid), .isOwner = isOwner};
    // Whom nothing names is told, too: pages change when somebody does.
    hasChanged |= people.tell(jid, known, isNewer);
  }
  return hasChanged;
}
