#pragma once

#include <string_view>

// The files of the viewer as they stand in Viewer/, compiled in; the parts of
// the script are joined in the order of Viewer/Sources.cmake.
namespace ViewerSources {

std::string_view page();
std::string_view styleSheet();
std::string_view script();

}  // namespace ViewerSources
