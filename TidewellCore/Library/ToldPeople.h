#pragma once

#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Library/KeptPeople.h"

// Those whom a backup's messages tell of, and what the backup knows of them.
namespace ToldPeople {

// Takes them into `people`. Tells whether anything changed that was known before.
bool take(const ChatStorageSnapshot& snapshot, KeptPeople& people, bool isNewer);

}  // namespace ToldPeople
