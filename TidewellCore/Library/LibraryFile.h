#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TidewellCore/Platform/SQLiteDB.h"

// TidewellError::ioFailure of a library that a later version of this program wrote.
class LaterLibrary : public TidewellError {
  using TidewellError::TidewellError;
};

// The one file in which an export keeps all that its backups ever told
// (docs/formats/library.md). Whoever opens it holds the destination's lock.
class LibraryFile {
 public:
  static constexpr const char* fileName = ".tidewell-archive.sqlite";  // in the content root
  static constexpr const char* journalName = ".tidewell-archive.sqlite-journal";

  // Makes it where it is missing, and one of an earlier version this version's. Throws SQLiteDamage for one that is
  // damaged, contradicts itself (LibraryCheck) or is another program's, LaterLibrary for one that a later version of
  // this program wrote, and what cannot be read or written.
  static LibraryFile open(const std::filesystem::path& contentRoot);
  // As `open`, but makes none: absent where nothing was kept yet.
  static std::optional<LibraryFile> openIfThere(const std::filesystem::path& contentRoot);
  // Opens it, of whatever earlier version, to be read alone and changes nothing, not looking for damage. Throws
  // TidewellError where there is none, for one that is not ours or a later version's, and for one beside which a
  // journal stands; and what the file system reports.
  static SQLiteDB look(const std::filesystem::path& contentRoot);
  // What to do about one that will not do: a sentence for people, in English.
  static std::string adviceForDamaged();
  // Gives one that will not do another name, with its journal.
  static void setAside(const std::filesystem::path& contentRoot);
  // Whether one was set aside, be it by a run that was broken off then.
  static bool wasSetAside(const std::filesystem::path& contentRoot);

  const SQLiteDB& database() const { return database_; }

 private:
  explicit LibraryFile(SQLiteDB database) : database_(std::move(database)) {}

  SQLiteDB database_;
};
