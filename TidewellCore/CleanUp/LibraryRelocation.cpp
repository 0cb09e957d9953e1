#include "TidewellCore/CleanUp/LibraryRelocation.h"

#include <fmt/format.h>

#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Library/MediaLedger.h"
#include "TidewellCore/Library/Renderings.h"

namespace {

namespace fs = std::filesystem;
using LibraryRelocation::NewPlace;

std::optional<ExportPlace> movedFrom(const ExportPlace& former, const NewPlace& newPlace) {
  const std::optional<std::string> place = newPlace(former.relativePath());
  const std::size_t slash = place ? place->find('/') : std::string::npos;
  if (slash == std::string::npos) return std::nullopt;
  return ExportPlace{.folder = place->substr(0, slash), .name = place->substr(slash + 1)};
}

void relocate(const SQLiteDB& library, const NewPlace& newPlace) {
  MediaLedger ledger(library);
  if (!ledger.relocate([&](const ExportPlace& former) { return movedFrom(former, newPlace); })) return;
  SQLiteTransaction transaction(library);
  ledger.save(library);
  Renderings::forget(library);  // the pages were led to the new places without it
  transaction.commit();
}

std::string warningOf(const char* state) {
  return fmt::format("This export’s library {} and was left as it is, so it does not know where the files are now.",
                     state);
}

}  // namespace

std::optional<std::string> LibraryRelocation::rewrite(const fs::path& contentRoot, const NewPlace& newPlace) {
  try {
    if (const auto library = LibraryFile::openIfThere(contentRoot)) relocate(library->database(), newPlace);
    return std::nullopt;
  } catch (const SQLiteDamage&) {
    return warningOf("is damaged");
  } catch (const LaterLibrary&) {
    return warningOf("was written by a newer version of this program");
  }
}
