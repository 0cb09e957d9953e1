#include "TidewellCore/ChatData/CanonicalPeople.h"

#include <iterator>
#include <optional>
#include <set>
#include <vector>

namespace {

using CanonicalPeople::Canonical;

void unify(Person& person, const Canonical& canonical) {
  if (!person.isOwner) person = canonical(person.jid);
}

void unify(std::optional<Person>& person, const Canonical& canonical) {
  if (person) unify(*person, canonical);
}

void unify(std::vector<Person>& people, const Canonical& canonical) {
  std::vector<Person> known;
  std::set<std::string> jids;  // the owner's is empty
  for (Person& person : people) {
    unify(person, canonical);
    if (jids.insert(person.jid).second) known.push_back(std::move(person));
  }
  people = std::move(known);
}

void unify(std::vector<Reaction>& reactions, const Canonical& canonical) {
  for (Reaction& reaction : reactions) unify(reaction.person, canonical);
  std::set<std::string> jids;  // the owner's is empty
  std::vector<Reaction> newest;
  for (auto reaction = reactions.rbegin(); reaction != reactions.rend(); ++reaction) {
    if (!reaction->person || jids.insert(reaction->person->jid).second) newest.push_back(std::move(*reaction));
  }
  reactions.assign(std::make_move_iterator(newest.rbegin()), std::make_move_iterator(newest.rend()));
}

// Whoever adds or removes themselves joins or leaves.
void unifyDoing(Notice& notice) {
  if (notice.targets.size() != 1 || notice.actor != notice.targets.front()) return;
  if (notice.kind == NoticeKind::memberAdded) notice.kind = NoticeKind::memberJoined;
  if (notice.kind == NoticeKind::memberRemoved) notice.kind = NoticeKind::memberLeft;
}

}  // namespace

void CanonicalPeople::unify(MessageDetails& details, const Canonical& canonical, const std::string& senderJID,
                            bool isGroup) {
  if (auto* poll = std::get_if<Poll>(&details.content)) {
    for (PollOption& option : poll->options) ::unify(option.voters, canonical);
  } else if (auto* notice = std::get_if<Notice>(&details.content)) {
    ::unify(notice->actor, canonical);
    ::unify(notice->targets, canonical);
    unifyDoing(*notice);
  } else if (auto* deleted = std::get_if<DeletedMessage>(&details.content); deleted && deleted->remover) {
    ::unify(deleted->remover, canonical);
    const bool isSender = !deleted->remover->isOwner && (!isGroup || deleted->remover->jid == senderJID);
    if (isSender) deleted->remover.reset();
  }
  if (details.quote) ::unify(details.quote->sender, canonical);
  ::unify(details.reactions, canonical);
}
