#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Tests/Support/TemporaryDirectory.h"

// Compares with a golden file, or writes it anew when that is asked for.
inline void expectGolden(const std::string& rendered, const std::filesystem::path& golden) {
  if (std::getenv("TIDEWELL_UPDATE_GOLDEN") != nullptr) Fixture::writeFile(golden, rendered);
  const Fixture::Bytes bytes = Fixture::readFile(golden);
  EXPECT_EQ(rendered, std::string(bytes.begin(), bytes.end()))
      << "TIDEWELL_UPDATE_GOLDEN=1 writes " << golden << " anew";
}
