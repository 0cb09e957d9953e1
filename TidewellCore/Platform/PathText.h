#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// Paths as the text they are stored as in databases: pieces parted by "/".
namespace PathText {

// What follows the last "/"; slashes at the very end do not count.
std::string_view lastComponent(std::string_view path);

// What follows the last dot of the last component, without the dot. Empty when
// there is no dot, when it is the first character (".hidden") or the last.
std::string_view extension(std::string_view path);

// A name without its extension and the dot before it.
std::string_view withoutExtension(std::string_view name);

// A path as UTF-8 text, and text as a path.
std::string text(const std::filesystem::path& path);
std::filesystem::path path(std::string_view utf8);

}  // namespace PathText
