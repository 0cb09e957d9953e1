#include "Tidewell/Services/ResourceBundle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "TidewellCore/Platform/Files.h"

namespace {

#ifdef __APPLE__
constexpr const char* resourceFolder = "../Resources";
#else
constexpr const char* resourceFolder = "Resources";
#endif

[[noreturn]] void stop() {
  std::fputs("unable to find bundle named Tidewell_Tidewell\n", stderr);
  std::abort();
}

}  // namespace

std::vector<std::filesystem::path> ResourceBundle::searchFolders(const std::filesystem::path& executableFolder) {
  return {executableFolder / resourceFolder, executableFolder / "../share/tidewell", executableFolder};
}

std::filesystem::path ResourceBundle::find(const std::vector<std::filesystem::path>& folders) {
  const auto folder = std::ranges::find_if(folders, [](const auto& each) { return Files::isFolder(each / name); });
  if (folder == folders.end()) stop();
  return *folder / name;
}
