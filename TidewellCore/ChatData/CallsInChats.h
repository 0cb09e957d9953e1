#pragma once

#include <vector>

#include "TidewellCore/ChatData/ChatTables.h"
#include "TidewellCore/ChatData/PastCall.h"

// Tells each call once, in its chat: the phone's list of calls knows those that no
// chat tells of, and of the others whether they were video calls.
namespace CallsInChats {

// A call that no message of its chat tells of becomes a message with a key below
// zero. A group call is of its group, any other of whom it was with; they
// get a chat when they have none. `tables` with a directory that is complete. Calls of nobody known are left out.
void add(std::vector<PastCall> calls, ChatTables& tables);

}  // namespace CallsInChats
