#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "Tests/Support/SampleScenes.h"
#include "Tests/Support/SceneParts.h"

namespace Fixture::Scenes {

namespace {

constexpr float pi = std::numbers::pi_v<float>;

// One house of a skyline, its windows lit here and there.
void tower(Canvas& canvas, SeededRandom& random, Point foot, Point size, Colour wall, float time) {
  const float left = foot.x - size.x / 2;
  const float top = foot.y - size.y;
  canvas.rectangle({left, top}, {left + size.x, foot.y + 2}, {wall});
  if (random.chance(30)) canvas.line({foot.x, top}, {foot.x, top - size.y * 0.15F}, size.x * 0.05F, {wall});
  const float cell = size.x / static_cast<float>(3 + random.below(3));
  const Colour lamp = mix(colour(0xFFD37A), colour(0xCFE8FF), between(random, 0, 0.6F));
  for (float y = top + cell * 0.6F; y < foot.y - cell; y += cell * 1.2F) {
    for (float x = left + cell * 0.25F; x < left + size.x - cell * 0.5F; x += cell) {
      const float phase = between(random, 0, 40);
      const float brightness = between(random, 0.35F, 0.95F);
      if (!random.chance(42) || std::fmod(phase + time, 40.0F) > 39) continue;
      canvas.rectangle({x, y}, {x + cell * 0.5F, y + cell * 0.62F}, {lamp, brightness});
    }
  }
}

void petals(Canvas& canvas, Point middle, float radius, std::size_t count, Colour outer, Colour inner, float turn) {
  for (std::size_t petal = 0; petal < count; ++petal) {
    const float angle = turn + 2 * pi * static_cast<float>(petal) / static_cast<float>(count);
    const Point direction{std::cos(angle), std::sin(angle)};
    const auto place = [&](float part) {
      return Point{middle.x + direction.x * radius * part, middle.y + direction.y * radius * part};
    };
    const float width = radius * 2.1F / static_cast<float>(count) + radius * 0.06F;
    canvas.ellipse(place(0.56F), radius * 0.48F, width * 1.06F, {mix(outer, {}, 0.3F), 0.5F, 3}, angle);
    canvas.ellipse(place(0.55F), radius * 0.46F, width, {outer}, angle);
    canvas.ellipse(place(0.42F), radius * 0.32F, width * 0.55F, {inner, 0.65F, width * 0.7F}, angle);
  }
  canvas.disc(middle, radius * 0.2F, {colour(0x8A5A14)});
  canvas.disc({middle.x - radius * 0.02F, middle.y - radius * 0.03F}, radius * 0.17F,
              {colour(0xF2B632), 1, radius * 0.1F});
}

void cup(Canvas& canvas, Point middle, float radius, float turn) {
  canvas.ellipse({middle.x + radius * 0.15F, middle.y + radius * 0.2F}, radius * 1.6F, radius * 1.55F,
                 {{}, 0.35F, radius * 0.3F});
  canvas.disc(middle, radius * 1.5F, {colour(0xF4F1EA)});
  canvas.disc(middle, radius * 1.32F, {colour(0xE4DFD4), 1, radius * 0.1F});
  const Point handle{middle.x + std::cos(turn) * radius * 1.15F, middle.y + std::sin(turn) * radius * 1.15F};
  canvas.line(middle, handle, radius * 0.28F, {colour(0xFFFFFF)});
  canvas.disc(middle, radius, {colour(0xFFFFFF)});
  canvas.disc(middle, radius * 0.88F, {colour(0x6B3E20)});
  canvas.disc(middle, radius * 0.8F, {colour(0xB67B45), 1, radius * 0.12F});
  const Colour milk = colour(0xF7E6CC);
  canvas.disc({middle.x - radius * 0.2F, middle.y - radius * 0.15F}, radius * 0.26F, {milk});
  canvas.disc({middle.x + radius * 0.2F, middle.y - radius * 0.15F}, radius * 0.26F, {milk});
  const std::array<Point, 3> tip = {Point{middle.x - radius * 0.43F, middle.y - radius * 0.04F},
                                    {middle.x + radius * 0.43F, middle.y - radius * 0.04F},
                                    {middle.x, middle.y + radius * 0.5F}};
  canvas.convexPolygon(tip, {milk});
}

void pizza(Canvas& canvas, SeededRandom& random, Point middle, float radius) {
  canvas.ellipse({middle.x + radius * 0.05F, middle.y + radius * 0.07F}, radius * 1.2F, radius * 1.2F,
                 {{}, 0.35F, radius * 0.16F});
  canvas.disc(middle, radius * 1.15F, {colour(0xEDE8DE)});
  canvas.disc(middle, radius, {colour(0xC98B45)});
  canvas.disc(middle, radius * 0.9F, {colour(0xC8452B), 1, radius * 0.05F});
  canvas.disc(middle, radius * 0.85F, {colour(0xF3C968), 1, radius * 0.12F});
  for (int topping = 0; topping < 30; ++topping) {
    const float angle = between(random, 0, 2 * pi);
    const float away = radius * 0.75F * std::sqrt(between(random, 0, 1));
    const Point place{middle.x + std::cos(angle) * away, middle.y + std::sin(angle) * away};
    if (topping % 3 == 0) {
      canvas.disc(place, radius * 0.095F, {colour(0x9E2B22)});
      canvas.disc(place, radius * 0.075F, {colour(0xC9443A), 1, radius * 0.03F});
    } else if (topping % 3 == 1) {
      canvas.ellipse(place, radius * 0.1F, radius * 0.045F, {colour(0x3F7D34)}, angle);
    } else {
      canvas.disc(place, radius * 0.09F, {colour(0xFFF1CC), 0.8F, radius * 0.08F});
    }
  }
  for (int cut = 0; cut < 4; ++cut) {
    const Point reach{std::cos(static_cast<float>(cut) * pi / 4) * radius,
                      std::sin(static_cast<float>(cut) * pi / 4) * radius};
    canvas.line({middle.x - reach.x, middle.y - reach.y}, {middle.x + reach.x, middle.y + reach.y}, radius * 0.012F,
                {colour(0x8A5A2A), 0.6F});
  }
}

void parasol(Canvas& canvas, Point middle, float radius, Colour tint, float turn) {
  canvas.ellipse({middle.x + radius * 0.4F, middle.y + radius * 0.45F}, radius, radius * 0.95F,
                 {{}, 0.28F, radius * 0.15F});
  canvas.disc(middle, radius, {colour(0xFFFAF0)});
  for (int part = 0; part < 5; ++part) {
    const float angle = turn + static_cast<float>(part) * 2 * pi / 5;
    const auto rim = [&](float offset) {
      return Point{middle.x + std::cos(angle + offset) * radius * 0.97F,
                   middle.y + std::sin(angle + offset) * radius * 0.97F};
    };
    const std::array<Point, 5> sector = {middle, rim(0), rim(pi / 15), rim(pi / 7.5F), rim(pi / 5)};
    canvas.convexPolygon(sector, {tint});
  }
  canvas.disc(middle, radius * 0.08F, {colour(0xFFFFFF)});
}

}  // namespace

void city(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const float horizon = canvas.height() * between(random, 0.66F, 0.78F);
  const bool dusk = random.chance(50);
  const std::array<Colour, 4> sky =
      dusk ? std::array{colour(0x1B2350), colour(0x4B3A78), colour(0xC4667A), colour(0xF7B27A)}
           : std::array{colour(0x060B1E), colour(0x0E1A3C), colour(0x1F3160), colour(0x3A4A7C)};
  canvas.gradient(sky);
  stars(canvas, random, horizon * 0.7F, dusk ? 60 : 200, time);
  const Point moon{canvas.width() * between(random, 0.15F, 0.85F), canvas.height() * between(random, 0.1F, 0.28F)};
  canvas.glow(moon, side * 0.45F, colour(0xDDE6FF), 0.35F);
  canvas.disc(moon, side * 0.05F, {colour(0xFBF7E6)});
  canvas.disc({moon.x + side * 0.014F, moon.y - side * 0.012F}, side * 0.012F, {colour(0xE2DCC8), 0.7F});
  for (int layer = 0; layer < 3; ++layer) {
    const float near = static_cast<float>(layer) / 2;
    const Colour wall = mix(mix(sky[2], sky[3], 0.4F), colour(0x0A0F22), 0.45F + 0.5F * near);
    for (float x = -side * 0.03F; x < canvas.width();) {
      const float wide = side * between(random, 0.05F, 0.12F);
      const float tall = horizon * between(random, 0.14F, 0.5F - 0.13F * near);
      tower(canvas, random, {x + wide / 2, horizon}, {wide, tall}, wall, time);
      x += wide * between(random, 0.95F, 1.4F);
    }
  }
  canvas.reflect(horizon, mix(sky[0], colour(0x081022), 0.6F), 0.3F, time * 4);
  const float boat = std::fmod(canvas.width() * between(random, 0, 1) + time * side * 0.09F, canvas.width());
  canvas.line({boat, horizon + side * 0.035F}, {boat + side * 0.09F, horizon + side * 0.035F}, side * 0.014F,
              {colour(0x10141F)});
  for (int lamp = 0; lamp < 5; ++lamp) {
    canvas.disc({boat + side * 0.02F * static_cast<float>(lamp), horizon + side * 0.022F}, side * 0.005F,
                {colour(0xFFE2A0)});
  }
}

void flowers(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const std::array<Colour, 3> meadow = {colour(0xA9CF8C), colour(0x5F9950), colour(0x24502E)};
  canvas.gradient(meadow);
  for (int spot = 0; spot < 45; ++spot) {
    const Colour light = mix(colour(0xEFF7B8), colour(0x79B562), between(random, 0, 1));
    const float radius = side * between(random, 0.02F, 0.09F);
    canvas.disc({canvas.width() * between(random, 0, 1), canvas.height() * between(random, 0, 1)}, radius,
                {light, 0.22F, radius * 0.3F});
  }
  const std::array<std::array<Colour, 2>, 6> tints = {{{colour(0xE8486B), colour(0xFFA3B5)},
                                                       {colour(0xFFFFFF), colour(0xF4E3EE)},
                                                       {colour(0x7C5CCB), colour(0xC3A9F2)},
                                                       {colour(0xF39A2B), colour(0xFFD98A)},
                                                       {colour(0x4C86DB), colour(0xB2D2FA)},
                                                       {colour(0xD94FA0), colour(0xFFC1E4)}}};
  const std::size_t count = 6 + random.below(5);
  const std::size_t kind = random.below(tints.size());
  for (std::size_t flower = 0; flower < count; ++flower) {
    const float near = 0.35F + 0.65F * static_cast<float>(flower) / static_cast<float>(count);
    const float radius = side * near * between(random, 0.11F, 0.19F);
    const float sway = std::sin(time * 1.7F + between(random, 0, 6)) * side * 0.02F;
    const Point middle{canvas.width() * between(random, 0.05F, 0.95F) + sway,
                       canvas.height() * between(random, 0.12F, 0.82F)};
    const Point foot{middle.x - sway * 2 + side * between(random, -0.08F, 0.08F), canvas.height() * 1.1F};
    canvas.line(middle, foot, side * 0.016F * near, {mix(colour(0x2F6B34), colour(0x77A85C), 1 - near)});
    const auto& tint = tints[(kind + random.below(2)) % tints.size()];
    petals(canvas, middle, radius, 5 + random.below(5), mix(meadow[1], tint[0], near), mix(meadow[1], tint[1], near),
           between(random, 0, 1) + std::sin(time + static_cast<float>(flower)) * 0.08F);
  }
}

void table(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const bool dark = random.chance(40);
  const std::array<Colour, 2> wood = {colour(dark ? 0x5A3A26 : 0xC49A6C), colour(dark ? 0x4A2E1D : 0xB3875A)};
  canvas.gradient(wood);
  const float plank = side * 0.2F;
  for (float top = 0; top < canvas.height(); top += plank) {
    const Colour board = mix(wood[0], wood[1], between(random, -0.8F, 1.6F));
    canvas.rectangle({0, top}, {canvas.width(), top + plank - side * 0.004F}, {board, 0.8F});
    for (int grain = 0; grain < 14; ++grain) {
      const Point start{canvas.width() * between(random, -0.2F, 0.9F), top + plank * between(random, 0.05F, 0.95F)};
      canvas.line(
          start,
          {start.x + canvas.width() * between(random, 0.1F, 0.5F), start.y + side * between(random, -0.004F, 0.004F)},
          side * 0.002F, {mix(board, {}, 0.35F), 0.4F, 2});
    }
    canvas.line({0, top}, {canvas.width(), top}, side * 0.005F, {mix(wood[1], {}, 0.6F), 0.7F, 3});
  }
  const Point middle{canvas.width() * between(random, 0.38F, 0.62F), canvas.height() * between(random, 0.4F, 0.6F)};
  if (random.chance(50)) {
    pizza(canvas, random, middle, side * between(random, 0.27F, 0.36F));
  } else {
    cup(canvas, middle, side * between(random, 0.16F, 0.24F), between(random, 0, 6));
  }
  cup(canvas,
      {canvas.width() * (middle.x < canvas.width() / 2 ? 0.86F : 0.14F),
       canvas.height() * between(random, 0.12F, 0.3F)},
      side * 0.1F, between(random, 0, 6));
  canvas.glow({canvas.width() * (0.1F + 0.1F * time), 0}, side * 0.9F, colour(0xFFE9C0), 0.25F);
}

void beach(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const std::array<Colour, 3> water = {colour(0x0F6E9E), colour(0x1FA3C4), colour(0x7FE0DC)};
  canvas.gradient(water);
  const float shore = canvas.height() * between(random, 0.38F, 0.55F);
  std::vector<float> edge = outline(canvas, random, shore, side * 0.08F, 2, 0.35F);
  const auto shifted = [&](float distance) {
    std::vector<float> moved = edge;
    for (float& height : moved) height += distance;
    return moved;
  };
  const float swell = std::sin(time * 1.6F) * side * 0.02F;
  canvas.ground(shifted(-side * 0.05F + swell * 1.4F), colour(0xC8F3EC), colour(0xE9FBF5), side * 0.04F);
  canvas.ground(shifted(-side * 0.012F + swell), colour(0xFFFFFF), colour(0xFFFFFF), side * 0.02F);
  canvas.ground(shifted(swell), colour(0xCBA876), colour(0xE3C797), side * 0.05F);
  canvas.ground(shifted(side * 0.07F), colour(0xE6CD9F), colour(0xF3DFB8), side * 0.5F);
  const std::array<Colour, 5> tints = {colour(0xE4572E), colour(0x2E86AB), colour(0xF3A712), colour(0x6A994E),
                                       colour(0xD6336C)};
  for (std::size_t place = 0; place < 5 + random.below(5); ++place) {
    const auto column = random.below(canvas.columns());
    const float y = edge[column] + side * 0.16F + (canvas.height() - edge[column]) * between(random, 0, 0.8F);
    const auto x = static_cast<float>(column);
    const Colour towel = random.pick(tints);
    canvas.rectangle({x + side * 0.05F, y}, {x + side * 0.09F, y + side * 0.1F}, {towel}, side * 0.006F);
    canvas.rectangle({x + side * 0.05F, y + side * 0.02F}, {x + side * 0.09F, y + side * 0.032F},
                     {colour(0xFFFFFF), 0.8F});
    parasol(canvas, {x, y}, side * between(random, 0.05F, 0.075F), random.pick(tints), between(random, 0, 3));
  }
  const Point boat{canvas.width() * between(random, 0.2F, 0.7F) + time * side * 0.03F,
                   shore * between(random, 0.2F, 0.55F)};
  canvas.ellipse({boat.x - side * 0.07F, boat.y}, side * 0.08F, side * 0.012F,
                 {colour(0xFFFFFF), 0.35F, side * 0.012F});
  canvas.ellipse(boat, side * 0.035F, side * 0.013F, {colour(0xFFFFFF)});
  canvas.ellipse(boat, side * 0.02F, side * 0.007F, {colour(0xB0793F)});
}

void any(Canvas& canvas, SeededRandom& random) {
  constexpr std::array<Painter, 8> painters = {mountains, sea, city, flowers, table, beach, forest, aurora};
  const Painter painter = random.pick(painters);
  const std::uint64_t seed = random.next();
  painter(canvas, SeededRandom(seed), 0);
  canvas.develop(seed, 0.025F);
}

}  // namespace Fixture::Scenes
