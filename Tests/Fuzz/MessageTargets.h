#pragma once

#include "TidewellCore/Platform/Bytes.h"

/// What turns the columns and blobs of a message into facts.
namespace MessageTargets {

/// The input is the type of a message, and its metadata and receipts, which are the same.
void messageBlobs(ByteView input);
/// The input is the code of a group event and its parameter.
void groupEvent(ByteView input);
/// The input is the cards that a message holds, and once more the names beside them.
void vCard(ByteView input);

}  // namespace MessageTargets
