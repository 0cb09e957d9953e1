#pragma once

#include <string>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/Library/Library.h"

// The library's chats as lists of lines, from which transcripts and archive are
// written alike.
class ChatLines {
 public:
  // `library` must outlive it.
  ChatLines(const Library& library, const TranscriptStyle& style) : library_(library), style_(style) {}

  // A chat's messages in their order.
  std::vector<ArchiveMessage> messages(const KeptChat& chat) const;

 private:
  std::string senderOf(const KeptMessage& message) const;
  std::string senderJIDOf(const KeptMessage& message) const;
  // Null for the owner.
  const KeptPeople::Sender* keptSender(const KeptMessage& message) const;
  std::optional<ArchiveMedia> mediaOf(const KeptMessage& message) const;
  ArchiveMessage plain(const KeptMessage& message) const;
  MessageWords::Context contextOf(const KeptChat& chat) const;
  MessageWords::Answered answered(const KeptMessage& original) const;
  std::optional<std::string> nameOf(const Person& person) const;
  std::optional<std::string> nameOfDigits(std::string_view digits) const;

  const Library& library_;
  const TranscriptStyle& style_;
};
