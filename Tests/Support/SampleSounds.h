#pragma once

#include "Tests/Support/MediaProgram.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// Someone who says nothing anyone could understand: syllables, words and pauses for breath.
Sound babble(SeededRandom& random, float seconds);

// A quiet tune on plucked strings.
Sound melody(SeededRandom& random, float seconds);

}  // namespace Fixture
