#pragma once

#include <filesystem>
#include <string>

#include "Tests/Support/SeededRandom.h"
#include "Tests/Torture/Judge.h"
#include "Tests/Torture/Phone.h"

// What people and accidents do to an export between two runs.
namespace Torture::DestinationDamage {

struct Scene {
  std::filesystem::path destination;
  std::filesystem::path elsewhere;  // where planted links lead
  const Phone& phone;
};

// Does one of them, tells the judge what it must know, and returns what was done.
std::string make(const Scene& scene, Judge& judge, Fixture::SeededRandom& random);

}  // namespace Torture::DestinationDamage
