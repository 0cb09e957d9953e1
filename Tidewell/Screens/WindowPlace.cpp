#include "Tidewell/Screens/WindowPlace.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/Json.h"

namespace {

namespace fs = std::filesystem;

// Generous ones; a frame's measures are known only once the window is seen.
constexpr int titleBar = 40;
constexpr int border = 4;
constexpr std::int64_t largestFile = 4096;
constexpr std::int64_t farthest = 100'000;

std::int64_t area(const QRect& rectangle) {
  return rectangle.isEmpty() ? 0 : std::int64_t{rectangle.width()} * rectangle.height();
}

QRect centred(QSize size, const QRect& space) {
  return {space.left() + (space.width() - size.width()) / 2, space.top() + (space.height() - size.height()) / 2,
          size.width(), size.height()};
}

QRect movedInto(const QRect& space, QRect rectangle) {
  rectangle.moveLeft(std::clamp(rectangle.left(), space.left(), space.left() + space.width() - rectangle.width()));
  rectangle.moveTop(std::clamp(rectangle.top(), space.top(), space.top() + space.height() - rectangle.height()));
  return rectangle;
}

std::optional<int> number(const Json::Object& object, std::string_view key) {
  const auto found = object.find(key);
  const auto* value = found == object.end() ? nullptr : found->second.as<std::int64_t>();
  if (value == nullptr || *value < -farthest || *value > farthest) return std::nullopt;
  return static_cast<int>(*value);
}

std::optional<WindowPlace> parsed(std::string_view content) {
  const std::optional<Json> document = Json::parse(content);
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  if (object == nullptr) return std::nullopt;
  const auto width = number(*object, "width");
  const auto height = number(*object, "height");
  if (!width || !height || *width <= 0 || *height <= 0) return std::nullopt;
  const auto x = number(*object, "x");
  const auto y = number(*object, "y");
  return WindowPlace{.size = {*width, *height}, .corner = x && y ? std::optional(QPoint(*x, *y)) : std::nullopt};
}

}  // namespace

QRect WindowPlace::on(const QList<QRect>& freeSpaces, QSize least) const {
  const QSize wanted = size.expandedTo(least);
  const QRect wish(corner.value_or(QPoint()), wanted);
  if (freeSpaces.isEmpty()) return wish;
  const auto shared = [&](const QRect& space) { return corner ? area(space & wish) : 0; };
  const QRect nearest = *std::ranges::max_element(freeSpaces, {}, shared);
  const QRect space = nearest.adjusted(border, titleBar, -border, -border);
  const QSize fitting = wanted.boundedTo(space.size());
  return shared(nearest) > 0 ? movedInto(space, {*corner, fitting}) : centred(fitting, space);
}

std::optional<WindowPlace> WindowPlace::load(const fs::path& file) {
  try {
    return parsed(textOf(Files::read(file, largestFile)));
  } catch (const fs::filesystem_error&) {
    return std::nullopt;
  }
}

void WindowPlace::save(const fs::path& file) const {
  fs::create_directories(file.parent_path());
  Json::Object object{{"width", std::int64_t{size.width()}}, {"height", std::int64_t{size.height()}}};
  if (corner) {
    object.emplace("x", std::int64_t{corner->x()});
    object.emplace("y", std::int64_t{corner->y()});
  }
  Files::writeAtomically(file, Json(std::move(object)).write());
}
