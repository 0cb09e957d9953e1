#pragma once

#include <string>
#include <string_view>

#include "TidewellCore/Archive/Wording.h"

// What WhatsApp tells in a chat, as a sentence: "Ana added Ben".
namespace NoticeWords {

// `partner` is whom a chat of two is with, for notices that mean that person
// without saying so; empty in a group.
std::string sentence(const Notice& notice, const Wording& wording, std::string_view partner);

}  // namespace NoticeWords
