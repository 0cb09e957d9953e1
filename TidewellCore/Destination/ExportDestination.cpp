#include "TidewellCore/Destination/ExportDestination.h"

#include <vector>

#include "TidewellCore/Destination/ExportLayout.h"
#include "TidewellCore/Destination/NamingMemory.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

// Where a library is, though somebody deleted the mark. A mark alone does not tell: older exports had it in the
// destination itself, whatever that is called. They had their page there too, and no memory of their names.
bool isContentRoot(const fs::path& folder) {
  if (Text::lowercased(PathText::text(folder.filename())) != FolderNames::content) return false;
  if (Files::isRegularFile(folder / LibraryFile::fileName)) return true;
  if (!ExportLayout::isMarked(folder) || Files::isRegularFile(folder / FolderNames::archivePage)) return false;
  return Files::isRegularFile(folder.parent_path() / FolderNames::archivePage) ||
         Files::isRegularFile(folder / NamingMemory::fileName);
}

}  // namespace

std::optional<std::filesystem::path> ExportDestination::resolvedDefault(const std::optional<std::string>& lastPath,
                                                                        const std::filesystem::path& home) {
  if (lastPath && Files::isFolder(PathText::path(*lastPath))) return PathText::path(*lastPath);
  if (Files::isFolder(home / "Desktop")) return home / "Desktop";
  if (Files::isFolder(home)) return home;
  return std::nullopt;
}

fs::path ExportDestination::meant(const fs::path& folder) {
  std::error_code error;
  fs::path whole = fs::absolute(folder, error).lexically_normal();
  if (error) return folder;
  if (!whole.has_filename()) whole = whole.parent_path();  // "folder/" and "folder" are one place
  if (isContentRoot(whole)) return whole.parent_path();
  const fs::path target = fs::canonical(whole, error);
  return !error && target != whole && isContentRoot(target) ? target.parent_path() : folder;
}
