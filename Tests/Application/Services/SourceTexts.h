#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>

// The texts that stand between quotation marks in C++ and QML.
struct SourceTexts {
  std::set<std::string> all;
  // Those that are looked up on the spot: text("…") and format("…").
  std::set<std::string> lookedUp;

  void read(std::string_view source);
  // Every source file below a folder.
  void readFolder(const std::filesystem::path& folder);
};
