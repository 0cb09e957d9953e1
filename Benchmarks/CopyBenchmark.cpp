#include <fmt/core.h>

#include "Benchmarks/Measure.h"
#include "TidewellCore/Platform/Files.h"

void measureCopying(const std::filesystem::path& folder) {
  const auto source = folder / "plain";
  Measure::makeRandomFile(source, 512);
  const auto comparison =
      Measure::compare([&] { Files::copy(source, folder / "ours"); },
                       [&] { Measure::shell(fmt::format("cp {} {}", source.string(), (folder / "cp").string())); });
  Measure::report("Copying a file of 512 MiB:", "cp", comparison);
}
