#pragma once

#include <cstdint>

#include "Tests/Support/Canvas.h"

namespace Fixture {

// Square profile pictures, the same for a seed.

// Most often a drawn head and shoulders, at times a cat or a view.
void paintPerson(Canvas& canvas, std::uint64_t seed);
// A view, or several heads.
void paintGroup(Canvas& canvas, std::uint64_t seed);
void paintFootball(Canvas& canvas);

}  // namespace Fixture
