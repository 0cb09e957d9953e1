#pragma once

#include <string>
#include <string_view>

#include "TidewellCore/Archive/Wording.h"
#include "TidewellCore/MediaKind.h"

// What a message is, in words: "Voice call, 1:35".
namespace ContentWords {

// What the words depend on beside the content.
struct Setting {
  const Wording& wording;
  bool isFromMe = false;
  std::string_view partner;  // as NoticeWords has it
};

// Cleaned; lines only for what a business sent and a product's description. Empty for
// a text, a link or a file, which speak for themselves.
std::string of(const MessageContent& content, const Setting& setting);

// What stands in the place of a file that is not in the export: "Photo (not exported)".
std::string notExported(MediaKind kind, const Wording& wording);

// What a file of that kind is.
MessagePart partOf(MediaKind kind);
// What a message of that content is to those who answer it; a text when it has no other name.
MessagePart partOf(const MessageContent& content);

// What a part is called: "Voice message".
std::string label(MessagePart part, const Wording& wording);

}  // namespace ContentWords
