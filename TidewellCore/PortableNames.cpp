#include "TidewellCore/PortableNames.h"

#include <algorithm>
#include <array>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

// Leaves room for a variant's number behind an extension that is as good as all of the name.
constexpr std::size_t longestEnding = 240;

bool isNoCharacter(char32_t scalar) { return (scalar & 0xFFFE) == 0xFFFE || (scalar >= 0xFDD0 && scalar <= 0xFDEF); }

bool isRefused(char32_t scalar) {
  return std::u32string_view(U"?*\"<>|:\\").find(scalar) != std::u32string_view::npos || Text::isControl(scalar) ||
         isNoCharacter(scalar);
}

// Without blanks and dots at the end; blanks at the beginning stay.
std::string_view withoutTail(std::string_view name) {
  for (;;) {
    const std::string_view part = Text::trimmedPart(name.substr(0, name.find_last_not_of('.') + 1));
    const std::size_t end = part.empty() ? 0 : static_cast<std::size_t>(part.data() + part.size() - name.data());
    if (end == name.size()) return name;
    name = name.substr(0, end);
  }
}

// Windows finds devices under these names, whatever follows a dot in them.
bool isDevice(std::string_view stem) {
  constexpr std::array<std::string_view, 6> devices{"con", "prn", "aux", "nul", "conin$", "conout$"};
  constexpr std::array<std::string_view, 13> ports{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "¹", "²", "³"};
  const std::string name = Text::lowercased(stem);
  if (std::ranges::find(devices, name) != devices.end()) return true;
  const bool isPort = name.starts_with("com") || name.starts_with("lpt");
  return isPort && std::ranges::find(ports, std::string_view(name).substr(3)) != ports.end();
}

}  // namespace

std::string PortableNames::portable(std::string_view name) {
  std::u32string scalars = Text::scalars(name);
  std::ranges::replace_if(scalars, isRefused, U'-');
  const std::string clean = Text::fromScalars(scalars);
  std::string result(withoutTail(clean));
  const std::size_t dot = std::min(result.find('.'), result.size());
  if (isDevice(Text::trimmedPart(std::string_view(result).substr(0, dot)))) result.insert(dot, "-");
  const bool isAllEnding = PathText::extension(result).size() >= longestEnding;
  const std::size_t limit = isAllEnding ? longestEnding : FileNaming::maximumNameBytes;
  if (result.size() > limit) result = std::string(withoutTail(Text::cutToBytes(result, limit)));
  return result.empty() ? "-" : result;
}

std::string PortableNames::inForm(std::string_view name, NameForm form) {
  return form == NameForm::portable ? portable(name) : std::string(name);
}
