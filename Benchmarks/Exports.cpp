#include "Benchmarks/Exports.h"

#include <stdexcept>

#include "TidewellCore/Export/Exporter.h"

void Exports::run(const std::filesystem::path& backup, const std::filesystem::path& destination,
                  std::optional<std::string_view> password) {
  const ExportSummary summary =
      Exporter().exportBackup({.backup = backup, .destination = destination, .password = password});
  if (summary.failedCount > 0) throw std::runtime_error("An export lost files.");
}

void Exports::scan(const std::filesystem::path& backup, std::optional<std::string_view> password) {
  Exporter().scan({.backup = backup, .password = password});
}
