#include "Tests/Support/Canvas.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Fixture {

namespace {

std::uint8_t byteOf(float part) { return static_cast<std::uint8_t>(std::clamp(part, 0.0F, 1.0F) * 255.0F + 0.5F); }

// A column or row that is inside, for any coordinate.
std::uint32_t inside(float coordinate, std::uint32_t limit) {
  return static_cast<std::uint32_t>(std::clamp(coordinate, 0.0F, static_cast<float>(limit)));
}

// std::hypot is exact for any size and many times slower.
float lengthOf(float x, float y) { return std::sqrt(x * x + y * y); }

}  // namespace

Colour colour(std::uint32_t code) {
  const auto part = [code](unsigned shift) { return static_cast<float>(code >> shift & 255U) / 255.0F; };
  return {part(16), part(8), part(0)};
}

Colour mix(Colour from, Colour to, float part) {
  const auto mixed = [part](float one, float other) { return one + (other - one) * part; };
  return {mixed(from.red, to.red), mixed(from.green, to.green), mixed(from.blue, to.blue)};
}

float between(SeededRandom& random, float low, float high) {
  return low + (high - low) * static_cast<float>(random.below(10'001)) / 10'000.0F;
}

Canvas::Canvas(std::uint32_t width, std::uint32_t height)
    : columns_(width), rows_(height), pixels_(std::size_t{width} * height) {}

void Canvas::blend(Pixel& pixel, Colour colour, float part) {
  pixel.red += (colour.red - pixel.red) * part;
  pixel.green += (colour.green - pixel.green) * part;
  pixel.blue += (colour.blue - pixel.blue) * part;
  pixel.alpha += (1.0F - pixel.alpha) * part;
}

template <typename Distance>
void Canvas::paint(Point topLeft, Point bottomRight, const Brush& brush, Distance distance) {
  const std::uint32_t left = inside(topLeft.x - brush.softness, columns_);
  const std::uint32_t right = inside(bottomRight.x + brush.softness + 1, columns_);
  const std::uint32_t bottom = inside(bottomRight.y + brush.softness + 1, rows_);
  for (std::uint32_t row = inside(topLeft.y - brush.softness, rows_); row < bottom; ++row) {
    for (std::uint32_t column = left; column < right; ++column) {
      const Point centre{static_cast<float>(column) + 0.5F, static_cast<float>(row) + 0.5F};
      const float cover = std::clamp(0.5F - distance(centre) / brush.softness, 0.0F, 1.0F);
      if (cover > 0) blend(at(column, row), brush.colour, cover * brush.opacity);
    }
  }
}

void Canvas::gradient(std::span<const Colour> colours) {
  const auto steps = static_cast<float>(colours.size() - 1);
  for (std::uint32_t row = 0; row < rows_; ++row) {
    const float place = static_cast<float>(row) / height() * steps;
    const auto step = static_cast<std::size_t>(place);
    const Colour here = mix(colours[step], colours[step + 1], place - static_cast<float>(step));
    for (std::uint32_t column = 0; column < columns_; ++column) at(column, row) = {here.red, here.green, here.blue, 1};
  }
}

void Canvas::disc(Point centre, float radius, Brush brush) {
  paint({centre.x - radius, centre.y - radius}, {centre.x + radius, centre.y + radius}, brush,
        [=](Point point) { return lengthOf(point.x - centre.x, point.y - centre.y) - radius; });
}

void Canvas::ellipse(Point centre, float radiusX, float radiusY, Brush brush, float angle) {
  const float reach = std::max(radiusX, radiusY);
  const float cosine = std::cos(angle);
  const float sine = std::sin(angle);
  const float narrow = std::min(radiusX, radiusY);
  const Point extent = angle == 0 ? Point{radiusX, radiusY} : Point{reach, reach};
  paint({centre.x - extent.x, centre.y - extent.y}, {centre.x + extent.x, centre.y + extent.y}, brush,
        [=](Point point) {
          const Point from{point.x - centre.x, point.y - centre.y};
          const float along = (from.x * cosine + from.y * sine) / radiusX;
          const float across = (from.y * cosine - from.x * sine) / radiusY;
          return (std::sqrt(along * along + across * across) - 1) * narrow;
        });
}

void Canvas::line(Point from, Point to, float thickness, Brush brush) {
  const float half = thickness / 2;
  const Point way{to.x - from.x, to.y - from.y};
  const float square = std::max(way.x * way.x + way.y * way.y, 1e-6F);
  paint({std::min(from.x, to.x) - half, std::min(from.y, to.y) - half},
        {std::max(from.x, to.x) + half, std::max(from.y, to.y) + half}, brush, [=](Point point) {
          const float part = std::clamp(((point.x - from.x) * way.x + (point.y - from.y) * way.y) / square, 0.0F, 1.0F);
          return lengthOf(point.x - from.x - way.x * part, point.y - from.y - way.y * part) - half;
        });
}

void Canvas::arc(Point centre, float radius, float from, float to, float thickness, Brush brush) {
  const float half = thickness / 2;
  const float middle = (from + to) / 2;
  const float reach = (to - from) / 2;
  const Point direction{std::cos(middle), std::sin(middle)};
  const Point end{std::cos(reach) * radius, std::sin(reach) * radius};
  paint({centre.x - radius - half, centre.y - radius - half}, {centre.x + radius + half, centre.y + radius + half},
        brush, [=](Point point) {
          const Point away{point.x - centre.x, point.y - centre.y};
          const Point turned{away.x * direction.x + away.y * direction.y,
                             std::abs(away.y * direction.x - away.x * direction.y)};
          if (std::atan2(turned.y, turned.x) <= reach) return std::abs(lengthOf(away.x, away.y) - radius) - half;
          return lengthOf(turned.x - end.x, turned.y - end.y) - half;
        });
}

void Canvas::rectangle(Point topLeft, Point bottomRight, Brush brush, float cornerRadius) {
  const Point middle{(topLeft.x + bottomRight.x) / 2, (topLeft.y + bottomRight.y) / 2};
  const Point half{(bottomRight.x - topLeft.x) / 2 - cornerRadius, (bottomRight.y - topLeft.y) / 2 - cornerRadius};
  paint(topLeft, bottomRight, brush, [=](Point point) {
    const Point out{std::abs(point.x - middle.x) - half.x, std::abs(point.y - middle.y) - half.y};
    return lengthOf(std::max(out.x, 0.0F), std::max(out.y, 0.0F)) + std::min(std::max(out.x, out.y), 0.0F) -
           cornerRadius;
  });
}

void Canvas::convexPolygon(std::span<const Point> corners, Brush brush) {
  struct Edge {
    Point start;
    Point normal;
  };
  Point least = corners[0];
  Point most = corners[0];
  float area = 0;
  for (std::size_t index = 0; index < corners.size(); ++index) {
    const Point& here = corners[index];
    const Point& next = corners[(index + 1) % corners.size()];
    area += here.x * next.y - next.x * here.y;
    least = {std::min(least.x, here.x), std::min(least.y, here.y)};
    most = {std::max(most.x, here.x), std::max(most.y, here.y)};
  }
  std::vector<Edge> edges;
  for (std::size_t index = 0; index < corners.size(); ++index) {
    const Point& here = corners[index];
    const Point& next = corners[(index + 1) % corners.size()];
    const float length = std::copysign(std::max(lengthOf(next.x - here.x, next.y - here.y), 1e-6F), area);
    edges.push_back({here, {(next.y - here.y) / length, (here.x - next.x) / length}});
  }
  paint(least, most, brush, [&](Point point) {
    float outermost = std::numeric_limits<float>::lowest();
    for (const Edge& edge : edges) {
      outermost =
          std::max(outermost, (point.x - edge.start.x) * edge.normal.x + (point.y - edge.start.y) * edge.normal.y);
    }
    return outermost;
  });
}

void Canvas::ground(std::span<const float> outline, Colour top, Colour bottom, float depth) {
  for (std::uint32_t column = 0; column < columns_; ++column) {
    for (std::uint32_t row = inside(outline[column], rows_); row < rows_; ++row) {
      const float below = static_cast<float>(row) + 1 - outline[column];
      blend(at(column, row), mix(top, bottom, std::min(below / depth, 1.0F)), std::min(below, 1.0F));
    }
  }
}

void Canvas::glow(Point centre, float radius, Colour light, float strength) {
  const std::uint32_t right = inside(centre.x + radius, columns_);
  const std::uint32_t bottom = inside(centre.y + radius, rows_);
  for (std::uint32_t row = inside(centre.y - radius, rows_); row < bottom; ++row) {
    for (std::uint32_t column = inside(centre.x - radius, columns_); column < right; ++column) {
      const float x = (static_cast<float>(column) - centre.x) / radius;
      const float y = (static_cast<float>(row) - centre.y) / radius;
      const float rest = std::max(1 - (x * x + y * y), 0.0F);
      addLight(column, row, light, strength * rest * rest * rest);
    }
  }
}

void Canvas::addLight(std::uint32_t column, std::uint32_t row, Colour light, float strength) {
  Pixel& pixel = at(column, row);
  pixel.red += std::max(1 - pixel.red, 0.0F) * light.red * strength;
  pixel.green += std::max(1 - pixel.green, 0.0F) * light.green * strength;
  pixel.blue += std::max(1 - pixel.blue, 0.0F) * light.blue * strength;
}

void Canvas::reflect(float horizon, Colour tint, float tintPart, float phase) {
  const std::uint32_t first = inside(horizon, rows_);
  const float depth = std::max(height() - horizon, 1.0F);
  for (std::uint32_t row = first; row < rows_; ++row) {
    const float below = static_cast<float>(row) - horizon;
    const float near = below / depth;
    const float wave = std::sin(below * 0.9F / (0.3F + near * 2) + phase) + std::sin(below * 0.23F - phase * 0.7F);
    const float mirrored = horizon - 1 - below * horizon / std::max(horizon, depth) + wave * near * 3;
    const std::uint32_t source = inside(mirrored, first == 0 ? 0 : first - 1);
    const float shift = wave * near * width() * 0.004F;
    const Colour deep = mix(tint, {0, 0, 0}, near * 0.5F);
    for (std::uint32_t column = 0; column < columns_; ++column) {
      const std::uint32_t from = inside(static_cast<float>(column) + shift, columns_ - 1);
      at(column, row) = at(from, source);
      blend(at(column, row), deep, tintPart + (1 - tintPart) * near * 0.5F);
    }
  }
}

void Canvas::develop(std::uint64_t seed, float noise) {
  auto state = static_cast<std::uint32_t>(seed * 2 + 1);
  for (std::uint32_t row = 0; row < rows_; ++row) {
    const float y = static_cast<float>(row) / height() - 0.5F;
    for (std::uint32_t column = 0; column < columns_; ++column) {
      const float x = static_cast<float>(column) / width() - 0.5F;
      state = state * 1'664'525U + 1'013'904'223U;
      const float speck = (static_cast<float>(state >> 16U) / 65'535.0F - 0.5F) * noise;
      const float light = 1 - 0.35F * (x * x + y * y);
      Pixel& pixel = at(column, row);
      pixel = {pixel.red * light + speck, pixel.green * light + speck, pixel.blue * light + speck, pixel.alpha};
    }
  }
}

Bytes Canvas::rgb() const {
  Bytes bytes(pixels_.size() * 3);
  auto next = bytes.begin();
  for (const Pixel& pixel : pixels_) {
    for (const float part : {pixel.red, pixel.green, pixel.blue}) *next++ = byteOf(part);
  }
  return bytes;
}

Bytes Canvas::rgba() const {
  Bytes bytes;
  bytes.reserve(pixels_.size() * 4);
  for (const Pixel& pixel : pixels_) {
    const float alpha = std::max(pixel.alpha, 1e-6F);
    for (const float part : {pixel.red / alpha, pixel.green / alpha, pixel.blue / alpha, pixel.alpha}) {
      bytes.push_back(byteOf(part));
    }
  }
  return bytes;
}

}  // namespace Fixture
