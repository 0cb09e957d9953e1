#include "Tests/Support/SampleAvatars.h"

#include <array>
#include <cmath>
#include <numbers>

#include "Tests/Support/SampleScenes.h"

namespace Fixture {

namespace {

constexpr float pi = std::numbers::pi_v<float>;

enum class Hair { cropped, parted, bob, flowing, bun, curls, scarf, bald, cap };

struct Looks {
  Colour skin;
  Colour hair;
  Colour clothes;
  Colour accent;
  Hair style = Hair::cropped;
  bool glasses = false;
  bool beard = false;
};

Looks looksOf(SeededRandom& random) {
  constexpr std::array<std::uint32_t, 6> skins = {0xF6D2B5, 0xEBB88F, 0xD79A6B, 0xB87446, 0x8D5530, 0x6B3F25};
  constexpr std::array<std::uint32_t, 7> hairs = {0x2A1B14, 0x4A2F20, 0x7A4A26, 0xB5763A, 0xD9B36C, 0x9A9A9C, 0x171417};
  constexpr std::array<std::uint32_t, 7> clothes = {0xD95D4E, 0x3E7CB1, 0x5B8E55, 0xE0A030,
                                                    0x7A5AA8, 0x2F4858, 0xC8577E};
  Looks looks{.skin = colour(random.pick(skins)),
              .hair = colour(random.pick(hairs)),
              .clothes = colour(random.pick(clothes)),
              .accent = colour(random.pick(clothes)),
              .style = static_cast<Hair>(random.below(9)),
              .glasses = random.chance(30)};
  const bool shortHair = looks.style == Hair::cropped || looks.style == Hair::bald || looks.style == Hair::cap;
  looks.beard = shortHair && random.chance(50);
  return looks;
}

// A head whose middle and size are given in pixels; all else is a part of the size.
class Portrait {
 public:
  Portrait(Canvas& canvas, Point middle, float size, const Looks& looks)
      : canvas_(canvas), middle_(middle), size_(size), looks_(looks) {}

  void paint() {
    hairBehind();
    body();
    head();
    hairBefore();
    face();
  }

 private:
  Point at(float x, float y) const { return {middle_.x + x * size_, middle_.y + y * size_}; }
  void oval(float x, float y, float radiusX, float radiusY, Colour tint, float opacity = 1, float soft = 0) {
    canvas_.ellipse(at(x, y), radiusX * size_, radiusY * size_, {tint, opacity, 1.2F + soft * size_});
  }

  void hairBehind() {
    const Colour shade = mix(looks_.hair, {}, 0.15F);
    if (looks_.style == Hair::flowing) {
      oval(0, 0.15F, 0.62F, 0.72F, shade);
      canvas_.rectangle(at(-0.62F, 0.1F), at(0.62F, 1.05F), {shade}, 0.3F * size_);
    }
    if (looks_.style == Hair::bob) canvas_.rectangle(at(-0.6F, -0.5F), at(0.6F, 0.48F), {shade}, 0.4F * size_);
    if (looks_.style == Hair::bun) oval(0, -0.72F, 0.27F, 0.25F, looks_.hair);
    if (looks_.style == Hair::scarf) oval(0, 0.08F, 0.64F, 0.78F, mix(looks_.accent, {}, 0.12F));
    if (looks_.style != Hair::curls) return;
    for (int curl = 0; curl < 16; ++curl) {
      const float angle = pi * (0.85F + 1.3F * static_cast<float>(curl) / 15);
      oval(std::cos(angle) * 0.5F, std::sin(angle) * 0.52F - 0.02F, 0.2F, 0.2F, curl % 2 == 0 ? looks_.hair : shade);
    }
  }

  void body() {
    oval(0, 1.62F, 1.02F, 0.92F, looks_.clothes);
    canvas_.rectangle(at(-0.19F, 0.3F), at(0.19F, 0.86F), {mix(looks_.skin, {}, 0.14F)}, 0.18F * size_);
    oval(0, 0.8F, 0.26F, 0.15F, mix(looks_.skin, {}, 0.1F));
    canvas_.arc(at(0, 0.7F), 0.34F * size_, 0.12F * pi, 0.88F * pi, 0.06F * size_,
                {mix(looks_.clothes, {1, 1, 1}, 0.25F)});
  }

  void head() {
    oval(-0.46F, 0.06F, 0.09F, 0.12F, mix(looks_.skin, {}, 0.07F));
    oval(0.46F, 0.06F, 0.09F, 0.12F, mix(looks_.skin, {}, 0.07F));
    if (looks_.beard) oval(0, 0.14F, 0.47F, 0.52F, looks_.hair);
    oval(0, 0, 0.46F, looks_.beard ? 0.46F : 0.56F, looks_.skin);
  }

  void hairBefore() {
    const Colour light = mix(looks_.hair, {1, 1, 1}, 0.08F);
    switch (looks_.style) {
      case Hair::bald:
        oval(-0.12F, -0.36F, 0.16F, 0.08F, {1, 1, 1}, 0.25F, 0.1F);
        return;
      case Hair::scarf:
        canvas_.arc(at(0, 0.02F), 0.54F * size_, -pi, 0, 0.2F * size_, {looks_.accent});
        canvas_.arc(at(0, 0.1F), 0.5F * size_, 0, pi, 0.14F * size_, {mix(looks_.accent, {}, 0.08F)});
        return;
      case Hair::cap:
        canvas_.arc(at(0, -0.26F), 0.26F * size_, -pi, 0, 0.46F * size_, {looks_.accent});
        canvas_.line(at(-0.44F, -0.25F), at(0.62F, -0.25F), 0.11F * size_, {mix(looks_.accent, {}, 0.2F)});
        return;
      case Hair::parted:
        canvas_.ellipse(at(-0.2F, -0.4F), 0.38F * size_, 0.2F * size_, {looks_.hair}, -0.4F);
        canvas_.ellipse(at(0.22F, -0.4F), 0.34F * size_, 0.19F * size_, {light}, 0.45F);
        return;
      default:
        canvas_.arc(at(0, -0.02F), 0.42F * size_, -0.93F * pi, -0.07F * pi, 0.24F * size_, {looks_.hair});
        canvas_.ellipse(at(-0.16F, -0.42F), 0.26F * size_, 0.1F * size_, {light, 0.7F, 3}, -0.35F);
    }
  }

  void face() {
    const Colour ink = colour(0x2B2022);
    for (const float side : {-1.0F, 1.0F}) {
      oval(side * 0.18F, 0.02F, 0.045F, 0.058F, ink);
      oval(side * 0.18F + 0.015F, 0, 0.014F, 0.016F, {1, 1, 1});
      canvas_.line(at(side * 0.11F, -0.115F), at(side * 0.26F, -0.115F), 0.028F * size_,
                   {mix(looks_.hair, {}, 0.2F), 0.85F});
      oval(side * 0.27F, 0.17F, 0.09F, 0.06F, colour(0xE86A6A), 0.28F, 0.06F);
      if (looks_.glasses)
        canvas_.arc(at(side * 0.18F, 0.02F), 0.13F * size_, -pi, pi, 0.026F * size_, {colour(0x2A2F3A)});
    }
    if (looks_.glasses) canvas_.line(at(-0.05F, 0.01F), at(0.05F, 0.01F), 0.026F * size_, {colour(0x2A2F3A)});
    canvas_.arc(at(0, 0.1F), 0.05F * size_, 0.15F * pi, 0.85F * pi, 0.024F * size_, {mix(looks_.skin, {}, 0.3F)});
    canvas_.arc(at(0, 0.15F), 0.16F * size_, 0.17F * pi, 0.83F * pi, 0.045F * size_, {colour(0xA83A3F)});
  }

  Canvas& canvas_;
  Point middle_;
  float size_;
  Looks looks_;
};

std::array<Colour, 2> backdrop(SeededRandom& random) {
  constexpr std::array<std::array<std::uint32_t, 2>, 7> backdrops = {{{0xFFE3B8, 0xF6B98A},
                                                                      {0xCFE8E4, 0x8DBFB7},
                                                                      {0xF9D5D3, 0xE79A9D},
                                                                      {0xD9DDF4, 0x9AA6DA},
                                                                      {0xF5E6A9, 0xDDBB5E},
                                                                      {0xDCEBC7, 0x9CC37A},
                                                                      {0xCDE6F7, 0x79B4DD}}};
  const auto& chosen = random.pick(backdrops);
  return {colour(chosen[0]), colour(chosen[1])};
}

void paintCat(Canvas& canvas, SeededRandom& random) {
  const float size = canvas.side() * 0.36F;
  const Point middle{canvas.width() / 2, canvas.height() * 0.56F};
  constexpr std::array<std::uint32_t, 4> furs = {0xE39A4A, 0x8C8C92, 0x3A3436, 0xE9DCC8};
  const Colour fur = colour(random.pick(furs));
  const auto at = [&](float x, float y) { return Point{middle.x + x * size, middle.y + y * size}; };
  canvas.ellipse(at(0, 1.5F), size * 0.85F, size, {mix(fur, {}, 0.1F)});
  for (const float side : {-1.0F, 1.0F}) {
    const std::array<Point, 3> ear = {at(side * 0.88F, -1.15F), at(side * 0.95F, -0.2F), at(side * 0.2F, -0.7F)};
    const std::array<Point, 3> inner = {at(side * 0.8F, -0.92F), at(side * 0.84F, -0.4F), at(side * 0.42F, -0.68F)};
    canvas.convexPolygon(ear, {fur});
    canvas.convexPolygon(inner, {colour(0xE8A5A0)});
  }
  canvas.ellipse(middle, size, size * 0.85F, {fur});
  for (const float x : {-0.25F, 0.0F, 0.25F})
    canvas.line(at(x, -0.82F), at(x * 0.8F, -0.5F), size * 0.09F, {mix(fur, {}, 0.3F)});
  canvas.ellipse(at(0, 0.38F), size * 0.5F, size * 0.32F, {mix(fur, {1, 1, 1}, 0.65F)});
  for (const float side : {-1.0F, 1.0F}) {
    canvas.ellipse(at(side * 0.42F, -0.08F), size * 0.19F, size * 0.2F, {colour(0xB9D66A)});
    canvas.ellipse(at(side * 0.42F, -0.08F), size * 0.07F, size * 0.18F, {colour(0x18181A)});
    canvas.disc(at(side * 0.42F + 0.05F, -0.16F), size * 0.04F, {{1, 1, 1}});
    canvas.arc(at(side * 0.13F, 0.36F), size * 0.13F, 0, pi, size * 0.045F, {colour(0x4A3330)});
    for (const float lift : {-0.1F, 0.05F, 0.2F}) {
      canvas.line(at(side * 0.5F, 0.32F + lift * 0.5F), at(side * 1.2F, 0.22F + lift * 1.6F), size * 0.018F,
                  {{1, 1, 1}, 0.8F});
    }
  }
  canvas.ellipse(at(0, 0.25F), size * 0.1F, size * 0.075F, {colour(0xD0706C)});
}

void paintHeads(Canvas& canvas, SeededRandom& random) {
  canvas.gradient(backdrop(random));
  const float side = canvas.side();
  for (const auto& [x, y] : {std::pair{0.27F, 0.42F}, std::pair{0.73F, 0.42F}, std::pair{0.5F, 0.55F}}) {
    Portrait(canvas, {side * x, side * y}, side * 0.25F, looksOf(random)).paint();
  }
}

}  // namespace

void paintPerson(Canvas& canvas, std::uint64_t seed) {
  SeededRandom random(seed);
  if (random.chance(8)) return Scenes::any(canvas, random);
  canvas.gradient(backdrop(random));
  canvas.glow({canvas.width() * 0.3F, canvas.height() * 0.2F}, canvas.side() * 0.7F, {1, 1, 1}, 0.35F);
  if (random.chance(10)) return paintCat(canvas, random);
  Portrait(canvas, {canvas.width() / 2, canvas.height() * 0.45F}, canvas.side() * 0.42F, looksOf(random)).paint();
}

void paintGroup(Canvas& canvas, std::uint64_t seed) {
  SeededRandom random(seed);
  if (random.chance(50)) return Scenes::any(canvas, random);
  paintHeads(canvas, random);
}

void paintFootball(Canvas& canvas) {
  const float side = canvas.side();
  const std::array<Colour, 2> grass = {colour(0x6FB24E), colour(0x2F7A34)};
  canvas.gradient(grass);
  for (float x = 0; x < canvas.width(); x += side * 0.25F) {
    canvas.rectangle({x, 0}, {x + side * 0.125F, canvas.height()}, {{1, 1, 1}, 0.08F});
  }
  const Point middle{side * 0.5F, side * 0.52F};
  const float radius = side * 0.33F;
  canvas.ellipse({middle.x, middle.y + radius * 0.95F}, radius * 0.9F, radius * 0.18F, {{}, 0.35F, radius * 0.2F});
  canvas.disc(middle, radius, {colour(0xF8F8F4)});
  const Colour ink = colour(0x1F2226);
  const auto pentagon = [&](Point centre, float size, float turn) {
    std::array<Point, 5> corners{};
    for (std::size_t corner = 0; corner < 5; ++corner) {
      const float angle = turn + 2 * pi * static_cast<float>(corner) / 5;
      corners[corner] = {centre.x + std::cos(angle) * size, centre.y + std::sin(angle) * size};
    }
    canvas.convexPolygon(corners, {ink});
  };
  pentagon(middle, radius * 0.34F, -pi / 2);
  for (int spoke = 0; spoke < 5; ++spoke) {
    const float angle = -pi / 2 + 2 * pi * static_cast<float>(spoke) / 5;
    const Point way{std::cos(angle) * radius, std::sin(angle) * radius};
    canvas.line({middle.x + way.x * 0.3F, middle.y + way.y * 0.3F},
                {middle.x + way.x * 0.66F, middle.y + way.y * 0.66F}, radius * 0.035F, {ink});
    pentagon({middle.x + way.x * 0.8F, middle.y + way.y * 0.8F}, radius * 0.19F, angle + pi);
  }
  canvas.glow({middle.x - radius * 0.4F, middle.y - radius * 0.5F}, radius, {1, 1, 1}, 0.5F);
}

}  // namespace Fixture
