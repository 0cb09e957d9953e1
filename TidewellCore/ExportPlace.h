#pragma once

#include <compare>
#include <filesystem>
#include <string>

// Where a file of an export stands: in a folder of the content root, under a
// name. The one way from there to a path.
struct ExportPlace {
  std::string folder;
  std::string name;

  // "folder/name", as the archive refers to it.
  std::string relativePath() const { return folder + "/" + name; }
  std::filesystem::path in(const std::filesystem::path& contentRoot) const;

  auto operator<=>(const ExportPlace&) const = default;
};
