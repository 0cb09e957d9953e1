#pragma once

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/ChatData/MessageRow.h"

namespace RowLocation {

// The place that a row of type 5 shares. Coordinates that no place has are absent.
SharedLocation read(const MessageRow& row);

}  // namespace RowLocation
