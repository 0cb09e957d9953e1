#include "TidewellCore/Export/ExportDestination.h"

#include <vector>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

std::optional<std::filesystem::path> ExportDestination::resolvedDefault(const std::optional<std::string>& lastPath,
                                                                        const std::filesystem::path& home) {
  if (lastPath && Files::isFolder(PathText::path(*lastPath))) return PathText::path(*lastPath);
  if (Files::isFolder(home / "Desktop")) return home / "Desktop";
  if (Files::isFolder(home)) return home;
  return std::nullopt;
}
