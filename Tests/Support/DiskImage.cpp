#include "Tests/Support/DiskImage.h"

#include <sys/mount.h>

#include <cstdlib>

#include "Tests/Support/TemporaryDirectory.h"

namespace Fixture {

namespace {

namespace fs = std::filesystem;

// The paths are the tests' own, without anything that a shell would read.
bool succeeds(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

}  // namespace

DiskImage::DiskImage(const fs::path& folder, std::int64_t byteCount)
    : image_(folder / "image"), root_(folder / "disk") {
  writeFile(image_, "");
  fs::resize_file(image_, static_cast<std::uintmax_t>(byteCount));
  if (succeeds("PATH=$PATH:/usr/sbin:/sbin mkfs.ext4 -q -F " + image_.string())) mount();
}

DiskImage::DiskImage(const fs::path& folder, const fs::path& image) : image_(image), root_(folder / "disk") { mount(); }

DiskImage::~DiskImage() {
  if (isMounted_) ::umount2(root_.c_str(), MNT_DETACH);
}

void DiskImage::mount() {
  fs::create_directories(root_);
  // Every second it writes down what has become of names, whatever has become of bytes.
  isMounted_ = succeeds("mount -o loop,commit=1 " + image_.string() + " " + root_.string());
}

}  // namespace Fixture
