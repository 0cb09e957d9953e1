#include "TidewellCore/ChatData/CanonicalPeople.h"

#include <algorithm>
#include <optional>
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
  for (Person& person : people) {
    unify(person, canonical);
    if (std::ranges::find(known, person) == known.end()) known.push_back(std::move(person));
  }
  people = std::move(known);
}

void unify(std::vector<Reaction>& reactions, const Canonical& canonical) {
  for (Reaction& reaction : reactions) unify(reaction.person, canonical);
  std::vector<Reaction> newest;
  for (Reaction& reaction : reactions) {
    const auto earlier = std::ranges::find_if(
        newest, [&](const Reaction& other) { return reaction.person && other.person == reaction.person; });
    if (earlier != newest.end()) newest.erase(earlier);
    newest.push_back(std::move(reaction));
  }
  reactions = std::move(newest);
}

}  // namespace

void CanonicalPeople::unify(MessageDetails& details, const Canonical& canonical, const std::string& senderJID,
                            bool isGroup) {
  if (auto* poll = std::get_if<Poll>(&details.content)) {
    for (PollOption& option : poll->options) ::unify(option.voters, canonical);
  } else if (auto* notice = std::get_if<Notice>(&details.content)) {
    ::unify(notice->actor, canonical);
    ::unify(notice->targets, canonical);
  } else if (auto* deleted = std::get_if<DeletedMessage>(&details.content); deleted && deleted->remover) {
    ::unify(deleted->remover, canonical);
    const bool isSender = !deleted->remover->isOwner && (!isGroup || deleted->remover->jid == senderJID);
    if (isSender) deleted->remover.reset();
  }
  if (details.quote) ::unify(details.quote->sender, canonical);
  ::unify(details.reactions, canonical);
}
