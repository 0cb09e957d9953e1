#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "TidewellCore/Platform/RawValue.h"

// What a message is of, in a word: what a reply answers, or what a file was that is not there.
enum class MessagePart {
  text,
  photo,
  video,
  gif,
  videoNote,  // round
  voiceMessage,
  audio,
  document,
  sticker,
  contact,
  contacts,
  location,
  liveLocation,
  poll,
  product,
  invite,
};

constexpr std::array<std::pair<MessagePart, std::string_view>, 16> rawValueTable(MessagePart) {
  using enum MessagePart;
  return {{{text, "text"},
           {photo, "photo"},
           {video, "video"},
           {gif, "gif"},
           {videoNote, "videoNote"},
           {voiceMessage, "voiceMessage"},
           {audio, "audio"},
           {document, "document"},
           {sticker, "sticker"},
           {contact, "contact"},
           {contacts, "contacts"},
           {location, "location"},
           {liveLocation, "liveLocation"},
           {poll, "poll"},
           {product, "product"},
           {invite, "invite"}}};
}
