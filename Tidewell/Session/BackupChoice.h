#pragma once

#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>

#include "Tidewell/Session/ExportSession.h"

// Which backup is chosen, and what it says of itself.
class BackupChoice {
 public:
  using Then = std::function<void()>;

  explicit BackupChoice(ExportSession& session) : session_(session) {}
  ~BackupChoice();
  BackupChoice(const BackupChoice&) = delete;
  BackupChoice& operator=(const BackupChoice&) = delete;

  // Makes `folder` the chosen backup and looks into it; `then` is called when that has ended, also when another was
  // chosen meanwhile. `knownInfo`: what the library knows of it, shown when it cannot be read any more.
  // Does nothing during an unlock or an export.
  void set(const std::filesystem::path& folder, const std::optional<BackupInfo>& knownInfo, const Then& then = {});
  // Chooses one of the list.
  void select(const DiscoveredBackup& backup, const Then& then = {});
  // Reopens a folder used before, unless something was chosen meanwhile. `knownInfo` as above.
  void reopen(const std::filesystem::path& folder, const std::optional<BackupInfo>& knownInfo);

 private:
  // One for each backup that was chosen, cancelled when another one is: tells late answers from those for the
  // present one, and keeps questions that nobody asks any more from being put.
  using Choice = std::shared_ptr<CancellationToken>;

  bool isBusy() const;
  void clearForNewBackup(const std::filesystem::path& folder);
  void takeInspection(std::future<BackupInfo> info, const std::optional<BackupInfo>& knownInfo, const Choice& choice,
                      const Then& then);

  ExportSession& session_;
  Choice choice_ = std::make_shared<CancellationToken>();
  std::unique_ptr<ScopedAccess> access_;
};
