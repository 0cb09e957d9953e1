#pragma once

#include <string>

#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// What newer versions put where a name was: a protobuf's bytes in base64.
std::string opaqueName(SeededRandom& random);

}  // namespace Fixture
