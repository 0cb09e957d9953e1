#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"

// Tells of messages that the chat database holds and that do not stand in their chats, although no
// page of it is damaged (docs/decisions/0023-messages-without-a-chat-are-counted.md).
namespace MissingMessages {

// A sentence in English about one message, and the same about many with "%lld" for their number.
struct Words {
  std::string_view one;
  std::string_view many;
};
extern const std::array<Words, 3> allWords;

// Whether there are messages and none says its chat.
bool areAll(const ChatTables& tables);
// Whether something is gone that no count tells: files are named and not one has
// its message, no message has a date, or a column that every phone has is not there.
bool mayBeMissing(const ChatStorageSnapshot& snapshot);
// Sentences for people: what is missing, and what to do.
std::vector<std::string> warnings(const ChatStorageSnapshot& snapshot);

}  // namespace MissingMessages
