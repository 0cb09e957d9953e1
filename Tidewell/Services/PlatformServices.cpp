#include "Tidewell/Services/PlatformServices.h"

#include "Tidewell/Services/BackupPasswordStore.h"

PasswordStore PasswordStore::system() {
  return {.load = BackupPasswordStore::load,
          .save = BackupPasswordStore::save,
          .remove = BackupPasswordStore::remove,
          .isAvailable = BackupPasswordStore::isAvailable};
}

PasswordStore PasswordStore::none() {
  return {.load = [](const std::string&, const PasswordAnswer&) { return std::nullopt; },
          .save = [](const SecretBytes&, const std::string&) {},
          .remove = [](const std::string&) {},
          .isAvailable = [] { return false; }};
}

FolderPermissions FolderPermissions::none() {
  return {.makeBookmark = [](const std::filesystem::path&) { return std::nullopt; },
          .resolveBookmark = [](const Bytes&) { return std::nullopt; },
          .startAccess = [](const std::filesystem::path&) { return false; },
          .stopAccess = [](const std::filesystem::path&) {}};
}
