#include "Tidewell/Services/FolderPlaces.h"

#include <QStandardPaths>
#include <QStorageInfo>
#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "Tidewell/Services/PathURL.h"

namespace fs = std::filesystem;

namespace {

bool isWithin(const fs::path& folder, const fs::path& parent) {
  return std::ranges::mismatch(parent, folder).in1 == parent.end();
}

bool isRealDevice(const std::string& device) { return device.starts_with("/dev/") && !device.starts_with("/dev/loop"); }

bool isOfTheSystem(const fs::path& root) {
  constexpr std::array<std::string_view, 11> parts{"/boot", "/efi", "/etc", "/home", "/nix",           "/root",
                                                   "/snap", "/tmp", "/usr", "/var",  "/System/Volumes"};
  return std::ranges::any_of(parts, [&](std::string_view part) { return isWithin(root, part); });
}

std::vector<Volume> mountedVolumes() {
  std::vector<Volume> volumes;
  for (const QStorageInfo& mounted : QStorageInfo::mountedVolumes()) {
    const fs::path root = localPath(mounted.rootPath());
    std::error_code error;
    if (!mounted.isReady() || !fs::is_directory(root, error)) continue;
    volumes.push_back({.root = root, .device = mounted.device().toStdString(), .label = mounted.name().toStdString()});
  }
  return volumes;
}

std::vector<FolderPlace> ownPlaces(const fs::path& home) {
  using Kind = FolderPlace::Kind;
  std::vector<FolderPlace> places{{.kind = Kind::home, .folder = home}};
  const auto add = [&](Kind kind, QStandardPaths::StandardLocation location) {
    const fs::path folder = localPath(QStandardPaths::writableLocation(location));
    std::error_code error;
    // Where there is none, its path is the home folder's.
    if (folder != home && fs::is_directory(folder, error)) places.push_back({.kind = kind, .folder = folder});
  };
  add(Kind::desktop, QStandardPaths::DesktopLocation);
  add(Kind::documents, QStandardPaths::DocumentsLocation);
  return places;
}

}  // namespace

std::vector<FolderPlace> FolderPlaces::all(const fs::path& home) {
  std::vector<FolderPlace> places = ownPlaces(home);
  for (FolderPlace& drive : drives(mountedVolumes())) places.push_back(std::move(drive));
  return places;
}

std::vector<FolderPlace> FolderPlaces::drives(const std::vector<Volume>& volumes) {
  std::vector<FolderPlace> drives{{.kind = FolderPlace::Kind::computer, .folder = "/"}};
  std::set<std::string> devices;
  for (const Volume& volume : volumes) {
    if (volume.root == "/") devices.insert(volume.device);
  }
  for (const Volume& volume : volumes) {
    if (!isRealDevice(volume.device) || isOfTheSystem(volume.root) || !devices.insert(volume.device).second) continue;
    drives.push_back({.kind = FolderPlace::Kind::drive,
                      .folder = volume.root,
                      .label = volume.label.empty() ? volume.root.filename().string() : volume.label});
  }
  return drives;
}
