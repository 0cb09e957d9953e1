#include "TidewellCore/Destination/FolderManifest.h"

#include <optional>
#include <vector>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/JsonFile.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 64 << 20;
constexpr std::int64_t version = 1;

// Absent unless every value is text.
std::optional<FolderAssignment> assignment(const Json::Object& object) {
  FolderAssignment folders;
  for (const auto& [jid, value] : object) {
    const auto* folder = value.as<std::string>();
    if (folder == nullptr) return std::nullopt;
    if (!jid.empty() && FileNaming::isSafeComponent(*folder)) folders.emplace(jid, *folder);
  }
  return folders;
}

std::optional<FolderAssignment> read(const fs::path& file) {
  const std::optional<Json::Object> document = JsonFile::readIfThere(file, largestFile);
  if (!document) return std::nullopt;
  if (const auto* folders = JSONMembers::member<Json::Object>(*document, "folders")) {
    if (auto map = assignment(*folders)) return map;
  }
  // The older form is the map itself.
  return document->contains("version") ? std::nullopt : assignment(*document);
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
  const std::string text = JsonFile::content({{"folders", std::move(map)}, {"version", version}});
  Files::writeWhenDifferent(contentRoot / fileName, text);
  const fs::path viewer = contentRoot / FolderNames::viewer;
  if (Files::kindOf(viewer) == Files::Kind::folder) Files::writeWhenDifferent(viewer / viewerFileName, text);
}
