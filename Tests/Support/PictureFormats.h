#pragma once

#include "Tests/Support/Bytes.h"
#include "Tests/Support/Canvas.h"

namespace Fixture {

// `quality` from 1 to 100.
Bytes jpegOf(const Canvas& picture, int quality = 80);

// Lossy colours, the transparency as it is.
Bytes webpOf(const Canvas& picture);

}  // namespace Fixture
