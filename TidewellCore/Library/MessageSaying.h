#pragma once

#include <string>
#include <string_view>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Library/KeptMessage.h"

// How much a message says: one that says less never takes the place of one that says more.
namespace MessageSaying {

enum class Amount { nothing, placeholder, something };

// `content` is that of the message's facts.
Amount of(const KeptMessage& message, const MessageContent& content);

// What only says that there is nothing any more, or nothing that can be shown.
bool isLoss(const MessageContent& content);

// A page's word for what a message is that is more than a text or a file; empty elsewhere. It is the facts' own.
std::string kindOnPage(const KeptMessage& message);
// Of such a word.
bool isPlaceholder(std::string_view kind);

}  // namespace MessageSaying
