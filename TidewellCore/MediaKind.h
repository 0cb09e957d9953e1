#pragma once

#include <array>
#include <compare>
#include <optional>
#include <set>
#include <string_view>

// What sort of medium a file is. Kinds are ordered as they are listed.
class MediaKind {
 public:
  enum Value { photos, videos, voiceNotes, stickers, documents };

  constexpr MediaKind(Value value) : value_(value) {}

  // By extension without its dot, letter case ignored; whatever is unknown is a document.
  static MediaKind classify(std::string_view fileExtension);
  // Thumbnails and link previews are counted and never exported.
  static bool isSkippedThumbnail(std::string_view fileName);
  // Absent when no kind has that raw value; letter case counts.
  static std::optional<MediaKind> fromRawValue(std::string_view raw);

  // What preferences and data files store.
  std::string_view rawValue() const;
  // What people read.
  std::string_view displayName() const;
  constexpr Value value() const { return value_; }

  auto operator<=>(const MediaKind&) const = default;

  static const std::array<MediaKind, 5> allCases;
  static constexpr std::array<std::string_view, 3> skippedThumbnailExtensions{"thumb", "favicon", "mmsthumb"};

 private:
  Value value_;
};

inline constexpr std::array<MediaKind, 5> MediaKind::allCases{photos, videos, voiceNotes, stickers, documents};

using MediaKinds = std::set<MediaKind>;
