#include <fmt/core.h>

#include "Benchmarks/Measure.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"
#include "TidewellCore/Export/Exporter.h"

namespace {

constexpr std::size_t messageCount = 300'000;

}  // namespace

void measureExport(const std::filesystem::path& folder) {
  const std::filesystem::path backup = folder / "device";
  // Made in a process of its own, whose memory is not counted.
  Measure::peakMemory(
      [&] { Fixture::writeBackup(Fixture::sampleBackup({.messageCount = messageCount, .mediaCount = 1000}), backup); });
  const std::int64_t memory =
      Measure::peakMemory([&] { Exporter().exportBackup({.backup = backup, .destination = folder / "export"}); });
  fmt::print("{:<34} {} MB\n", "Memory to export 300,000 messages:", memory / 1'000'000);
}
