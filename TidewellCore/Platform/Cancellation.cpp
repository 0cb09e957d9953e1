#include "TidewellCore/Platform/Cancellation.h"

#include "TidewellCore/TidewellError.h"

void throwIfCancelled(const CancellationCheck& isCancelled) {
  if (isCancelled && isCancelled()) throw TidewellError::cancelled();
}
