#pragma once

#include <vector>

#include "Tests/Support/Bytes.h"

/// What the fuzzing of MessageTargets begins with, as a phone would store it.
namespace MessageSeeds {

std::vector<Fixture::Bytes> messageBlobs();
std::vector<Fixture::Bytes> groupEvents();

}  // namespace MessageSeeds
