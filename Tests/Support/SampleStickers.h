#pragma once

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// A WebP picture of 512 x 512 pixels: one of twelve shapes with a face and a white rim, transparent around it.
Bytes faceSticker(SeededRandom& random);

}  // namespace Fixture
