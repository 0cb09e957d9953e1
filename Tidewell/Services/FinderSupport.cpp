#include "Tidewell/Services/FinderSupport.h"

#include <algorithm>
#include <string>

void FinderSupport::openFirstPane(const Workspace& workspace) {
  if (!workspace.openURL) return;
  std::ranges::any_of(fullDiskAccessPanes, [&](std::string_view pane) { return workspace.openURL(std::string(pane)); });
}

void FinderSupport::openFullDiskAccessSettings([[maybe_unused]] const Workspace& workspace) {
  if constexpr (hasFullDiskAccessSettings) openFirstPane(workspace);
}
