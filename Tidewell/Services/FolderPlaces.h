#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Where a folder chooser takes people at once.
struct FolderPlace {
  enum class Kind { home, desktop, documents, computer, drive };

  Kind kind = Kind::home;
  std::filesystem::path folder;
  std::string label;  // of a drive, or the name of its folder; else empty

  bool operator==(const FolderPlace&) const = default;
};

// A file system as the operating system tells of it.
struct Volume {
  std::filesystem::path root;
  std::string device;
  std::string label;  // empty without one

  bool operator==(const Volume&) const = default;
};

namespace FolderPlaces {

// The user's own, then the computer and its drives. Takes as long as the slowest volume.
std::vector<FolderPlace> all(const std::filesystem::path& home);

// The part of them that the volumes give: one for each real device, those that hold the running system's
// own parts left out.
std::vector<FolderPlace> drives(const std::vector<Volume>& volumes);

}  // namespace FolderPlaces
