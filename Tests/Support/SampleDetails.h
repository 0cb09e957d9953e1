#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/SampleChats.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// Gives one message in eight of a talk something: an answer, reactions, a mark, or a file
// that the phone has lost. Has random numbers of its own.
class SampleDetails {
 public:
  SampleDetails(WhatsAppContents& app, std::uint64_t seed) : app_(app), random_(seed) {}

  // The message is complete and the next one to be added.
  void dress(Message& message, const Conversation& conversation);

  // Calls of some years that no chat tells of.
  void addCalls(const std::vector<Conversation>& conversations, double firstDate, double lastDate);

 private:
  struct Said {
    std::int64_t pk = 0;
    std::string jid;
    std::string text;
  };

  void react(Message& message, const Conversation& conversation);
  void answer(const std::vector<Said>& talk);
  void lose(Message& message, const Conversation& conversation);
  std::string senderOf(const Message& message, const Conversation& conversation) const;
  std::string listenerOf(const Message& message, const Conversation& conversation);
  // The key of the message that is dressed.
  std::int64_t next() const { return static_cast<std::int64_t>(app_.messages.size() + 1); }

  WhatsAppContents& app_;
  SeededRandom random_;
  std::map<std::int64_t, std::vector<Said>> talks_;  // by chat
};

}  // namespace Fixture
