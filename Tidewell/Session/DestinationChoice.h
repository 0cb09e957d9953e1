#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "Tidewell/Session/ExportSession.h"

// Where the export goes, and how much fits there.
class DestinationChoice {
 public:
  explicit DestinationChoice(ExportSession& session) : session_(session) {}

  // Lets the user pick a folder.
  void choose();
  // An export's own folder "messages" gives way to the folder of that export.
  void set(const std::filesystem::path& folder);
  // The remembered folder, else the usual one, unless there is a destination already.
  void restore();
  // Asks anew what is free on the destination's volume.
  void refreshFreeSpace();
  // The same after an export that broke off, whose copies the next one need not make again.
  void takeStock();

 private:
  void setWhatIsMeant(const std::filesystem::path& folder);
  // In bytes: what is free on the volume, and what broken-off exports left.
  struct Stock {
    std::int64_t available = 0;
    std::int64_t kept = 0;
  };
  void lookAt(std::function<Stock(const std::filesystem::path& folder, std::int64_t kept)> look);

  ExportSession& session_;
  std::unique_ptr<ScopedAccess> access_;
};
