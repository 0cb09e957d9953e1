#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "TidewellCore/Export/ExportPlan.h"

// Where in the export the media of the backup stand, told after the copying.
class MediaLinks {
 public:
  // `plan` must outlive it.
  explicit MediaLinks(const ExportPlan& plan);

  // The place of a medium from the content root, "folder/file"; absent when no
  // file stands there.
  std::optional<std::string> relativePath(std::string_view mediaPath) const;

 private:
  // Those that stand in the export, by their path in the backup.
  std::unordered_map<std::string_view, const ExportPlanner::PlannedCopy*> copies_;
};
