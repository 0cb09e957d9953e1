#include "Tidewell/Session/DestinationChoice.h"

#include <functional>
#include <utility>

#include "TidewellCore/Backup/BackupLibrary.h"
#include "TidewellCore/Destination/DiskSpace.h"
#include "TidewellCore/Destination/ExportDestination.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"

namespace {

namespace fs = std::filesystem;
using Lane = BackgroundWork::Lane;

}  // namespace

void DestinationChoice::choose() {
  const FolderRequest request{
      .title = session_.translated("Choose where to save"),
      .message = session_.translated(
          "Chats and media will be saved here. Files that are already there with the same size are skipped."),
      .confirmButton = session_.translated("Choose"),
      .initialFolder = session_.state().destinationURL.value_or(session_.services().home / "Desktop"),
      .canCreateFolders = true};
  session_.chooseFolder(request, [this](const fs::path& folder) {
    // A running or finished export keeps the folder that it was started with.
    const ExportState& state = session_.state();
    if (!state.isExporting() && state.step != WizardStep::done) set(folder);
  });
}

void DestinationChoice::set(const fs::path& folder) {
  const ExportSession::Batch batch(session_);
  access_ = session_.startAccess(folder);
  // What is free in one folder says nothing of another.
  if (session_.state().destinationURL != folder) {
    session_.set(&ExportState::availableBytes, std::nullopt);
    session_.set(&ExportState::keptBytes, 0);
  }
  session_.set(&ExportState::destinationURL, folder);
  session_.set(&ExportState::summary, std::nullopt);
  session_.rememberDestination(folder);
  refreshFreeSpace();
  setWhatIsMeant(folder);
}

void DestinationChoice::setWhatIsMeant(const fs::path& folder) {
  session_.inBackground(
      Lane::userInitiated, [folder] { return ExportDestination::meant(folder); },
      [this, folder](std::future<fs::path> answer) {
        const ExportState& state = session_.state();
        const fs::path meant = answer.get();
        // A running or finished export has found out for itself, and keeps what it was started with.
        if (meant == folder || state.destinationURL != folder || state.isExporting()) return;
        if (state.step != WizardStep::done) set(meant);
      });
}

// The folders are looked at on a worker, since the volume of one may be slow or gone.
void DestinationChoice::restore() {
  if (session_.state().destinationURL) return;
  const std::optional<fs::path> bookmarked = session_.resolved(session_.preferences().lastDestinationBookmark);
  session_.inBackground(
      Lane::userInitiated,
      [bookmarked, last = session_.preferences().lastDestinationPath, home = session_.services().home] {
        const bool isThere = bookmarked && Files::isFolder(*bookmarked);
        return isThere ? bookmarked : ExportDestination::resolvedDefault(last, home);
      },
      [this, access = session_.accessWhileLooking(bookmarked)](std::future<std::optional<fs::path>> folder) {
        const std::optional<fs::path> found = folder.get();
        if (found && !session_.state().destinationURL) set(*found);
      });
}

void DestinationChoice::refreshFreeSpace() {
  lookAt([](const fs::path& folder, std::int64_t kept) { return Stock{DiskSpace::availableBytes(folder), kept}; });
}

void DestinationChoice::takeStock() {
  lookAt([isGone = session_.isGone()](const fs::path& folder, std::int64_t) {
    const std::int64_t kept = BackupLibrary::folderByteCount(folder / FolderNames::content, isGone);
    return Stock{DiskSpace::availableBytes(folder), kept};
  });
}

void DestinationChoice::lookAt(std::function<Stock(const fs::path& folder, std::int64_t kept)> look) {
  if (!session_.state().destinationURL) return session_.set(&ExportState::availableBytes, std::nullopt);
  const fs::path asked = *session_.state().destinationURL;
  session_.inBackground(
      Lane::userInitiated,
      [asked, kept = session_.state().keptBytes, look = std::move(look)] { return look(asked, kept); },
      [this, asked](std::future<Stock> stock) {
        if (session_.state().destinationURL != asked) return;
        try {
          const auto [available, kept] = stock.get();
          session_.set(&ExportState::availableBytes, available);
          session_.set(&ExportState::keptBytes, kept);
        } catch (const std::exception&) {
          session_.set(&ExportState::availableBytes, std::nullopt);
        }
      });
}
