#include "Tests/Support/BackupPlists.h"

namespace Fixture {

namespace {

constexpr std::int64_t appleReferenceDate = 978'307'200;
constexpr const char* buildVersion = "21F90";
constexpr const char* serialNumber = "F2LXK3ABCD";

PlistDate backupDate(const BackupContents& contents) {
  return {static_cast<double>(contents.backupTime - appleReferenceDate)};
}

std::string bundleIdentifier(const WhatsAppContents& app) {
  return app.domain == businessDomain ? "net.whatsapp.WhatsAppSMB" : "net.whatsapp.WhatsApp";
}

PlistDictionary application(const std::string& identifier) {
  return {{"CFBundleIdentifier", identifier},
          {"CFBundleVersion", "24.10.79"},
          {"ContainerContentClass", "Data/Application"},
          {"Path", "/var/containers/Bundle/Application/5D8A1C55-3F0E-4E5E-9B58-6C36A5D0E2F1/App.app"}};
}

PlistDictionary lockdown(const BackupContents& contents) {
  return {{"BuildVersion", buildVersion},
          {"DeviceName", contents.deviceName},
          {"ProductType", contents.productType},
          {"ProductVersion", contents.iosVersion},
          {"SerialNumber", serialNumber},
          {"UniqueDeviceID", contents.uniqueIdentifier},
          {"com.apple.mobile.iTunes.accessories", PlistDictionary{}},
          {"com.apple.mobile.wireless_lockdown", PlistDictionary{}}};
}

}  // namespace

PlistDictionary infoPlist(const BackupContents& contents) {
  PlistArray installed = {bundleIdentifier(contents.whatsApp)};
  if (contents.businessApp) installed.emplace_back(bundleIdentifier(*contents.businessApp));
  return {{"Build Version", buildVersion},
          {"Device Name", contents.deviceName},
          {"Display Name", contents.deviceName},
          {"GUID", "8E6F1A9C0D7B4F25A3E1C64B9D20F7AA"},
          {"Installed Applications", std::move(installed)},
          {"Last Backup Date", backupDate(contents)},
          {"Product Name", "iPhone"},
          {"Product Type", contents.productType},
          {"Product Version", contents.iosVersion},
          {"Serial Number", serialNumber},
          {"Target Identifier", contents.uniqueIdentifier},
          {"Target Type", "Device"},
          {"Unique Identifier", contents.uniqueIdentifier},
          {"iTunes Files", PlistDictionary{{"IC-Info.sidv", Bytes(64, 0x17)}}},
          {"iTunes Settings", PlistDictionary{}},
          {"macOS Version", "14.5"}};
}

PlistDictionary manifestPlist(const BackupContents& contents) {
  const std::string identifier = bundleIdentifier(contents.whatsApp);
  PlistDictionary applications = {{identifier, application(identifier)}};
  if (contents.businessApp) {
    const std::string business = bundleIdentifier(*contents.businessApp);
    applications.emplace_back(business, application(business));
  }
  return {{"Version", "10.0"},
          {"Date", backupDate(contents)},
          {"SystemDomainsVersion", "24.0"},
          {"WasPasscodeSet", true},
          {"Lockdown", lockdown(contents)},
          {"Applications", std::move(applications)},
          {"IsEncrypted", contents.encryption.has_value()}};
}

PlistDictionary statusPlist(const BackupContents& contents) {
  return {{"BackupState", "new"},
          {"Date", backupDate(contents)},
          {"IsFullBackup", true},
          {"SnapshotState", "finished"},
          {"UUID", "0C4E2C57-1B5C-4E13-8B43-3F9E7D2B6A10"},
          {"Version", "3.3"}};
}

}  // namespace Fixture
