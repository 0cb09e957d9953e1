#pragma once

#include "TidewellCore/Archive/ArchiveDetails.h"
#include "TidewellCore/Platform/Json.h"

// The members of a message's JSON that only some messages have
// (docs/formats/chat-archive.md); ArchiveFormat writes and reads the message.
namespace DetailsFormat {

void write(const ArchiveDetails& details, Json::Object& message);

// What is absent, or of another kind than it should be, has its default value.
ArchiveDetails read(const Json::Object& message);

}  // namespace DetailsFormat
