#pragma once

#include <QString>
#include <filesystem>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

// The core's texts as Qt's.
namespace ContentText {

inline QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// A path as people read it; bytes that are no text become U+FFFD.
inline QString path(const std::filesystem::path& path) { return text(Text::repaired(PathText::text(path))); }

}  // namespace ContentText
