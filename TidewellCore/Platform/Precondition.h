#pragma once

#include <cstdio>
#include <cstdlib>

// Stops the program, in release builds too, when the caller broke a contract.
// For faults of the program only; bad input is reported with an exception.
inline void precondition(bool holds, const char* contract) {
  if (holds) return;
  std::fprintf(stderr, "Programming fault: %s\n", contract);
  std::abort();
}
