#pragma once

#include <optional>
#include <string>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/Mentions.h"
#include "TidewellCore/Archive/Wording.h"

// From a message's facts to what people read: its words, and the facts as the archive has them.
namespace MessageWords {

// The message of the same chat that another answers.
struct Answered {
  std::string id;
  bool isOwner = false;  // the owner wrote it
  std::string sender;    // the name shown
  MessagePart part = MessagePart::text;
  std::optional<std::string> text;
};

// What is known around a message.
struct Context {
  Wording wording;                   // with the names of people
  Mentions::Lookup mentioned = {};   // the names of people whom texts name by digits
  std::string partner;               // whom a chat of two is with, by name; empty in a group
  std::optional<Answered> answered;  // absent when it is not in the chat
};

// Gives a message, which has its sender, its file and what was written all but for
// these, its details and the words of its kind. A notice loses its sender. Also for a
// message without details, whose text may name people.
void tell(const MessageDetails& details, const Context& context, ArchiveMessage& message);

// What was written, cleaned, with the names of the people in it; empty without a text.
std::string text(const ArchiveMessage& message);

}  // namespace MessageWords
