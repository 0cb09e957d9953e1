#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// Parts of one, not gamma-corrected.
struct Colour {
  float red = 0;
  float green = 0;
  float blue = 0;
};

// From 0xRRGGBB.
Colour colour(std::uint32_t code);

// All of `from` at 0, all of `to` at 1.
Colour mix(Colour from, Colour to, float part);

// From `low` up to `high`.
float between(SeededRandom& random, float low, float high);

// In pixels; y grows downwards.
struct Point {
  float x = 0;
  float y = 0;
};

// How a shape lies on what is there: `opacity` from 0 to 1, the edge as wide as `softness` pixels.
struct Brush {
  Colour colour;
  float opacity = 1;
  float softness = 1.2F;
};

// A picture to paint on with soft-edged shapes, transparent at first.
class Canvas {
 public:
  Canvas(std::uint32_t width, std::uint32_t height);

  std::uint32_t columns() const { return columns_; }
  std::uint32_t rows() const { return rows_; }
  float width() const { return static_cast<float>(columns_); }
  float height() const { return static_cast<float>(rows_); }
  // The shorter side.
  float side() const { return width() < height() ? width() : height(); }

  // From top to bottom, the colours at even distances.
  void gradient(std::span<const Colour> colours);
  void disc(Point centre, float radius, Brush brush);
  // Turned clockwise by `angle` radians.
  void ellipse(Point centre, float radiusX, float radiusY, Brush brush, float angle = 0);
  // With round ends.
  void line(Point from, Point to, float thickness, Brush brush);
  // A part of a circle's outline, the angles in radians, clockwise from the right.
  void arc(Point centre, float radius, float from, float to, float thickness, Brush brush);
  void rectangle(Point topLeft, Point bottomRight, Brush brush, float cornerRadius = 0);
  void convexPolygon(std::span<const Point> corners, Brush brush);
  // All that is below the outline, one height a column; `top` becomes `bottom` within `depth` pixels.
  void ground(std::span<const float> outline, Colour top, Colour bottom, float depth);
  // Adds light, never to more than white; a glow fades out with the distance.
  void glow(Point centre, float radius, Colour light, float strength);
  void addLight(std::uint32_t column, std::uint32_t row, Colour light, float strength);
  // Mirrors what is above `horizon` into what is below, tinted, with waves moved on by `phase`.
  void reflect(float horizon, Colour tint, float tintPart, float phase);
  // What a camera adds: darker corners and noise of the given strength.
  void develop(std::uint64_t seed, float noise);

  // Rows of red, green and blue.
  Bytes rgb() const;
  // Rows of red, green, blue and alpha, the colours not multiplied by alpha.
  Bytes rgba() const;

 private:
  struct Pixel {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 0;
  };

  Pixel& at(std::uint32_t column, std::uint32_t row) { return pixels_[std::size_t{row} * columns_ + column]; }
  static void blend(Pixel& pixel, Colour colour, float part);
  // Paints where `distance`, of a pixel's centre to the shape's edge, is negative.
  template <typename Distance>
  void paint(Point topLeft, Point bottomRight, const Brush& brush, Distance distance);

  std::uint32_t columns_;
  std::uint32_t rows_;
  std::vector<Pixel> pixels_;
};

}  // namespace Fixture
