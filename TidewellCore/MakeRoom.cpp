#include "TidewellCore/MakeRoom.h"

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/UsedNames.h"

namespace fs = std::filesystem;

void MakeRoom::at(const fs::path& path) {
  if (Files::kindOf(path) == Files::Kind::nothing) return;
  const std::string name = PathText::text(path.filename());
  UsedNames used;
  used.take(name);
  used.uniquifyUntil(name, [&](const std::string& free) {
    return Files::renameToFree(path, path.parent_path() / PathText::path(free));
  });
}

bool MakeRoom::wasMadeAt(const fs::path& path) {
  const std::string first = FileNaming::variant(PathText::text(path.filename()), 2);
  return Files::kindOf(path.parent_path() / PathText::path(first)) != Files::Kind::nothing;
}

void MakeRoom::forFolder(const fs::path& path) {
  const Files::Kind kind = Files::kindOf(path);
  const bool isFolder = kind == Files::Kind::folder || (kind == Files::Kind::link && Files::isFolder(path));
  if (isFolder) return;
  // What was not there a moment ago may be a folder by now, which is not to be moved away.
  if (kind != Files::Kind::nothing) at(path);
  Files::makeFolder(path);
}

bool MakeRoom::write(const fs::path& path, std::string_view content) {
  try {
    return Files::writeWhenDifferent(path, content);
  } catch (const fs::filesystem_error&) {
    if (Files::kindOf(path) != Files::Kind::folder) throw;
  }
  at(path);
  return Files::writeWhenDifferent(path, content);
}
