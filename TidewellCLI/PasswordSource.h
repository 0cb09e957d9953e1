#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "TidewellCore/Crypto/SecretBytes.h"

namespace CLI {
class App;
}

// Where a command takes the password of an encrypted backup from. Never from
// an argument or the environment.
struct PasswordSource {
  std::string file;
  bool fromStandardInput = false;

  void addOptions(CLI::App& command);

  // Empty for a backup that needs none, and when there is neither an option nor
  // a terminal to ask on. Throws what reading reports, and TidewellError::cancelled.
  SecretBytes read(bool isEncrypted) const;
};

// Lets the terminal show what is typed again, where a question for a password hid it. For any thread.
void showTyping() noexcept;

// The same bytes as text; absent when there are none. Valid as long as `password`.
std::optional<std::string_view> passwordText(const SecretBytes& password);
