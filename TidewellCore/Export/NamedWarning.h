#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A sentence about files, of which it names the first: “a.jpg” is…, “a.jpg” and 3 more are….
namespace NamedWarning {

// `rest` goes on after the verb. Absent for no names.
std::optional<std::string> of(const std::vector<std::string>& names, std::string_view rest);

}  // namespace NamedWarning
