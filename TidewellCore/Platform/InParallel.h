#pragma once

#include <cstddef>
#include <functional>

#include "TidewellCore/Platform/Cancellation.h"

// Work of many steps that have nothing to do with each other.
namespace InParallel {

// Calls `work` with the beginnings and ends of blocks of numbers, so that each below `count` is in one of them: in no
// order, on as many threads as the machine has cores where there is enough to do. Returns when all of them have ended.
// The check is asked on the calling thread. Throws what `work` throws, of several
// exceptions one, and TidewellError::cancelled; some numbers were left out then.
void forEachBlock(std::size_t count, const std::function<void(std::size_t begin, std::size_t end)>& work,
                  const CancellationCheck& isCancelled = {});

}  // namespace InParallel
