#pragma once

#include <filesystem>
#include <string>

#include "Tests/Support/SeededRandom.h"
#include "Tests/Torture/Phone.h"

namespace Torture {

// What happened to a copy of the phone's backup, and what an export of it must tell.
struct BackupDamage {
  enum class Told {
    loudly,    // no success
    always,    // a success has everything
    messages,  // a success has as many messages as the phone
    nothing    // it may be such that nobody can know
  };

  std::string what;
  Told told = Told::nothing;
  std::string mark;  // of media that may be anything

  static BackupDamage make(const std::filesystem::path& backup, const Phone& phone, Fixture::SeededRandom& random);
};

}  // namespace Torture
