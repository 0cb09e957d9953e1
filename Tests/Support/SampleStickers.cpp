#include "Tests/Support/SampleStickers.h"

#include <array>
#include <cmath>
#include <numbers>

#include "Tests/Support/Canvas.h"
#include "Tests/Support/PictureFormats.h"

namespace Fixture {

namespace {

constexpr float pi = std::numbers::pi_v<float>;
constexpr float middle = 256;

// Paints a shape, everything `rim` pixels wider than it is.
using Shape = void (*)(Canvas&, Colour, float rim);

Point around(float angle, float distance) {
  return {middle + std::cos(angle) * distance, middle + std::sin(angle) * distance};
}

void ball(Canvas& canvas, Colour tint, float rim) { canvas.disc({middle, middle}, 190 + rim, {tint}); }

void heart(Canvas& canvas, Colour tint, float rim) {
  for (const float side : {-1.0F, 1.0F}) {
    canvas.disc({middle + side * 88, 190}, 108 + rim, {tint});
    canvas.line({middle + side * 88, 190}, {middle, 330}, 216 + 2 * rim, {tint});
  }
  canvas.line({middle, 330}, {middle, 385}, 150 + 2 * rim, {tint});
  canvas.line({middle, 385}, {middle, 412}, 90 + 2 * rim, {tint});
}

void star(Canvas& canvas, Colour tint, float rim) {
  for (int point = 0; point < 5; ++point) {
    const float angle = -pi / 2 + 2 * pi * static_cast<float>(point) / 5;
    canvas.line({middle, middle}, around(angle, 100), 190 + 2 * rim, {tint});
    canvas.line({middle, middle}, around(angle, 165), 90 + 2 * rim, {tint});
    canvas.line({middle, middle}, around(angle, 200), 44 + 2 * rim, {tint});
  }
}

void cloud(Canvas& canvas, Colour tint, float rim) {
  canvas.rectangle({70 - rim, 230 - rim}, {442 + rim, 380 + rim}, {tint}, 75 + rim);
  canvas.disc({180, 230}, 96 + rim, {tint});
  canvas.disc({300, 205}, 118 + rim, {tint});
}

void drop(Canvas& canvas, Colour tint, float rim) {
  canvas.disc({middle, 310}, 140 + rim, {tint});
  for (int step = 0; step < 60; ++step) {
    const float part = static_cast<float>(step) / 60;
    canvas.disc({middle, 300 - 240 * part}, 138 * (1 - part) * (1 - part * 0.25F) + 8 + rim, {tint});
  }
}

void flower(Canvas& canvas, Colour tint, float rim) {
  for (int petal = 0; petal < 8; ++petal)
    canvas.disc(around(static_cast<float>(petal) * pi / 4, 135), 72 + rim, {tint});
  canvas.disc({middle, middle}, 125 + rim, {rim > 0 ? tint : mix(tint, {1, 1, 0.6F}, 0.55F)});
}

void rabbit(Canvas& canvas, Colour tint, float rim) {
  for (const float side : {-1.0F, 1.0F}) {
    canvas.line({middle + side * 100, 170}, {middle + side * 138, 92}, 70 + 2 * rim, {tint});
    if (rim == 0) canvas.line({middle + side * 108, 170}, {middle + side * 134, 106}, 30, {colour(0xF4A6A6)});
  }
  canvas.ellipse({middle, 280}, 190 + rim, 160 + rim, {tint});
}

void bear(Canvas& canvas, Colour tint, float rim) {
  for (const float side : {-1.0F, 1.0F}) {
    canvas.disc({middle + side * 130, 130}, 62 + rim, {tint});
    if (rim == 0) canvas.disc({middle + side * 130, 130}, 34, {mix(tint, {1, 1, 1}, 0.5F)});
  }
  canvas.ellipse({middle, 275}, 185 + rim, 170 + rim, {tint});
  if (rim == 0) canvas.ellipse({middle, 335}, 95, 70, {mix(tint, {1, 1, 1}, 0.55F)});
}

void sun(Canvas& canvas, Colour tint, float rim) {
  for (int ray = 0; ray < 12; ++ray) {
    const float angle = static_cast<float>(ray) * pi / 6;
    canvas.line(around(angle, 150), around(angle, 208), 34 + 2 * rim,
                {rim > 0 ? tint : mix(tint, colour(0xF08A24), 0.5F)});
  }
  canvas.disc({middle, middle}, 148 + rim, {tint});
}

void ghost(Canvas& canvas, Colour tint, float rim) {
  canvas.rectangle({96 - rim, 66 - rim}, {416 + rim, 390 + rim}, {tint}, 158 + rim);
  canvas.rectangle({96 - rim, 230}, {416 + rim, 400}, {tint});
  for (const float x : {149.0F, 256.0F, 363.0F}) canvas.disc({x, 395}, 53 + rim, {tint});
}

void egg(Canvas& canvas, Colour tint, float rim) {
  canvas.ellipse({250, 262}, 200 + rim, 165 + rim, {rim > 0 ? tint : colour(0xFFFDF6)}, 0.3F);
  canvas.ellipse({190, 330}, 110 + rim, 90 + rim, {rim > 0 ? tint : colour(0xFFFDF6)});
  if (rim == 0) canvas.disc({middle, middle}, 112, {mix(tint, colour(0xFFC02E), 0.8F)});
}

void cactus(Canvas& canvas, Colour tint, float rim) {
  const Colour green = rim > 0 ? tint : mix(tint, colour(0x58A55C), 0.85F);
  canvas.line({middle, 150}, {middle, 360}, 190 + 2 * rim, {green});
  canvas.line({110, 220}, {110, 270}, 60 + 2 * rim, {green});
  canvas.line({110, 280}, {middle, 290}, 60 + 2 * rim, {green});
  canvas.line({402, 180}, {402, 240}, 60 + 2 * rim, {green});
  canvas.line({402, 250}, {middle, 260}, 60 + 2 * rim, {green});
  canvas.rectangle({150 - rim, 370 - rim}, {362 + rim, 460 + rim}, {rim > 0 ? tint : colour(0xC8643C)}, 22 + rim);
  if (rim == 0) canvas.disc({middle + 40, 62}, 26, {colour(0xF26B8A)});
}

void eyes(Canvas& canvas, std::size_t mood, Colour ink) {
  for (const float side : {-1.0F, 1.0F}) {
    const Point eye{middle + side * 62, 255};
    if (mood == 1) {
      canvas.arc({eye.x, eye.y + 8}, 24, -pi, 0, 11, {ink});
    } else if (mood == 2 && side > 0) {
      canvas.line({eye.x - 22, eye.y}, {eye.x + 22, eye.y}, 11, {ink});
    } else {
      canvas.ellipse(eye, 20, 25, {ink});
      canvas.disc({eye.x + 6, eye.y - 8}, 7, {{1, 1, 1}});
    }
    canvas.ellipse({middle + side * 104, 300}, 26, 16, {colour(0xF2607A), 0.5F, 8});
  }
}

void face(Canvas& canvas, std::size_t mood) {
  const Colour ink = colour(0x3A2A2E);
  eyes(canvas, mood, ink);
  if (mood == 0) {
    canvas.ellipse({middle, 316}, 38, 30, {ink});
    canvas.ellipse({middle, 330}, 24, 14, {colour(0xF26B7A)});
  } else if (mood == 3) {
    canvas.ellipse({middle, 316}, 16, 20, {ink});
  } else {
    canvas.arc({middle, 288}, 38, 0.15F * pi, 0.85F * pi, 11, {ink});
  }
}

}  // namespace

Bytes faceSticker(SeededRandom& random) {
  constexpr std::array<Shape, 12> shapes = {ball,   heart, star, cloud, drop, flower,
                                            rabbit, bear,  sun,  ghost, egg,  cactus};
  constexpr std::array<std::uint32_t, 12> tints = {0xFFD34E, 0xF25F6E, 0xFFC93C, 0x9CCBF2, 0x4FA8E8, 0xF59AC0,
                                                   0xF2A65A, 0xB98058, 0xFFD84A, 0xD9CEF5, 0xFFC02E, 0x6FBF73};
  const std::size_t kind = random.below(shapes.size());
  const Colour tint = mix(colour(tints[kind]), {1, 1, 1}, between(random, 0, 0.25F));
  Canvas canvas(512, 512);
  shapes[kind](canvas, {1, 1, 1}, 18);
  shapes[kind](canvas, tint, 0);
  face(canvas, random.below(4));
  return webpOf(canvas);
}

}  // namespace Fixture
