#pragma once

#include <compare>
#include <string>
#include <string_view>

// The JID under which all that follows from a snapshot knows a chat: the phone
// number's where a LID's is known, UnknownChatJID where the chat cannot be told.
// Only a snapshot makes one, so that nobody takes a JID as it is stored for it.
class CanonicalJID {
 public:
  CanonicalJID() = default;  // nobody's

  const std::string& text() const { return text_; }

  auto operator<=>(const CanonicalJID&) const = default;
  bool operator==(const CanonicalJID&) const = default;
  bool operator==(std::string_view text) const { return text_ == text; }

 private:
  friend class ChatStorageSnapshot;
  explicit CanonicalJID(std::string text) : text_(std::move(text)) {}

  std::string text_;
};
