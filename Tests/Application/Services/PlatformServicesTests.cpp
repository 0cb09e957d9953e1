#include "Tidewell/Services/PlatformServices.h"

#include <gtest/gtest.h>

namespace {

TEST(PlatformServices, ASystemWithoutPermissionsGivesNoBookmarks) {
  const FolderPermissions none = FolderPermissions::none();
  EXPECT_EQ(none.makeBookmark("/backups"), std::nullopt);
  EXPECT_EQ(none.resolveBookmark({1, 2, 3}), std::nullopt);
  EXPECT_FALSE(none.startAccess("/backups"));
  EXPECT_NO_THROW(none.stopAccess("/backups"));
}

TEST(PlatformServices, NoPasswordStoreKeepsNothing) {
  const PasswordStore none = PasswordStore::none();
  none.save({'s', 'e', 'c', 'r', 'e', 't'}, "phone");
  EXPECT_EQ(none.load("phone", {}), std::nullopt);
  EXPECT_NO_THROW(none.remove("phone"));
}

TEST(PlatformServices, LooksWhereBackupsAreKept) {
  const PlatformServices services;
  EXPECT_EQ(services.backupRoot, DefaultPaths::mobileSyncBackup());
  EXPECT_EQ(services.home, DefaultPaths::home());
}

}  // namespace
