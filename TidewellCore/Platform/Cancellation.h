#pragma once

#include <functional>

// Asked between the steps of long work, on the thread that does it; true ends
// the work. An empty check never cancels.
using CancellationCheck = std::function<bool()>;

// Throws TidewellError::cancelled when the check says so.
void throwIfCancelled(const CancellationCheck& isCancelled);
