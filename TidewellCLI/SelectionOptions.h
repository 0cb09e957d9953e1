#pragma once

#include "TidewellCore/ChatData/Selection.h"

namespace CLI {
class App;
}  // namespace CLI

// The options that say which chats and days of a backup are meant.
struct SelectionOptions {
  Selection selection;

  // It must live until the command line is parsed.
  void addOptions(CLI::App& command);
  // To be called then. Throws CLI::ValidationError where the last day comes before the first.
  void requireSense() const;
};
