#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <filesystem>
#include <optional>

// The size and place that a window is to have, in device-independent pixels and
// without its frame. No place where a window cannot tell its own.
struct WindowPlace {
  QSize size;
  std::optional<QPoint> corner;  // the upper left one

  // What comes nearest to it on these screens: as large as is wished, but at least `least`
  // and never beyond what the screen leaves free, with a frame around it; wholly on the
  // screen that it lies on most, else in the middle of the first. `freeSpaces` holds the
  // screens' free spaces, the primary one first.
  QRect on(const QList<QRect>& freeSpaces, QSize least) const;

  // Absent when the file is missing, damaged or foreign.
  static std::optional<WindowPlace> load(const std::filesystem::path& file);
  // Failures are the file system's own.
  void save(const std::filesystem::path& file) const;

  bool operator==(const WindowPlace&) const = default;
};
