#include "Tests/Torture/Destination.h"

#include <algorithm>

#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/Platform/Json.h"

namespace Torture {

namespace fs = std::filesystem;

std::vector<SeenFile> Destination::look(const fs::path& root) {
  std::vector<SeenFile> files;
  if (!fs::exists(root)) return files;
  for (auto entry = fs::recursive_directory_iterator(root); entry != fs::recursive_directory_iterator(); ++entry) {
    const fs::file_type type = entry->symlink_status().type();
    if (entry->path().filename().string().starts_with('.')) {
      if (type == fs::file_type::directory) entry.disable_recursion_pending();
      continue;
    }
    if (type != fs::file_type::regular) continue;
    const Fixture::Bytes content = Fixture::readFile(entry->path());
    files.push_back({entry->path().lexically_relative(root).generic_string(), Fixture::sha1Hex(content), content.size(),
                     entry->last_write_time()});
  }
  std::ranges::sort(files, {}, &SeenFile::path);
  return files;
}

std::set<std::string> Destination::contents(const std::vector<SeenFile>& files) {
  std::set<std::string> contents;
  for (const SeenFile& file : files) contents.insert(file.sha1);
  return contents;
}

bool Destination::isPage(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  if (name == "index.html" || name == "_transcript.txt" || name == "_transcript.html") return true;
  if (path.find("_viewer") == std::string::npos) return false;
  return name.ends_with(".js") || name.ends_with(".css") || name.ends_with(".json");
}

std::map<std::string, std::string> Destination::folders(const fs::path& root) {
  const fs::path file = root / "messages/.tidewell-manifest.json";
  std::map<std::string, std::string> folders;
  if (!fs::exists(file)) return folders;
  const auto document = Json::parse(textOf(file));
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  if (object == nullptr || !object->contains("folders")) return folders;
  for (const auto& [jid, folder] : *object->at("folders").as<Json::Object>()) {
    folders.emplace(jid, *folder.as<std::string>());
  }
  return folders;
}

std::string Destination::textOf(const fs::path& file) {
  if (!fs::is_regular_file(fs::symlink_status(file))) return {};
  const Fixture::Bytes bytes = Fixture::readFile(file);
  return {bytes.begin(), bytes.end()};
}

std::string Destination::blocks(const fs::path& root) {
  std::string text;
  const fs::path data = root / "messages/_viewer/data";
  if (!fs::is_directory(data)) return text;
  for (const auto& entry : fs::directory_iterator(data)) {
    if (entry.path().filename().string().starts_with("block-")) text += textOf(entry.path());
  }
  return text;
}

std::size_t Destination::count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace Torture
