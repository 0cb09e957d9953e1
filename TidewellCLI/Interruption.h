#pragma once

#include "TidewellCore/Platform/Cancellation.h"

// What the signals that end a program (AbruptEnd::endingSignals) do: the first asks the work to end; a
// second one ends the program at once. Either way the working copies are removed.
namespace Interruption {

// `atLast` is the last that a program does which ends at once.
void install(void (*atLast)());
CancellationCheck check();

}  // namespace Interruption
