#include "TidewellCore/Destination/FolderManifest.h"

#include <optional>
#include <vector>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/Json.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 64 << 20;
constexpr std::int64_t version = 1;

// Absent unless every value is text.
std::optional<FolderAssignment> assignment(const Json& json) {
  const auto* object = json.as<Json::Object>();
  if (object == nullptr) return std::nullopt;
  FolderAssignment folders;
  for (const auto& [jid, value] : *object) {
    const auto* folder = value.as<std::string>();
    if (folder == nullptr) return std::nullopt;
    if (!jid.empty() && FileNaming::isSafeComponent(*folder)) folders.emplace(jid, *folder);
  }
  return folders;
}

std::optional<FolderAssignment> parsed(const std::string& text) {
  const std::optional<Json> document = Json::parse(text);
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  if (object == nullptr) return std::nullopt;
  if (const auto folders = object->find("folders"); folders != object->end()) {
    if (auto map = assignment(folders->second)) return map;
  }
  // The older form is the map itself.
  return object->contains("version") ? std::nullopt : assignment(*document);
}

std::optional<FolderAssignment> read(const fs::path& file) {
  const std::optional<Bytes> content = Files::readIfThere(file, largestFile);
  return content ? parsed(std::string(textOf(*content))) : std::nullopt;
}

// A link in the viewer's place is none of an export's making.
void appendBoth(const fs::path& folder, std::vector<fs::path>& files) {
  files.push_back(folder / FolderManifest::fileName);
  const fs::path viewer = folder / FolderNames::viewer;
  if (Files::kindOf(viewer) == Files::Kind::folder) files.push_back(viewer / FolderManifest::viewerFileName);
}

std::vector<fs::path> candidates(const fs::path& destination) {
  std::vector<fs::path> files;
  appendBoth(destination, files);
  appendBoth(destination / FolderNames::content, files);
  if (Text::lowercased(PathText::text(destination.filename())) == FolderNames::content) {
    appendBoth(destination.parent_path(), files);
  }
  return files;
}

}  // namespace

FolderAssignment FolderManifest::load(const fs::path& destination) {
  std::error_code ignored;
  fs::path root = fs::absolute(destination, ignored).lexically_normal();
  if (!root.has_filename()) root = root.parent_path();  // "folder/" and "folder" are one place
  for (const fs::path& file : candidates(root)) {
    if (auto folders = read(file)) return *folders;
  }
  return {};
}

void FolderManifest::save(const fs::path& contentRoot, const FolderAssignment& folders) {
  Json::Object map;
  for (const auto& [jid, folder] : folders) map.emplace(jid, folder);
  const std::string text = Json(Json::Object{{"folders", std::move(map)}, {"version", version}}).write(true) + "\n";
  Files::writeWhenDifferent(contentRoot / fileName, text);
  const fs::path viewer = contentRoot / FolderNames::viewer;
  if (Files::kindOf(viewer) == Files::Kind::folder) Files::writeWhenDifferent(viewer / viewerFileName, text);
}
