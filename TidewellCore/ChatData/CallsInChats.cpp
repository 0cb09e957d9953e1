#include "TidewellCore/ChatData/CallsInChats.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Platform/Text.h"

namespace {

// A message that tells of a call, by places in the tables.
struct Told {
  std::size_t message = 0;
  std::size_t details = 0;
  double date = 0;       // Unix seconds
  bool isTaken = false;  // by a call of the list
};

constexpr std::int64_t greatestKey = std::int64_t{1} << 61;

double dateOf(const std::optional<Date>& date) {
  return date ? unixTime(*date) : -std::numeric_limits<double>::infinity();
}

class Adding {
 public:
  explicit Adding(ChatTables& tables) : tables_(tables) {
    for (const auto& [pk, chat] : tables.chats) {
      recordsByPerson_.emplace(personOf(chat.jid), pk);
      lower(lowestChat_, pk);
    }
    for (const MessageRecord& message : tables.messages) {
      lower(lowestChat_, message.chatPK);
      lower(lowestMessage_, message.pk);
    }
    for (const std::string& jid : tables.ownJIDs) own_.insert(personOf(jid));
    fileTold();
  }

  // Those that a message names by their ID first, so that none of them is taken by time.
  void add(std::vector<PastCall> calls) {
    for (PastCall& call : calls) leaveOutOwner(call.participantJIDs);
    std::erase_if(calls, [this](const PastCall& call) { return isToldByID(call); });
    for (const PastCall& call : calls) {
      const std::string person = personOf(chatJID(call));
      if (!person.empty() && !isToldByTime(call, person)) append(call, person);
    }
  }

 private:
  // One person by phone number and by LID is one.
  std::string personOf(const std::string& jid) const {
    std::string trimmed = Text::trimmed(jid);
    return JID::isLID(trimmed) ? tables_.directory.phoneJID(trimmed).value_or(trimmed) : trimmed;
  }

  void leaveOutOwner(std::vector<std::string>& jids) const {
    std::erase_if(jids, [&](const std::string& jid) { return own_.contains(personOf(jid)); });
  }

  bool isGroup(const PastCall& call) const {
    std::set<std::string> people;
    for (const std::string& jid : call.participantJIDs) people.insert(personOf(jid));
    return call.call.isGroup || people.size() > 1;
  }

  // No phone has keys that leave no room below them.
  static void lower(std::int64_t& lowest, std::int64_t key) {
    if (key > -greatestKey) lowest = std::min(lowest, key);
  }

  static std::string chatJID(const PastCall& call) {
    if (call.groupJID) return *call.groupJID;
    if (call.isIncoming && call.creatorJID) return *call.creatorJID;
    return call.participantJIDs.empty() ? std::string() : call.participantJIDs.front();
  }

  void fileTold() {
    std::ranges::sort(tables_.messages, {}, &MessageRecord::pk);
    for (std::size_t place = 0; place < tables_.details.size(); ++place) {
      const auto& [pk, details] = tables_.details[place];
      if (!std::holds_alternative<CallRecord>(details.content)) continue;
      const auto message = std::ranges::lower_bound(tables_.messages, pk, {}, &MessageRecord::pk);
      const auto chat = tables_.chats.find(message->chatPK);
      if (chat == tables_.chats.end()) continue;
      const std::string person = personOf(chat->second.jid);
      const Told told{.message = static_cast<std::size_t>(message - tables_.messages.begin()),
                      .details = place,
                      .date = dateOf(message->date)};
      toldByPerson_[person].push_back(told);
    }
    for (auto& [person, all] : toldByPerson_) {
      std::ranges::stable_sort(all, {}, &Told::date);
      for (Told& told : all) {
        const auto& id = tables_.messages[told.message].stanzaID;
        if (id && !id->empty()) toldByID_.try_emplace({person, *id}, &told);
      }
    }
  }

  bool isToldByID(const PastCall& call) {
    const auto found = toldByID_.find({personOf(chatJID(call)), call.id});
    if (found == toldByID_.end() || found->second->isTaken) return false;
    complete(*found->second, call);
    return true;
  }

  // A day is longer than calls last.
  bool isToldByTime(const PastCall& call, const std::string& person) {
    constexpr double day = 86'400;
    constexpr std::ptrdiff_t most = 1'000;
    std::vector<Told>& all = toldByPerson_[person];
    const double date = dateOf(call.date);
    const auto first = std::ranges::lower_bound(all, date - day, {}, &Told::date);
    const auto last = std::ranges::upper_bound(first, all.end(), date + day, {}, &Told::date);
    const auto end = first + std::min(last - first, most);
    const auto found =
        std::find_if(first, end, [&](const Told& told) { return !told.isTaken && isSameCall(call, messageOf(told)); });
    if (found != end) complete(*found, call);
    return found != end;
  }

  CallMessage messageOf(const Told& told) const {
    const MessageRecord& message = tables_.messages[told.message];
    return {.date = message.date,
            .isFromMe = message.isFromMe,
            .seconds = std::get<CallRecord>(tables_.details[told.details].second.content).seconds};
  }

  void complete(Told& told, const PastCall& call) {
    told.isTaken = true;
    CallRecord& record = std::get<CallRecord>(tables_.details[told.details].second.content);
    if (!record.isVideo) record.isVideo = call.call.isVideo;
    if (!record.seconds) record.seconds = call.call.seconds;
    record.isGroup = record.isGroup || isGroup(call);
    // Nobody misses a call that somebody spoke in.
    record.isMissed = (record.isMissed || call.call.isMissed) && !record.seconds;
  }

  void append(const PastCall& call, const std::string& person) {
    const std::int64_t key = lowestMessage_ - 1 - call.pk;
    MessageRecord message{.pk = key, .chatPK = recordOf(person), .date = call.date, .isFromMe = !call.isIncoming};
    const std::string caller =
        call.creatorJID.value_or(call.participantJIDs.empty() ? "" : call.participantJIDs.front());
    if (call.isIncoming && !caller.empty()) message.fromJID = tables_.texts.addOnce(caller);
    tables_.messages.push_back(message);
    CallRecord record = call.call;
    record.isGroup = isGroup(call);
    tables_.details.emplace_back(key, MessageDetails{.content = record});
  }

  std::int64_t recordOf(const std::string& person) {
    const auto [found, isNew] = recordsByPerson_.emplace(person, lowestChat_ - 1);
    if (isNew) tables_.chats.emplace(--lowestChat_, ChatRecord{.pk = found->second, .jid = person});
    return found->second;
  }

  ChatTables& tables_;
  std::map<std::string, std::int64_t> recordsByPerson_;
  std::set<std::string> own_;                              // the owner, as a person
  std::map<std::string, std::vector<Told>> toldByPerson_;  // by date
  std::map<std::pair<std::string, std::string_view>, Told*> toldByID_;
  // The lowest keys that are in use; those of what only calls tell of are below them.
  std::int64_t lowestChat_ = 0;
  std::int64_t lowestMessage_ = 0;
};

}  // namespace

void CallsInChats::add(std::vector<PastCall> calls, ChatTables& tables) {
  std::erase_if(calls, [](const PastCall& call) { return call.pk < 0 || call.pk > greatestKey; });
  if (calls.empty()) return;
  Adding(tables).add(std::move(calls));
}
