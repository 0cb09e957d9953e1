#include "Tidewell/Session/LibraryRefresh.h"

#include <algorithm>

namespace {

using Lane = BackgroundWork::Lane;
using Backups = std::vector<DiscoveredBackup>;

// A backup that was made anew is another, whatever its folder is called.
bool isSameBackup(const DiscoveredBackup& one, const DiscoveredBackup& other) { return one.info == other.info; }

Backups withSizesOf(Backups backups, const Backups& before) {
  for (DiscoveredBackup& backup : backups) {
    const auto known = std::ranges::find_if(before, [&](const auto& each) { return isSameBackup(each, backup); });
    if (known != before.end()) backup.byteCount = known->byteCount;
  }
  return backups;
}

Backups measured(Backups backups, const CancellationCheck& isCancelled) {
  for (DiscoveredBackup& backup : backups) {
    if (!backup.byteCount) backup.byteCount = BackupLibrary::folderByteCount(backup.info.url, isCancelled);
  }
  return backups;
}

}  // namespace

void LibraryRefresh::refresh(const Then& then) { read(Sizes::measured, then); }

void LibraryRefresh::refreshOnReturn() {
  const ExportState& state = session_.state();
  if (state.step != WizardStep::backup || state.isRefreshingLibrary || !state.hasReadLibrary) return;
  read(Sizes::kept, [](const std::function<void()>& end) { end(); });
}

void LibraryRefresh::read(Sizes sizes, const Then& then) {
  if (session_.state().isUnlocking()) return;
  session_.set(&ExportState::isRefreshingLibrary, true);
  session_.inBackground(
      Lane::userInitiated, [root = session_.services().backupRoot] { return BackupLibrary::diagnose(root); },
      [this, sizes, then](std::future<BackupLibrarySnapshot> future) {
        BackupLibrarySnapshot library = future.get();
        if (sizes == Sizes::kept) {
          library.backups = withSizesOf(std::move(library.backups), session_.state().library.backups);
        }
        session_.set(&ExportState::library, std::move(library));
        session_.set(&ExportState::hasReadLibrary, true);
        measure(then);
      });
}

void LibraryRefresh::measure(const Then& then) {
  session_.inBackground(
      Lane::utility,
      [backups = session_.state().library.backups, isGone = session_.isGone()] { return measured(backups, isGone); },
      [this, then](std::future<Backups> backups) {
        BackupLibrarySnapshot library = session_.state().library;
        library.backups = backups.get();
        session_.set(&ExportState::library, std::move(library));
        then([this] { end(); });
      });
}

void LibraryRefresh::end() { session_.set(&ExportState::isRefreshingLibrary, false); }

const DiscoveredBackup* LibraryRefresh::atPath(const std::optional<std::string>& path) const {
  const Backups& backups = session_.state().library.backups;
  const auto found = std::ranges::find_if(backups, [&](const DiscoveredBackup& backup) { return backup.id() == path; });
  return found == backups.end() ? nullptr : &*found;
}

// Not looked up by path: one that is no text has become another on its way through the screen.
const DiscoveredBackup* LibraryRefresh::withIdentifier(const QString& id) const {
  const Backups& backups = session_.state().library.backups;
  const auto found = std::ranges::find(
      backups, id, [](const DiscoveredBackup& backup) { return QString::fromStdString(backup.id()); });
  return found == backups.end() ? nullptr : &*found;
}
