#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"

// A row that WhatsApp wrote by itself, as its columns are. Whatever it views must outlive it.
struct NoticeRow {
  std::int64_t code = 0;                       // ZGROUPEVENTTYPE
  std::optional<std::string_view> text;        // ZTEXT: a name, a JID, a list or JSON, as the code has it
  std::optional<std::string_view> memberJID;   // of ZGROUPMEMBER
  std::optional<std::string_view> creatorJID;  // of the group, ZCREATORJID
  bool isFromMe = false;
  std::span<const std::string> ownJIDs;

  std::optional<Person> member() const;
  // The person whose JID is the text.
  std::optional<Person> personInText() const;
  // Who did it: the owner or the member; absent when the row does not say.
  std::optional<Person> actor() const;
};
