#include "TidewellCore/Platform/PathText.h"

std::string_view PathText::lastComponent(std::string_view path) {
  const auto end = path.find_last_not_of('/');
  if (end == std::string_view::npos) return {};
  path = path.substr(0, end + 1);
  return path.substr(path.find_last_of('/') + 1);
}

std::string_view PathText::extension(std::string_view path) {
  const std::string_view name = lastComponent(path);
  const auto dot = name.find_last_of('.');
  if (dot == std::string_view::npos || dot == 0) return {};
  return name.substr(dot + 1);
}

std::string_view PathText::withoutExtension(std::string_view name) {
  const std::string_view ending = extension(name);
  if (ending.empty()) return name;
  return name.substr(0, name.size() - ending.size() - 1);
}

std::string PathText::text(const std::filesystem::path& path) { return path.native(); }

std::filesystem::path PathText::path(std::string_view utf8) { return std::filesystem::path(utf8); }
