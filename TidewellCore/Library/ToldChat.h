#pragma once

#include <string>
#include <vector>

#include "TidewellCore/ChatData/Scope.h"
#include "TidewellCore/Library/KeptChats.h"
#include "TidewellCore/Library/KeptPeople.h"
#include "TidewellCore/Library/MediaLedger.h"

// What a backup tells of one chat, under one JID or several, as the library would keep it.
struct ToldChat {
  KeptMessages messages;  // in their order; their texts are the snapshot's or its own
  std::string title;
  std::string partner;               // as KeptChat::partner
  std::vector<std::string> members;  // of a group, by their canonical JIDs, ascending
  Bytes digest;                      // of all of that

  // Those messages that are in the scope. Enters those who wrote into `people`, and the files into `ledger`. Two
  // records of one message, under a person's two identities, are told once.
  static ToldChat of(const ChatStorageSnapshot& snapshot, const Scope& scope, const std::vector<CanonicalJID>& jids,
                     KeptPeople& people, MediaLedger& ledger);
};
