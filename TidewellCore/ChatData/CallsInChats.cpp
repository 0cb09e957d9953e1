#include "TidewellCore/ChatData/CallsInChats.h"

#include <algorithm>
#include <map>
#include <string>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Platform/Text.h"

namespace {

// A message that tells of a call, by places in the tables.
struct Told {
  std::size_t message = 0;
  std::size_t details = 0;
  bool isTaken = false;  // by a call of the list
};

class Adding {
 public:
  explicit Adding(ChatTables& tables) : tables_(tables) {
    for (const auto& [pk, chat] : tables.chats) recordsByPerson_.emplace(personOf(chat.jid), pk);
    for (const auto& [pk, chat] : tables.chats) nextKey_ = std::min(nextKey_, pk - 1);
    fileTold();
  }

  void add(const PastCall& call) {
    const std::string person = personOf(chatJID(call));
    if (person.empty()) return;
    for (Told& told : toldByPerson_[person]) {
      if (!told.isTaken && isSameCall(call, messageOf(told))) return complete(told, call);
    }
    append(call, person);
  }

 private:
  // One person by phone number and by LID is one.
  std::string personOf(const std::string& jid) const {
    std::string trimmed = Text::trimmed(jid);
    return JID::isLID(trimmed) ? tables_.directory.phoneJID(trimmed).value_or(trimmed) : trimmed;
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
      toldByPerson_[personOf(chat->second.jid)].push_back(
          {.message = static_cast<std::size_t>(message - tables_.messages.begin()), .details = place});
    }
  }

  CallMessage messageOf(const Told& told) const {
    const MessageRecord& message = tables_.messages[told.message];
    return {.stanzaID = message.stanzaID.value_or(""),
            .date = message.date,
            .isFromMe = message.isFromMe,
            .seconds = std::get<CallRecord>(tables_.details[told.details].second.content).seconds};
  }

  void complete(Told& told, const PastCall& call) {
    told.isTaken = true;
    CallRecord& record = std::get<CallRecord>(tables_.details[told.details].second.content);
    if (!record.isVideo) record.isVideo = call.call.isVideo;
    if (!record.seconds) record.seconds = call.call.seconds;
    record.isGroup = record.isGroup || call.call.isGroup;
    // Nobody misses a call that somebody spoke in.
    record.isMissed = (record.isMissed || call.call.isMissed) && !record.seconds;
  }

  void append(const PastCall& call, const std::string& person) {
    const std::int64_t key = -1 - call.pk;
    MessageRecord message{.pk = key, .chatPK = recordOf(person), .date = call.date, .isFromMe = !call.isIncoming};
    const std::string caller =
        call.creatorJID.value_or(call.participantJIDs.empty() ? "" : call.participantJIDs.front());
    if (call.isIncoming && !caller.empty()) message.fromJID = tables_.texts.addOnce(caller);
    tables_.messages.push_back(message);
    tables_.details.emplace_back(key, MessageDetails{.content = call.call});
  }

  std::int64_t recordOf(const std::string& person) {
    const auto [found, isNew] = recordsByPerson_.emplace(person, nextKey_);
    if (isNew) tables_.chats.emplace(nextKey_, ChatRecord{.pk = nextKey_, .jid = person});
    if (isNew) --nextKey_;
    return found->second;
  }

  ChatTables& tables_;
  std::map<std::string, std::int64_t> recordsByPerson_;
  std::map<std::string, std::vector<Told>> toldByPerson_;
  std::int64_t nextKey_ = -1;  // of a chat that only calls tell of
};

}  // namespace

void CallsInChats::add(std::vector<PastCall> calls, ChatTables& tables) {
  std::erase_if(calls, [](const PastCall& call) { return call.pk < 0; });
  if (calls.empty()) return;
  Adding adding(tables);
  for (const PastCall& call : calls) adding.add(call);
}
