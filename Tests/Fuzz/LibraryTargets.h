#pragma once

#include "TidewellCore/Platform/Bytes.h"

/// What reads the library of an earlier export.
namespace LibraryTargets {

/// The input is the facts of a message.
void messageFacts(ByteView input);

}  // namespace LibraryTargets
