#include "Tests/Torture/DestinationDamage.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"

namespace Torture {
namespace {

namespace fs = std::filesystem;
using DestinationDamage::Scene;
using Fixture::SeededRandom;

std::vector<fs::path> chatFolders(const Scene& scene) {
  std::vector<fs::path> folders;
  for (const auto& [jid, name] : Destination::folders(scene.destination)) {
    const fs::path folder = scene.destination / "messages" / name;
    if (fs::is_directory(fs::symlink_status(folder))) folders.push_back(folder);
  }
  return folders;
}

std::string removeFile(const Scene& scene, Judge&, SeededRandom& random) {
  const std::vector<SeenFile> files = Destination::look(scene.destination);
  if (files.empty()) return "nothing to remove";
  const std::string& path = random.pick(files).path;
  fs::remove(scene.destination / path);
  return "removed " + path;
}

// As a power cut does.
std::string emptyFile(const Scene& scene, Judge& judge, SeededRandom& random) {
  const std::vector<SeenFile> files = Destination::look(scene.destination);
  if (files.empty()) return "nothing to empty";
  const std::string& path = random.pick(files).path;
  fs::resize_file(scene.destination / path, 0);
  judge.addEmptied(path);
  return "emptied " + path;
}

// A new name that says nothing, or the chat's number, as exports of unknown people have it.
fs::path newName(const fs::path& folder, const Scene& scene, SeededRandom& random) {
  if (random.chance(50)) return folder.parent_path() / ("Moved " + std::to_string(random.below(1000)));
  for (const auto& [jid, name] : Destination::folders(scene.destination)) {
    if (folder.filename() == name) return folder.parent_path() / jid;
  }
  return folder.parent_path() / "Moved";
}

std::string renameFolder(const Scene& scene, Judge& judge, SeededRandom& random) {
  const std::vector<fs::path> folders = chatFolders(scene);
  if (folders.empty()) return "no folder to rename";
  const fs::path& folder = random.pick(folders);
  const fs::path name = newName(folder, scene, random);
  if (fs::exists(fs::symlink_status(name))) return "a name that is taken";
  fs::rename(folder, name);
  judge.addRenamed(folder.filename().string(), name.filename().string());
  // What was emptied in it still is.
  for (const SeenFile& file : Destination::look(scene.destination)) {
    if (file.size == 0) judge.addEmptied(file.path);
  }
  return "renamed " + folder.filename().string() + " to " + name.filename().string();
}

std::string copyFolder(const Scene& scene, Judge& judge, SeededRandom& random) {
  const std::vector<fs::path> folders = chatFolders(scene);
  if (folders.empty()) return "no folder to copy";
  const fs::path& folder = random.pick(folders);
  const fs::path name = newName(folder, scene, random);
  if (fs::exists(fs::symlink_status(name))) return "a name that is taken";
  fs::copy(folder, name, fs::copy_options::recursive | fs::copy_options::skip_symlinks);
  judge.addCopied(folder.filename().string(), name.filename().string());
  for (const SeenFile& file : Destination::look(scene.destination)) {
    if (file.size == 0) judge.addEmptied(file.path);
  }
  return "copied " + folder.filename().string() + " to " + name.filename().string();
}

std::string removeMemories(const Scene& scene, Judge& judge, SeededRandom& random) {
  const bool both = random.chance(50);
  const bool isNames = random.chance(50);
  if (both || isNames) {
    fs::remove(scene.destination / "messages/.tidewell-names.json");
    judge.allowRepeats();  // in another zone names are others
  }
  if (both || !isNames) fs::remove(scene.destination / "messages/.tidewell-manifest.json");
  return both ? "removed both memories" : isNames ? "removed the memory of names" : "removed the folder manifest";
}

std::string addForeign(const Scene& scene, Judge& judge, SeededRandom& random) {
  static const std::array names =
      std::to_array<std::string>({"notes.txt", "Ana", "Pizza-", "undated_k1_.jpg", "2023-03-08_202640_k1_Ana.jpg",
                                  "_viewer-2", "data.json", "k1_.jpg"});
  const fs::path content = scene.destination / "messages";
  std::vector<fs::path> places = chatFolders(scene);
  places.push_back(scene.destination);
  if (fs::is_directory(fs::symlink_status(content))) places.push_back(content);
  const fs::path place = random.pick(places) / random.pick(names);
  if (fs::exists(fs::symlink_status(place))) return "a foreign file's name that is taken";
  const Fixture::Bytes bytes = random.bytes(1 + random.below(5000));
  Fixture::writeFile(place, bytes);
  judge.addForeign(Fixture::sha1Hex(bytes));
  return "put in " + place.lexically_relative(scene.destination).string();
}

// In the place of a folder or a file, which is moved away.
std::string plantLink(const Scene& scene, Judge& judge, SeededRandom& random) {
  std::vector<fs::path> places = chatFolders(scene);
  for (const fs::path& folder : chatFolders(scene)) places.push_back(folder / "_transcript.txt");
  for (const char* name : {"_viewer", "_viewer/data", "avatars", "_viewer/app.js", ".tidewell-manifest.json"}) {
    places.push_back(scene.destination / "messages" / name);
  }
  places.push_back(scene.destination / "index.html");
  const fs::path& place = random.pick(places);
  if (!fs::exists(fs::symlink_status(place)) || fs::is_symlink(place)) return "nothing to put a link in the place of";
  const fs::path aside = scene.destination / ("moved away " + std::to_string(random.below(100000)));
  const bool isFolder = fs::is_directory(place);
  fs::rename(place, aside);
  if (!isFolder) fs::remove(aside);
  judge.addRenamed(place.filename().string(), aside.filename().string());
  for (const SeenFile& file : Destination::look(scene.destination)) {
    if (file.size == 0) judge.addEmptied(file.path);
    if (!Destination::isPage(file.path)) judge.addForeign(file.sha1);
  }
  std::error_code failure;
  fs::create_symlink(isFolder ? scene.elsewhere : scene.elsewhere / "secret", place, failure);
  return (failure ? "moved away " : "planted a link at ") + place.lexically_relative(scene.destination).string();
}

using Kind = std::string (*)(const Scene&, Judge&, SeededRandom&);
constexpr std::array<Kind, 7> kinds{removeFile,     emptyFile,  renameFolder, copyFolder,
                                    removeMemories, addForeign, plantLink};

}  // namespace

std::string DestinationDamage::make(const Scene& scene, Judge& judge, SeededRandom& random) {
  return random.pick(kinds)(scene, judge, random);
}

}  // namespace Torture
