#include "TidewellCore/ChatData/PollVotes.h"

#include <algorithm>
#include <map>

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/StoredJID.h"

namespace {

using OwnJIDs = std::span<const std::string>;

const Person owner{.isOwner = true};

// Votes count options by their places, so none is left out.
constexpr const char* unreadable = "?";

struct Vote {
  std::optional<Person> voter;
  std::vector<std::int64_t> options;  // by their places
};

Vote voteOf(ProtobufReader fields, OwnJIDs ownJIDs) {
  Vote vote;
  while (fields.next()) {
    if (fields.number() == 1) fields.append(vote.options);
    if (fields.number() == 4) vote.voter = StoredJID::person(fields.text().value_or(""), ownJIDs);
  }
  std::ranges::sort(vote.options);
  vote.options.erase(std::unique(vote.options.begin(), vote.options.end()), vote.options.end());
  return vote;
}

PollOption optionOf(ProtobufReader fields) {
  PollOption option;
  while (fields.next()) {
    if (fields.number() == 1) option.words = BlobText::words(fields.text()).value_or(unreadable);
  }
  return option;
}

void count(const std::vector<Vote>& votes, std::vector<PollOption>& options) {
  std::map<std::string, const Vote*, std::less<>> last;  // by JID; the owner's is empty
  for (const Vote& vote : votes) last.insert_or_assign(vote.voter->jid, &vote);
  std::size_t counted = 0;
  for (const Vote& vote : votes) {
    if (last.at(vote.voter->jid) != &vote) continue;
    for (const std::int64_t place : vote.options) {
      if (place < 0 || static_cast<std::uint64_t>(place) >= options.size()) continue;
      if (++counted > PollVotes::mostVotes) return;
      options[static_cast<std::size_t>(place)].voters.push_back(*vote.voter);
    }
  }
}

}  // namespace

Poll PollVotes::read(ProtobufReader field, std::span<const std::string> ownJIDs) {
  Poll poll;
  std::vector<Vote> votes;
  while (field.next()) {
    if (!field.isBytes()) continue;
    if (field.number() == 2) poll.question = BlobText::words(field.text()).value_or("");
    if (field.number() == 3) poll.options.push_back(optionOf(field.message()));
    if (field.number() == 5) votes.push_back(voteOf(field.message(), ownJIDs));
    if (field.number() == 6) {
      votes.push_back(voteOf(field.message(), ownJIDs));
      votes.back().voter = owner;
    }
  }
  if (poll.options.size() > mostOptions) poll.options.resize(mostOptions);
  std::erase_if(votes, [](const Vote& vote) { return !vote.voter; });
  count(votes, poll.options);
  return poll;
}
