#include "TidewellCore/ChatData/BackupSource.h"

#include <algorithm>
#include <iterator>

#include "TidewellCore/ChatData/SnapshotLoader.h"

void BackupSource::forget() {
  manifest = {};
  snapshot = ChatStorageSnapshot();
}

BackupSource BackupSource::load(OpenedBackup opened, const CancellationCheck& isCancelled,
                                const std::function<void(const ManifestStore&)>& require) {
  ManifestStore manifest =
      ManifestStore::load(opened.url(), opened.manifestDatabaseURL(), opened.usesTemporaryManifest(), isCancelled);
  opened.dropTemporaryManifest();
  if (require) require(manifest);
  SnapshotLoader::Loaded chats = SnapshotLoader::load(opened, manifest, isCancelled);
  std::vector<std::string> warnings = opened.warnings();
  // What the end of the index tells, its pages may tell as well.
  std::ranges::copy_if(manifest.warnings, std::back_inserter(warnings), [&](const std::string& warning) {
    return std::ranges::find(warnings, warning) == warnings.end();
  });
  std::ranges::move(chats.warnings, std::back_inserter(warnings));
  return {.opened = std::move(opened),
          .manifest = std::move(manifest),
          .snapshot = std::move(chats.snapshot),
          .warnings = std::move(warnings)};
}
