#include <algorithm>
#include <array>
#include <cmath>

#include "Tests/Support/SampleScenes.h"
#include "Tests/Support/SceneParts.h"

namespace Fixture::Scenes {

namespace {

struct Light {
  std::array<Colour, 4> sky;
  Colour sun;
  Colour far;
  Colour near;
};

Light lightOf(SeededRandom& random) {
  const std::array<Light, 5> lights = {Light{{colour(0x2F7DC4), colour(0x6FB1E3), colour(0xBEDFF2), colour(0xF2F4E8)},
                                             colour(0xFFF6D8),
                                             colour(0x9DBCD4),
                                             colour(0x2F5D3A)},
                                       Light{{colour(0x3B2F63), colour(0x97557E), colour(0xF0906A), colour(0xFFD79A)},
                                             colour(0xFFE9B0),
                                             colour(0xC98291),
                                             colour(0x2A2140)},
                                       Light{{colour(0x7FA6C9), colour(0xC5CFE0), colour(0xF7D9C8), colour(0xFFF0D6)},
                                             colour(0xFFF8E4),
                                             colour(0xB9C3D6),
                                             colour(0x3F5A6B)},
                                       Light{{colour(0x1F3B70), colour(0x3F6CA8), colour(0xF2B08A), colour(0xFBE3B4)},
                                             colour(0xFFE8A8),
                                             colour(0x8C93B8),
                                             colour(0x1D3A3A)},
                                       Light{{colour(0x4C9BD6), colour(0x8CC8EC), colour(0xD4ECF4), colour(0xFFF9E0)},
                                             colour(0xFFFFF0),
                                             colour(0xA7C7A9),
                                             colour(0x4A7A2C)}};
  return random.pick(lights);
}

void sail(Canvas& canvas, Point foot, float size, Colour hull) {
  const std::array<Point, 4> boat = {Point{foot.x - size * 0.5F, foot.y - size * 0.12F},
                                     {foot.x + size * 0.5F, foot.y - size * 0.12F},
                                     {foot.x + size * 0.34F, foot.y + size * 0.05F},
                                     {foot.x - size * 0.34F, foot.y + size * 0.05F}};
  const std::array<Point, 3> mainsail = {Point{foot.x - size * 0.02F, foot.y - size * 1.2F},
                                         {foot.x - size * 0.02F, foot.y - size * 0.18F},
                                         {foot.x + size * 0.48F, foot.y - size * 0.18F}};
  const std::array<Point, 3> jib = {Point{foot.x - size * 0.08F, foot.y - size},
                                    {foot.x - size * 0.08F, foot.y - size * 0.18F},
                                    {foot.x - size * 0.42F, foot.y - size * 0.18F}};
  canvas.convexPolygon(boat, {hull});
  canvas.convexPolygon(mainsail, {colour(0xFFF7EA), 0.95F});
  canvas.convexPolygon(jib, {colour(0xF1DCC8), 0.95F});
}

void balloon(Canvas& canvas, Point middle, float radius, Colour one, Colour other) {
  canvas.line({middle.x - radius * 0.55F, middle.y + radius * 0.7F},
              {middle.x - radius * 0.16F, middle.y + radius * 1.5F}, radius * 0.03F, {colour(0x4A3B30), 0.8F});
  canvas.line({middle.x + radius * 0.55F, middle.y + radius * 0.7F},
              {middle.x + radius * 0.16F, middle.y + radius * 1.5F}, radius * 0.03F, {colour(0x4A3B30), 0.8F});
  const std::array<Point, 4> neck = {Point{middle.x - radius * 0.8F, middle.y + radius * 0.55F},
                                     {middle.x + radius * 0.8F, middle.y + radius * 0.55F},
                                     {middle.x + radius * 0.22F, middle.y + radius * 1.22F},
                                     {middle.x - radius * 0.22F, middle.y + radius * 1.22F}};
  canvas.convexPolygon(neck, {mix(one, {}, 0.12F)});
  for (const float width : {1.0F, 0.72F, 0.42F, 0.14F}) {
    canvas.ellipse(middle, radius * width, radius, {width == 1.0F || width == 0.42F ? one : other});
  }
  canvas.ellipse({middle.x - radius * 0.35F, middle.y - radius * 0.35F}, radius * 0.5F, radius * 0.4F,
                 {colour(0xFFFFFF), 0.18F, radius * 0.4F});
  canvas.rectangle({middle.x - radius * 0.18F, middle.y + radius * 1.48F},
                   {middle.x + radius * 0.18F, middle.y + radius * 1.75F}, {colour(0x7A4E2A)}, radius * 0.05F);
}

}  // namespace

void mountains(Canvas& canvas, SeededRandom random, float time) {
  const Light light = lightOf(random);
  const float side = canvas.side();
  canvas.gradient(light.sky);
  const Point sun{canvas.width() * between(random, 0.15F, 0.85F),
                  canvas.height() * between(random, 0.2F, 0.42F) - time * side * 0.015F};
  canvas.glow(sun, side * 0.7F, light.sun, 0.45F);
  canvas.disc(sun, side * 0.045F, {light.sun, 1, side * 0.008F});
  clouds(canvas, random, mix(light.sky[3], colour(0xFFFFFF), 0.6F), 2 + random.below(4), time);
  const bool alpine = random.chance(60);
  constexpr int layers = 5;
  for (int layer = 0; layer < layers; ++layer) {
    const float near = static_cast<float>(layer) / (layers - 1);
    const float base = canvas.height() * (0.46F + 0.42F * near);
    const float rough = alpine && layer < 3 ? 0.52F : 0.3F;
    const std::vector<float> ridge =
        outline(canvas, random, base, canvas.height() * (0.17F - 0.08F * near), 2 + near * 2, rough);
    const Colour here = mix(light.far, light.near, near);
    canvas.ground(ridge, here, mix(here, light.sky[3], 0.45F * (1 - near)), canvas.height() * 0.3F);
    if (layer < layers - 1 || random.chance(30)) continue;
    for (std::size_t tree = 0; tree < 30; ++tree) {
      const auto column = random.below(canvas.columns());
      fir(canvas, {static_cast<float>(column), ridge[column] + side * between(random, 0.0F, 0.08F)},
          side * between(random, 0.07F, 0.17F), mix(here, {}, between(random, 0.15F, 0.4F)));
    }
  }
  if (random.chance(50)) {
    const float radius = side * between(random, 0.05F, 0.1F);
    const Point middle{canvas.width() * between(random, 0.2F, 0.8F) + time * side * 0.04F,
                       canvas.height() * between(random, 0.2F, 0.4F) - time * side * 0.03F};
    balloon(canvas, middle, radius, colour(0xD9483B), colour(0xF6C453));
  } else {
    birds(canvas, random, mix(light.near, {}, 0.3F), time);
  }
}

void sea(Canvas& canvas, SeededRandom random, float time) {
  const Light light = lightOf(random);
  const float side = canvas.side();
  const float horizon = canvas.height() * between(random, 0.48F, 0.62F);
  canvas.gradient(light.sky);
  const Point sun{canvas.width() * between(random, 0.25F, 0.75F), horizon - side * between(random, 0.02F, 0.2F)};
  canvas.glow(sun, side * 0.9F, light.sun, 0.5F);
  canvas.disc(sun, side * 0.06F, {light.sun, 1, side * 0.008F});
  clouds(canvas, random, mix(light.sky[2], colour(0xFFFFFF), 0.35F), 2 + random.below(4), time);
  if (random.chance(60)) {
    canvas.ground(outline(canvas, random, horizon + side * 0.02F, side * 0.09F, 2, 0.4F),
                  mix(light.far, light.near, 0.4F), mix(light.far, light.near, 0.6F), side * 0.1F);
  }
  canvas.reflect(horizon, mix(light.near, light.sky[0], 0.65F), 0.35F, time * 3);
  const float depth = canvas.height() - horizon;
  for (int glint = 0; glint < 420; ++glint) {
    const float near = between(random, 0, 1) * between(random, 0, 1);
    const float spread = (between(random, -1, 1) + between(random, -1, 1)) * side * (0.05F + 0.35F * near);
    const float shine = 0.5F + 0.5F * std::sin(time * between(random, 3, 8) + between(random, 0, 6));
    canvas.ellipse({sun.x + spread, horizon + depth * near + 2}, side * (0.006F + 0.03F * near),
                   side * (0.0012F + 0.003F * near), {light.sun, 0.7F * shine});
  }
  if (random.chance(75)) {
    const float size = side * between(random, 0.06F, 0.16F);
    const Point foot{canvas.width() * between(random, 0.15F, 0.6F) + time * side * 0.05F,
                     horizon + size * 0.35F + std::sin(time * 2.2F) * size * 0.02F};
    canvas.ellipse({foot.x, foot.y + size * 0.1F}, size * 0.5F, size * 0.05F, {{}, 0.3F, size * 0.06F});
    sail(canvas, foot, size, colour(random.chance(50) ? 0x7C2F2A : 0x24405E));
  }
  birds(canvas, random, mix(light.near, {}, 0.3F), time);
}

void aurora(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const float horizon = canvas.height() * between(random, 0.6F, 0.72F);
  const std::array<Colour, 3> sky = {colour(0x050A1F), colour(0x0B1D3A), colour(0x12384A)};
  canvas.gradient(sky);
  stars(canvas, random, horizon, 260, time);
  const std::array<Colour, 3> veils = {colour(0x3CF2A0), colour(0x52E0D8), colour(0xA06BF0)};
  for (std::size_t veil = 0; veil < 3; ++veil) {
    const std::vector<float> foot =
        outline(canvas, random, horizon * between(random, 0.5F, 0.8F), side * 0.16F, 2, 0.3F);
    const std::vector<float> brightness = outline(canvas, random, 0.45F, 0.5F, 9, 0.6F);
    const float drift = time * side * (0.02F + 0.01F * static_cast<float>(veil));
    for (std::uint32_t column = 0; column < canvas.columns(); ++column) {
      const auto moved = static_cast<std::size_t>(static_cast<float>(column) + drift) % canvas.columns();
      const float strength = std::clamp(brightness[moved], 0.0F, 1.0F);
      const auto lowest = static_cast<std::uint32_t>(std::clamp(foot[column], 0.0F, canvas.height() - 1));
      for (std::uint32_t row = 0; row < lowest; ++row) {
        const float above = (foot[column] - static_cast<float>(row)) / (side * 0.42F);
        const float fade = std::min(above * 8, 1.0F) * std::exp(-above * 2.2F);
        canvas.addLight(column, row, mix(veils[veil], veils[2], std::min(above * 0.6F, 1.0F)), fade * strength * 0.9F);
      }
    }
  }
  const Colour snow = colour(0x8FB4C4);
  canvas.ground(outline(canvas, random, horizon - side * 0.06F, side * 0.14F, 3, 0.52F),
                mix(snow, colour(0x0B1D3A), 0.35F), colour(0x0C1A2C), side * 0.2F);
  const std::vector<float> shore = outline(canvas, random, horizon + side * 0.01F, side * 0.015F, 5, 0.5F);
  canvas.ground(shore, colour(0x07121C), colour(0x050B12), side * 0.1F);
  for (int tree = 0; tree < 60; ++tree) {
    const auto column = random.below(canvas.columns());
    fir(canvas, {static_cast<float>(column), shore[column] + side * 0.01F}, side * between(random, 0.04F, 0.1F),
        colour(0x061018));
  }
  canvas.reflect(horizon + side * 0.03F, colour(0x06131F), 0.3F, time * 2);
}

void forest(Canvas& canvas, SeededRandom random, float time) {
  const float side = canvas.side();
  const bool autumn = random.chance(40);
  const Colour mist = colour(autumn ? 0xF6E3C2 : 0xDCEBD9);
  const Colour dark = colour(autumn ? 0x4A2A18 : 0x16301F);
  const std::array<Colour, 3> air = {mix(mist, colour(0xFFFFFF), 0.4F), mist, mix(mist, dark, 0.25F)};
  canvas.gradient(air);
  canvas.glow({canvas.width() * between(random, 0.25F, 0.75F), canvas.height() * 0.28F}, side * 0.8F, colour(0xFFF3C4),
              0.35F);
  for (int layer = 0; layer < 6; ++layer) {
    const float near = (static_cast<float>(layer) + 1) / 6;
    const Colour here = mix(mist, dark, near * near * 0.9F + 0.08F);
    const float base = canvas.height() * (0.62F + 0.36F * near);
    canvas.ground(outline(canvas, random, base, side * 0.02F, 4, 0.5F), here, mix(here, dark, 0.5F), side * 0.2F);
    for (int trunk = 0; trunk < 11 - layer; ++trunk) {
      const float x = canvas.width() * between(random, -0.02F, 1.02F);
      const float thick = side * (0.006F + 0.04F * near * near) * between(random, 0.6F, 1.3F);
      const float sway = std::sin(time * 1.4F + x) * side * 0.006F * near;
      canvas.line({x, base + side * 0.03F}, {x + side * between(random, -0.03F, 0.03F) + sway, -thick}, thick, {here});
      for (int leaf = 0; leaf < 26; ++leaf) {
        const Colour green = autumn ? mix(colour(0xD9772B), colour(0xE9B44C), between(random, 0, 1))
                                    : mix(colour(0x4F8A3C), colour(0x9CC25A), between(random, 0, 1));
        canvas.disc(
            {x + sway * 2 + side * between(random, -0.13F, 0.13F), canvas.height() * between(random, -0.05F, 0.3F)},
            side * between(random, 0.012F, 0.035F), {mix(mist, green, near), 0.55F, side * 0.008F});
      }
    }
  }
  for (int leaf = 0; leaf < 40; ++leaf) {
    const float fall = between(random, 0, 1) + time * 0.08F;
    const Point place{canvas.width() * between(random, 0, 1) + std::sin(time * 2 + fall * 9) * side * 0.02F,
                      canvas.height() * (fall - std::floor(fall))};
    canvas.ellipse(place, side * 0.009F, side * 0.005F, {colour(autumn ? 0xE08A2E : 0xB8D86A), 0.8F},
                   between(random, 0, 3) + time);
  }
}

}  // namespace Fixture::Scenes
