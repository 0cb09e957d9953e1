#pragma once

#include <filesystem>
#include <memory>

#include "Tidewell/Session/ExportSession.h"

// Where the export goes, and how much fits there.
class DestinationChoice {
 public:
  explicit DestinationChoice(ExportSession& session) : session_(session) {}

  // Lets the user pick a folder.
  void choose();
  void set(const std::filesystem::path& folder);
  // The remembered folder, else the usual one, unless there is a destination already.
  void restore();
  // Asks anew what is free on the destination's volume.
  void refreshFreeSpace();

 private:
  ExportSession& session_;
  std::unique_ptr<ScopedAccess> access_;
};
