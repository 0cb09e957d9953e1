#pragma once

#include <QString>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "Tidewell/Services/L10n.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

// The core's texts as Qt's.
namespace ContentText {

inline QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// A path as people read it; bytes that are no text become U+FFFD.
inline QString path(const std::filesystem::path& path) { return text(Text::repaired(PathText::text(path))); }

// One of two English texts in the user's language, "%lld" filled with the number.
inline QString counted(std::string_view one, std::string_view many, std::int64_t count, const L10n& texts) {
  return count == 1 ? texts.text(text(one)) : texts.format(text(many), {texts.number(count)});
}

}  // namespace ContentText
