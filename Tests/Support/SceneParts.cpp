#include "Tests/Support/SceneParts.h"

#include <array>
#include <cmath>

namespace Fixture::Scenes {

std::vector<float> outline(const Canvas& canvas, SeededRandom& random, float base, float height, float firstWaves,
                           float roughness) {
  std::vector<float> heights(canvas.columns(), base);
  float waves = firstWaves;
  float reach = height * (1 - roughness);
  for (int octave = 0; octave < 7; ++octave) {
    std::vector<float> knots;
    for (float knot = 0; knot < waves + 3; ++knot) knots.push_back(between(random, -1, 1));
    for (std::size_t column = 0; column < heights.size(); ++column) {
      const float place = static_cast<float>(column) / canvas.width() * waves;
      const auto knot = static_cast<std::size_t>(place);
      const float part = place - static_cast<float>(knot);
      const float smooth = part * part * (3 - 2 * part);
      heights[column] -= reach * (knots[knot] + (knots[knot + 1] - knots[knot]) * smooth);
    }
    waves *= 2;
    reach *= roughness;
  }
  return heights;
}

void clouds(Canvas& canvas, SeededRandom& random, Colour colour, std::size_t count, float time) {
  const float side = canvas.side();
  for (; count > 0; --count) {
    const float size = side * between(random, 0.05F, 0.12F);
    const Point middle{canvas.width() * between(random, -0.1F, 1.1F) + time * size * 0.12F,
                       canvas.height() * between(random, 0.05F, 0.38F)};
    for (int puff = 0; puff < 9; ++puff) {
      const float offset = between(random, -2.2F, 2.2F);
      const float radius = size * between(random, 0.4F, 0.8F) * (1.1F - std::abs(offset) * 0.3F);
      canvas.ellipse({middle.x + offset * size, middle.y - radius * between(random, 0, 0.35F)}, radius * 1.5F,
                     radius * 0.6F, {colour, 0.22F, radius * 0.9F});
    }
  }
}

void stars(Canvas& canvas, SeededRandom& random, float horizon, std::size_t count, float time) {
  for (; count > 0; --count) {
    const Point place{canvas.width() * between(random, 0, 1), horizon * between(random, 0, 1)};
    const float twinkle = 0.75F + 0.25F * std::sin(time * between(random, 2, 6) + between(random, 0, 6));
    const float size = random.chance(8) ? 1.9F : between(random, 0.5F, 1.1F);
    canvas.disc(place, size * canvas.side() / 900, {colour(0xFFF8E8), between(random, 0.3F, 1) * twinkle});
  }
}

void birds(Canvas& canvas, SeededRandom& random, Colour colour, float time) {
  const float side = canvas.side();
  const Point flock{canvas.width() * between(random, 0.15F, 0.6F), canvas.height() * between(random, 0.1F, 0.3F)};
  for (std::size_t bird = 0; bird < 3 + random.below(5); ++bird) {
    const float wing = side * between(random, 0.009F, 0.017F);
    const float flap = 0.5F + 0.35F * std::sin(time * 9 + between(random, 0, 6));
    const Point body{flock.x + side * between(random, -0.15F, 0.15F) + time * side * 0.05F,
                     flock.y + side * between(random, -0.06F, 0.06F)};
    canvas.line(body, {body.x - wing, body.y - wing * flap}, side / 450, {colour, 0.8F});
    canvas.line(body, {body.x + wing, body.y - wing * flap}, side / 450, {colour, 0.8F});
  }
}

void fir(Canvas& canvas, Point foot, float height, Colour colour) {
  canvas.line(foot, {foot.x, foot.y - height * 0.2F}, height * 0.05F, {mix(colour, {}, 0.4F)});
  for (int tier = 0; tier < 4; ++tier) {
    const auto step = static_cast<float>(tier);
    const float bottom = foot.y - height * (0.12F + 0.2F * step);
    const float half = height * (0.24F - 0.045F * step);
    const std::array<Point, 3> corners = {
        Point{foot.x - half, bottom}, {foot.x + half, bottom}, {foot.x, bottom - height * 0.34F}};
    canvas.convexPolygon(corners, {mix(colour, {}, 0.08F * (3 - step))});
  }
}

}  // namespace Fixture::Scenes
