#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/SampleTexts.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// The phone's owner.
inline constexpr const char* sampleOwnJID = "5511900010000@s.whatsapp.net";

// A chat of the sample and who takes part in it.
struct Conversation {
  std::int64_t pk = 0;
  std::string jid;
  Language language = Language::english;
  // Keys of a group's members; empty in all other chats.
  std::vector<std::int64_t> members;
};

// Adds the sample's people and chats, without a message. The first chats are to be the
// busiest, the last one is to stay silent.
std::vector<Conversation> addSampleChats(WhatsAppContents& app, SeededRandom& random);

// Somebody by the beginning of the name that the phone shows.
const SamplePerson& personCalled(const std::string& name);

// Somebody's key in the group; who is not yet there joins.
std::int64_t memberOf(Conversation& group, const std::string& jid, WhatsAppContents& app);

}  // namespace Fixture
