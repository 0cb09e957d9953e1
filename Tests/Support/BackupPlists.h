#pragma once

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/PlistWriter.h"

// The device folder's three property lists; the keys of an encrypted backup are added by its writer.
namespace Fixture {

PlistDictionary infoPlist(const BackupContents& contents);
PlistDictionary manifestPlist(const BackupContents& contents);
PlistDictionary statusPlist(const BackupContents& contents);

}  // namespace Fixture
