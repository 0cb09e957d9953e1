#include "TidewellCore/Export/MediaLinks.h"

#include "TidewellCore/Platform/PathText.h"

namespace {

std::string placeOf(const ExportPlanner::PlannedCopy& copy) {
  return PathText::text(copy.dest.parent_path().filename()) + "/" + copy.exportedName;
}

}  // namespace

MediaLinks::MediaLinks(const ExportPlan& plan) {
  for (const auto* copies : {&plan.copies, &plan.earlier}) {
    for (const ExportPlanner::PlannedCopy& copy : *copies) {
      if (!copy.hasFailed && plan.index.contains(placeOf(copy))) copies_.emplace(copy.relativePath, &copy);
    }
  }
}

std::optional<std::string> MediaLinks::relativePath(std::string_view mediaPath) const {
  const auto found = copies_.find(mediaPath);
  return found == copies_.end() ? std::nullopt : std::optional(placeOf(*found->second));
}
