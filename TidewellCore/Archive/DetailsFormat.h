#pragma once

#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Platform/Json.h"

// The members of a message's JSON that only some messages have: its details, and the
// marks (docs/formats/chat-archive.md); ArchiveFormat writes and reads the message.
namespace DetailsFormat {

// Of those who have marks their names, sorted.
std::vector<std::string_view> marks(const ArchiveMessage& message);

void write(const ArchiveMessage& message, Json::Object& json);

// What is absent, or of another kind than it should be, has its default value.
void read(const Json::Object& json, ArchiveMessage& message);

}  // namespace DetailsFormat
