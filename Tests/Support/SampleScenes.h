#pragma once

#include <cstdint>

#include "Tests/Support/Canvas.h"
#include "Tests/Support/SeededRandom.h"

// Painted views. Each is the same for a random state; `time`, in seconds, moves what moves in it, so
// that pictures made from one state are the frames of a film.
namespace Fixture::Scenes {

using Painter = void (*)(Canvas&, SeededRandom, float time);

void mountains(Canvas& canvas, SeededRandom random, float time);
void sea(Canvas& canvas, SeededRandom random, float time);
void aurora(Canvas& canvas, SeededRandom random, float time);
void forest(Canvas& canvas, SeededRandom random, float time);
void city(Canvas& canvas, SeededRandom random, float time);
void flowers(Canvas& canvas, SeededRandom random, float time);
void table(Canvas& canvas, SeededRandom random, float time);
void beach(Canvas& canvas, SeededRandom random, float time);

// One of them, as a camera would show it.
void any(Canvas& canvas, SeededRandom& random);

}  // namespace Fixture::Scenes
