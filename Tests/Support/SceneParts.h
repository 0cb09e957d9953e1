#pragma once

#include <vector>

#include "Tests/Support/Canvas.h"
#include "Tests/Support/SeededRandom.h"

// What several views are put together from.
namespace Fixture::Scenes {

// Hills seen from the side: one height a column, around `base`, up to `height` pixels above and below.
// `firstWaves` hills fit into the width; each octave doubles them and has `roughness` of the last one's height.
std::vector<float> outline(const Canvas& canvas, SeededRandom& random, float base, float height, float firstWaves,
                           float roughness);

// Soft clouds in the upper part, drifting to the right.
void clouds(Canvas& canvas, SeededRandom& random, Colour colour, std::size_t count, float time);

// Above `horizon`, some brighter than others, each in its own rhythm.
void stars(Canvas& canvas, SeededRandom& random, float horizon, std::size_t count, float time);

// A flock far away.
void birds(Canvas& canvas, SeededRandom& random, Colour colour, float time);

// With its base at `foot`.
void fir(Canvas& canvas, Point foot, float height, Colour colour);

}  // namespace Fixture::Scenes
