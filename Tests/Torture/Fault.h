#pragma once

#include <string>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/SeededRandom.h"

namespace Torture {

// One call of the system that fails, as the preload library of Tests/Faults takes it.
struct Fault {
  std::string plan;   // "CALL:NUMBER:ERROR", or "CALL:NUMBER+:ERROR"
  std::string below;  // a name in the program's folder, or empty for all of it

  static Fault random(Fixture::SeededRandom& random);
  // False where the library cannot be loaded, as under a sanitizer.
  static bool isPossible();

  std::string told() const { return "fault " + plan + " below \"" + below + "\""; }
  void putInto(CommandLine& program) const;
  static void takeOutOf(CommandLine& program) { program.set("LD_PRELOAD", ""); }
};

}  // namespace Torture
