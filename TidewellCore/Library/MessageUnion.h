#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "TidewellCore/Library/KeptMessage.h"
#include "TidewellCore/Platform/TextArena.h"

// Brings what two sources tell of one chat together, so that the order in which
// backups are taken in does not matter.
namespace MessageUnion {

// Whether the export ever had the file of a medium, by the medium's number.
using HasFile = std::function<bool(std::int64_t medium)>;
inline bool everyFile(std::int64_t /*medium*/) { return true; }

// Two records of one message: the words, reactions and marks are the newer one's, and
// nothing that the older one says is lost. `texts` keeps what is put together of both.
KeptMessage merged(const KeptMessage& newer, const KeptMessage& older, TextArena& texts,
                   const HasFile& hasFile = everyFile);

// The messages of a chat, and the date of the newest backup that told all of it, in seconds since 1970; of a
// backup that tells a part of it alone its date.
struct Side {
  std::span<const KeptMessage> messages;
  double toldAt = 0;
  bool isPart = false;
};

// Those of both that differ from what is kept, with the keys under which they are to be kept. A message is
// known by its stanza ID, else by its time, sender and content; one that nothing else tells apart is known by
// its key. What the newer side lacks is gone, but for what a part
// lacks. The chat is told at the newer date afterwards, but where that is a part's. A told key that is taken gives way
// to a free one.
std::vector<KeptMessage> changes(const Side& kept, const Side& told, TextArena& texts,
                                 const HasFile& hasFile = everyFile);

// How many of the told messages `changes` would add to what is kept.
std::int64_t countOfNew(std::span<const KeptMessage> kept, std::span<const KeptMessage> told);

}  // namespace MessageUnion
