#pragma once

#include <string_view>
#include <vector>

// The tables of texts as they stand in Texts/, compiled in.
namespace ExportTextSources {

struct Source {
  std::string_view language;  // BCP 47
  std::string_view json;
};

std::vector<Source> all();

}  // namespace ExportTextSources
