#include "TidewellCore/MediaKind.h"

#include <algorithm>
#include <string>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

constexpr std::array<std::string_view, 11> photoExtensions{"jpg", "jpeg", "png", "heic", "heif", "gif",
                                                           "tif", "tiff", "bmp", "raw",  "dng"};
constexpr std::array<std::string_view, 8> videoExtensions{"mp4", "mov", "m4v", "avi", "3gp", "3gpp", "mkv", "webm"};
constexpr std::array<std::string_view, 8> audioExtensions{"opus", "m4a", "aac", "amr", "caf", "ogg", "mp3", "wav"};
constexpr std::array<std::string_view, 1> stickerExtensions{"webp"};

struct Names {
  std::string_view rawValue;
  std::string_view displayName;
};

// In the order of the kinds.
constexpr std::array<Names, 5> names{{{"photos", "Photos"},
                                      {"videos", "Videos"},
                                      {"voiceNotes", "Voice notes"},
                                      {"stickers", "Stickers"},
                                      {"documents", "Documents"}}};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& list, std::string_view item) {
  return std::ranges::find(list, item) != list.end();
}

}  // namespace

MediaKind MediaKind::classify(std::string_view fileExtension) {
  const std::string extension = Text::lowercased(fileExtension);
  if (contains(photoExtensions, extension)) return photos;
  if (contains(videoExtensions, extension)) return videos;
  if (contains(audioExtensions, extension)) return voiceNotes;
  if (contains(stickerExtensions, extension)) return stickers;
  return documents;
}

bool MediaKind::isSkippedThumbnail(std::string_view fileName) {
  const std::string name = Text::lowercased(fileName);
  if (contains(skippedThumbnailExtensions, PathText::extension(name))) return true;
  return std::ranges::any_of(skippedThumbnailExtensions,
                             [&](std::string_view extension) { return name.ends_with("." + std::string(extension)); });
}

std::optional<MediaKind> MediaKind::fromRawValue(std::string_view raw) {
  for (const MediaKind kind : allCases) {
    if (kind.rawValue() == raw) return kind;
  }
  return std::nullopt;
}

std::string_view MediaKind::rawValue() const { return names[value_].rawValue; }

std::string_view MediaKind::displayName() const { return names[value_].displayName; }
