#include "TidewellCore/Export/MediaLinks.h"

#include "TidewellCore/Platform/PathText.h"

MediaLinks::MediaLinks(const ExportPlan& plan) : index_(plan.index) {
  for (const ExportPlanner::PlannedCopy& copy : plan.copies) copies_.emplace(copy.relativePath, &copy);
  for (const ExportPlanner::PlannedCopy& copy : plan.earlier) copies_.emplace(copy.relativePath, &copy);
}

std::optional<std::string> MediaLinks::relativePath(std::string_view mediaPath) const {
  const auto found = copies_.find(mediaPath);
  if (found == copies_.end()) return std::nullopt;
  const ExportPlanner::PlannedCopy& copy = *found->second;
  std::string path = PathText::text(copy.dest.parent_path().filename()) + "/" + copy.exportedName;
  return index_.contains(path) ? std::optional(std::move(path)) : std::nullopt;
}
