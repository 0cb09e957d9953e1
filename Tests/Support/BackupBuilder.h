#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/KeyBagBuilder.h"
#include "Tests/Support/PlistWriter.h"

namespace Fixture {

// What a test may want to know, or change and write again, of a backup that was just written.
struct WrittenBackup {
  std::filesystem::path folder;
  PlistDictionary info;
  PlistDictionary manifest;
  PlistDictionary status;
  // Of an encrypted backup.
  std::optional<KeyBag> keyBag;
  Bytes manifestKey;
  // Manifest.db before it was encrypted, without what stands in its -wal file.
  Bytes manifestDatabase;

  // Where the file lies when neither `fileID` nor `missing` was asked for.
  std::filesystem::path storedFile(std::string_view relativePath, std::string_view domain = consumerDomain) const;
};

// Makes `folder` a device folder as iOS leaves it: the three property lists, Manifest.db and every
// stored file. The same contents give the same bytes. Throws when something cannot be written.
WrittenBackup writeBackup(const BackupContents& contents, const std::filesystem::path& folder);

// The SHA-1 of domain, "-" and relative path, in lower-case hexadecimal digits.
std::string fileIDOf(std::string_view domain, std::string_view relativePath);

// The stored file's place: under the first two characters of its identifier.
std::filesystem::path storedPath(const std::filesystem::path& folder, const std::string& fileID);

}  // namespace Fixture
