#include "TidewellCore/Export/MediaLinks.h"

MediaLinks::MediaLinks(const ExportPlan& plan, const std::vector<MediaResult>& results) {
  for (std::size_t number = 0; number < results.size(); ++number) {
    const MediaResult& result = results[number];
    if (!result.hasFailed()) places_.emplace(plan.copies[number].relativePath, &result.place);
  }
  for (const ExportPlanner::PlannedCopy& copy : plan.earlier) places_.emplace(copy.relativePath, &copy.dest);
}

std::optional<std::string> MediaLinks::relativePath(std::string_view mediaPath) const {
  const auto found = places_.find(mediaPath);
  return found == places_.end() ? std::nullopt : std::optional(found->second->relativePath());
}
