#pragma once

#include "TidewellCore/ChatData/Scope.h"
#include "TidewellCore/Library/KeptPeople.h"

// Those whom the messages of a backup's scope tell of, and what the backup knows of them.
namespace ToldPeople {

// Takes them into `people`. Tells whether anything changed that was known before.
bool take(const ChatStorageSnapshot& snapshot, const Scope& scope, KeptPeople& people, bool isNewer);

}  // namespace ToldPeople
