#pragma once

#include <string>
#include <vector>

// What Qt, its platform and the screens said while it lives: nobody should have
// to say anything. Installs itself as the one message handler.
class Console {
 public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  const std::vector<std::string>& messages() const;
};
