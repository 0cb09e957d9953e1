#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Export/Exporter.h"

// What an export that changed something, and of which nothing may be missing, leaves behind: what was asked, the state
// of the backup before it was read, the state in which the destination was left, and what the export told. As long as
// all of these are the same, the same export has nothing to do, and need not read the backup to know that.
class ExportReceipt {
 public:
  // Looks at the backup's index, which must not have been read yet, and at the destination. `job` and `exporter` must
  // outlive it. Throws TidewellError::cancelled; what cannot be looked at only makes a receipt that is never used.
  ExportReceipt(const Exporter& exporter, const ExportJob& job, const CancellationCheck& isCancelled);

  // What the export would come to; absent where it has anything to do, or where that is not known. Throws
  // TidewellError::ioFailure while another export writes there.
  std::optional<ExportSummary> summaryOfNothingNew() const;

  // Looks at the databases of the backup, which must not have been read yet.
  void noteDatabases(const ManifestStore& manifest);
  // Writes the receipt when the export changed the destination, which must be locked. Throws what writing reports.
  void write(const ExportSummary& summary, const CancellationCheck& isCancelled) const;

 private:
  std::optional<std::string> stateOfDatabases(const std::vector<std::string>& databases) const;

  const ExportJob& job_;
  std::filesystem::path contentRoot_;
  std::string asked_;                       // a digest, as all of the following
  std::optional<std::string> ofIndex_;      // absent while it may still change unseen
  std::optional<std::string> destination_;  // as it was found; absent where it cannot be vouched for
  std::vector<std::string> databases_;      // their files in the backup
  std::optional<std::string> ofDatabases_;
};
