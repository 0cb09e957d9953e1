#pragma once

#include <filesystem>
#include <memory>
#include <string>

// A folder whose content others may have made: a backup, or a destination. While
// one lives, whatever Files and FileDescriptor do below it starts at the opened
// folder and follows no link, so that a link planted there leads nowhere. The
// links above the folder, and it itself, are the user's and are followed once.
//
// A path counts as below when it begins with the folder's path, as it was given
// or made absolute, and goes on without "..". For any thread.
class RootFolder {
 public:
  // Throws std::filesystem::filesystem_error when the folder cannot be opened.
  explicit RootFolder(const std::filesystem::path& folder);
  ~RootFolder();
  RootFolder(RootFolder&&) noexcept = default;
  RootFolder& operator=(RootFolder&& other) noexcept;

 private:
  struct Opened;
  friend class Place;

  std::shared_ptr<const Opened> opened_;
};

// Where a path leads, as the system's *at calls take it: an open folder and a
// name in it. A path below no root is taken whole, and its links are followed.
class Place {
 public:
  explicit Place(const std::filesystem::path& path);
  ~Place();
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;

  // Returns what `call(folder, name)` does; -1, and errno tells why, when the
  // path's folder cannot be opened. The call must not follow a link itself.
  template <typename Call>
  int with(Call call) const {
    return isOpen() ? call(folder_, name_.c_str()) : -1;
  }
  // The same for another name in the path's folder: no path, and neither "." nor "..".
  template <typename Call>
  int withNeighbour(const char* name, Call call) const {
    return isOpen() ? call(folder_, name) : -1;
  }
  bool isBelowRoot() const { return root_ != nullptr; }

 private:
  // Sets errno when it is not.
  bool isOpen() const;
  void openFolder(const std::string& below);

  std::shared_ptr<const RootFolder::Opened> root_;
  std::string name_;
  int folder_ = -1;
  bool ownsFolder_ = false;
  int error_ = 0;
};
