#pragma once

#include <string>

#include "Tests/Support/SeededRandom.h"

// Names as people and phones have them, of the kind that breaks programs.
namespace Torture::NastyNames {

std::string chat(Fixture::SeededRandom& random);
// For a file, without an extension and without "/".
std::string file(Fixture::SeededRandom& random);

}  // namespace Torture::NastyNames
