#pragma once

#include "TidewellCore/Platform/Cancellation.h"

// What SIGINT, SIGTERM and SIGHUP do: the first asks the work to end, so that
// it removes its working copies; a second one ends the program at once.
namespace Interruption {

void install();
CancellationCheck check();

}  // namespace Interruption
