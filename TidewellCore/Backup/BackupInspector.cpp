#include "TidewellCore/Backup/BackupInspector.h"

#include <string>
#include <vector>

#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/PlistSupport.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> nestedBackupFolderNames(const fs::path& folder) {
  std::vector<std::string> names;
  for (const Files::Entry& entry : Files::listVisible(folder)) {
    if (entry.isFolder && Files::exists(folder / entry.name / "Manifest.plist")) names.push_back(entry.name);
  }
  return names;
}

[[noreturn]] void failWithoutManifest(const fs::path& folder) {
  std::vector<std::string> nested = nestedBackupFolderNames(folder);
  if (nested.size() < 2) throw TidewellError::notABackup(PathText::text(folder));
  throw TidewellError::multipleDeviceBackups(std::move(nested));
}

void readDeviceDetails(const PropertyListDictionary& plist, BackupInfo& info) {
  info.deviceName = PlistSupport::string(entry(plist, "Device Name"));
  if (!info.deviceName) info.deviceName = PlistSupport::string(entry(plist, "Display Name"));
  info.productType = PlistSupport::string(entry(plist, "Product Type"));
  info.iosVersion = PlistSupport::string(entry(plist, "Product Version"));
  info.backupDate = PlistSupport::date(entry(plist, "Last Backup Date"));
  info.uniqueIdentifier = PlistSupport::string(entry(plist, "Unique Identifier"));
}

// A damaged or missing Status.plist only costs the date.
std::optional<Date> statusDate(const fs::path& file) {
  try {
    return PlistSupport::date(entry(PlistSupport::dictionary(file), "Date"));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

BackupInfo BackupInspector::inspect(const fs::path& backup) {
  if (!Files::isThere(backup)) throw TidewellError::backupNotFound(PathText::text(backup));
  if (!Files::isFolder(backup)) throw TidewellError::notABackup(PathText::text(backup));
  if (!Files::isThere(backup / "Manifest.plist")) failWithoutManifest(backup);

  BackupInfo info{.url = backup};
  const PropertyListDictionary manifest = PlistSupport::dictionary(backup / "Manifest.plist");
  info.isEncrypted = PlistSupport::boolean(entry(manifest, "IsEncrypted"));
  if (Files::isThere(backup / "Info.plist")) readDeviceDetails(PlistSupport::dictionary(backup / "Info.plist"), info);
  if (!info.backupDate) info.backupDate = statusDate(backup / "Status.plist");
  if (!info.isEncrypted && !Files::isThere(backup / "Manifest.db"))
    throw TidewellError::notABackup(PathText::text(backup));
  return info;
}
