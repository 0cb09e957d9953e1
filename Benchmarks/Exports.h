#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace Exports {

// As the command line does it, without options. Throws what Exporter throws, and std::runtime_error when something is
// missing.
void run(const std::filesystem::path& backup, const std::filesystem::path& destination,
         std::optional<std::string_view> password = {});
void scan(const std::filesystem::path& backup, std::optional<std::string_view> password = {});

}  // namespace Exports
