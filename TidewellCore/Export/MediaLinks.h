#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TidewellCore/Export/ExportPlan.h"
#include "TidewellCore/Export/MediaResult.h"

// Where in the export the media of the backup stand, told after the copying.
class MediaLinks {
 public:
  // `results` are of the plan's copies. Both must outlive it.
  MediaLinks(const ExportPlan& plan, const std::vector<MediaResult>& results);

  // The place of a medium from the content root, "folder/file"; absent when no
  // file stands there.
  std::optional<std::string> relativePath(std::string_view mediaPath) const;

 private:
  // Of those that stand in the export, by their path in the backup.
  std::unordered_map<std::string_view, const ExportPlace*> places_;
};
