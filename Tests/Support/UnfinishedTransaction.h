#pragma once

#include <filesystem>
#include <string>

namespace Fixture {

// Leaves an SQLite file and its rollback journal as a power cut would in the middle of a transaction that runs
// `statement`. Throws std::runtime_error.
void leaveUnfinished(const std::filesystem::path& file, const std::string& statement);

}  // namespace Fixture
