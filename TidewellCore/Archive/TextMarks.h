#pragma once

#include <string>
#include <string_view>

// A text as its sender marked it: *bold*, _italic_, ~strike~, `code`, ```code of several lines```, and lines that
// quote ("> ") or list ("- ", "1. "). The archive's viewer reads the same marks (Viewer/wording.js).
namespace TextMarks {

// For a page, escaped, with "<br>" between lines. Marks become strong, em, s and code, each properly within the
// others; lines that quote or list become blocks, which break lines by themselves. Marks without a partner, those
// within words and web addresses, and all within code stay what they are. The work grows with the length alone.
std::string html(std::string_view cleanedText);

// How a block begins in what `html` returns; it stands in no other.
inline constexpr std::string_view blockStart = "<span class=\"";

}  // namespace TextMarks
