#include "TidewellCore/ChatData/MissingMessages.h"

#include <algorithm>

#include "TidewellCore/ChatData/JID.h"

namespace {

using MissingMessages::Words;

std::string sentence(const Words& words, std::int64_t count) {
  constexpr std::string_view placeholder = "%lld";
  if (count == 1) return std::string(words.one);
  std::string text(words.many);
  return text.replace(text.find(placeholder), placeholder.size(), std::to_string(count));
}

bool showsSomething(const ChatStorageSnapshot& snapshot, const MessageRecord& message) {
  return message.mediaLocalPath || (message.text && !message.text->empty()) || snapshot.details(message) != nullptr;
}

// Phones date every message.
bool isAnyDated(const ChatStorageSnapshot& snapshot) {
  return std::ranges::any_of(snapshot.messages(),
                             [](const MessageRecord& message) { return message.date.has_value(); });
}

// Those that an export puts together, since nothing tells their chats.
std::int64_t countOfUnlisted(const ChatStorageSnapshot& snapshot) {
  const auto unlisted = snapshot.messages(snapshot.canonicalChatJID(UnknownChatJID));
  return std::ranges::count_if(unlisted,
                               [&](const MessageRecord& message) { return showsSomething(snapshot, message); });
}

}  // namespace

const std::array<Words, 3> MissingMessages::allWords{{
    {.one = "1 message is missing: WhatsApp’s chat database does not say which chat it belongs to. Copy the backup "
            "again from where it came, or make a new one with the iPhone.",
     .many = "%lld messages are missing: WhatsApp’s chat database does not say which chats they belong to. Copy the "
             "backup again from where it came, or make a new one with the iPhone."},
    {.one = "1 message belongs to a chat that is missing from WhatsApp’s chat database, and is kept as “Unknown”. Copy "
            "the backup again from where it came, or make a new one with the iPhone.",
     .many = "%lld messages belong to chats that are missing from WhatsApp’s chat database, and are kept together as "
             "“Unknown”. Copy the backup again from where it came, or make a new one with the iPhone."},
    {.one = "The text of 1 message cannot be read in WhatsApp’s chat database. Copy the backup again from where it "
            "came, or make a new one with the iPhone.",
     .many = "The texts of %lld messages cannot be read in WhatsApp’s chat database. Copy the backup again from where "
             "it came, or make a new one with the iPhone."},
}};

bool MissingMessages::areAll(const ChatTables& tables) {
  return tables.messages.empty() && tables.unread.withoutChat > 0;
}

bool MissingMessages::mayBeMissing(const ChatStorageSnapshot& snapshot) {
  const bool hasNoFiles = !snapshot.hasMedia() && snapshot.unread().ofFiles > 0;
  const bool hasNoDates = !snapshot.messages().empty() && !isAnyDated(snapshot);
  return snapshot.unread().isPartial || hasNoFiles || hasNoDates;
}

std::vector<std::string> MissingMessages::warnings(const ChatStorageSnapshot& snapshot) {
  const std::array counts{snapshot.unread().withoutChat, countOfUnlisted(snapshot), snapshot.unread().withoutText};
  static_assert(counts.size() == allWords.size());
  std::vector<std::string> all;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] > 0) all.push_back(sentence(allWords[i], counts[i]));
  }
  return all;
}
