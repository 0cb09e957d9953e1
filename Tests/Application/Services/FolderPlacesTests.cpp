#include "Tidewell/Services/FolderPlaces.h"

#include <gmock/gmock.h>

namespace {

using Kind = FolderPlace::Kind;
using testing::ElementsAre;

const FolderPlace computer{.kind = Kind::computer, .folder = "/"};

FolderPlace drive(const char* folder, const char* label) {
  return {.kind = Kind::drive, .folder = folder, .label = label};
}

TEST(FolderPlaces, AreTheComputerAndItsDrives) {
  EXPECT_THAT(FolderPlaces::drives({{.root = "/", .device = "/dev/sda2"},
                                    {.root = "/media/ana/STICK", .device = "/dev/sdb1", .label = "Stick"},
                                    {.root = "/mnt/photos", .device = "/dev/sdc1"}}),
              ElementsAre(computer, drive("/media/ana/STICK", "Stick"), drive("/mnt/photos", "photos")));
}

TEST(FolderPlaces, LeaveOutWhatIsNoDrive) {
  EXPECT_THAT(FolderPlaces::drives({{.root = "/proc", .device = "proc"},
                                    {.root = "/run", .device = "tmpfs"},
                                    {.root = "/snap/core/1", .device = "/dev/loop3"},
                                    {.root = "/boot/efi", .device = "/dev/sda1"},
                                    {.root = "/home", .device = "/dev/sda3"},
                                    {.root = "/", .device = "/dev/sda2"}}),
              ElementsAre(computer));
}

TEST(FolderPlaces, NameEachDriveOnce) {
  EXPECT_THAT(FolderPlaces::drives({{.root = "/mnt/again", .device = "/dev/sda2"},
                                    {.root = "/mnt/a", .device = "/dev/sdb1"},
                                    {.root = "/mnt/b", .device = "/dev/sdb1"},
                                    {.root = "/", .device = "/dev/sda2"}}),
              ElementsAre(computer, drive("/mnt/a", "a")));
}

TEST(FolderPlaces, BeginAtHome) {
  const std::vector<FolderPlace> places = FolderPlaces::all("/home/nobody at all");
  ASSERT_FALSE(places.empty());
  EXPECT_EQ(places.front(), (FolderPlace{.kind = Kind::home, .folder = "/home/nobody at all"}));
  EXPECT_THAT(places, testing::Contains(computer));
}

}  // namespace
