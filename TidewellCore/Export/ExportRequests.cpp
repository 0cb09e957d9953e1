#include "TidewellCore/Export/ExportRequests.h"

#include <algorithm>
#include <unordered_set>

#include "TidewellCore/Export/NamedWarning.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

constexpr std::int64_t unknownSize = -1;

bool isShort(const std::optional<std::int64_t>& provenSize, const ManifestFile& file) {
  return provenSize && *provenSize < file.plaintextSize.value_or(0);
}

}  // namespace

ExportRequests::Requests ExportRequests::build(const BackupSource& source, const Wish& wish, bool isLeftOutAskedFor,
                                               const CancellationCheck& isCancelled) {
  const auto& [opened, manifest, snapshot, warnings] = source;
  Requests requests;
  const auto sizes = opened.provenSizes(source.media(), isCancelled);
  CancellationPoint cancellation(isCancelled);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const ManifestFile& file = source.media()[i];
    cancellation.step();
    const MediaKind kind = MediaKind::classify(PathText::extension(file.relativePath));
    const CanonicalJID chat = snapshot.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath));
    const std::optional<Date> date = snapshot.mediaDate(file.relativePath);
    const bool isWanted = wish.kinds.contains(kind) && wish.scope.has(chat, date);
    if (!isWanted && !isLeftOutAskedFor) continue;
    auto& list = isWanted ? requests.wanted : requests.leftOut;
    list.push_back({.source = PathText::text(opened.location(file).value_or(std::filesystem::path())),
                    .relativePath = file.relativePath,
                    .chatJID = chat,
                    .kind = kind,
                    .sourceSize = sizes[i].value_or(unknownSize),
                    .date = date,
                    .encryptionKey = opened.keyOf(file),
                    .isShorterThanRecorded = isShort(sizes[i], file)});
  }
  return requests;
}

std::optional<std::string> ExportRequests::warningOfShortFiles(const std::vector<ExportPlanner::Request>& requests,
                                                               const ExportPlanner::Naming& naming,
                                                               std::span<const ManifestFile> pictures,
                                                               const OpenedBackup& opened) {
  std::vector<std::string> names;
  for (const ExportPlanner::Request& request : requests) {
    if (request.isShorterThanRecorded) names.push_back(naming(request));
  }
  for (const ManifestFile& picture : pictures) {
    if (isShort(opened.provenSize(picture), picture)) names.emplace_back(PathText::lastComponent(picture.relativePath));
  }
  return NamedWarning::of(
      names,
      "shorter in the backup than the iPhone recorded, and may have lost the end. Such files are exported as they are. "
      "Copy the backup again from where it came, or make a new one with the iPhone.");
}

std::vector<ExportPlanner::Request> ExportRequests::lost(
    const ChatStorageSnapshot& snapshot, const std::vector<const std::vector<ExportPlanner::Request>*>& found) {
  std::unordered_set<std::string_view> whole;
  whole.reserve(found.empty() ? 0 : found.front()->size());
  for (const auto* requests : found) {
    for (const ExportPlanner::Request& request : *requests) {
      if (request.sourceSize >= 0) whole.insert(request.relativePath);
    }
  }
  std::vector<ExportPlanner::Request> lost;
  for (const std::string_view path : snapshot.mediaPaths()) {
    if (whole.contains(path)) continue;
    const std::optional<Date> date = snapshot.mediaDate(path);
    lost.push_back({.relativePath = std::string(path),
                    .chatJID = snapshot.ownerJID(path, FileNaming::chatJID(path)),
                    .kind = MediaKind::classify(PathText::extension(path)),
                    .sourceSize = unknownSize,
                    .date = date});
  }
  std::ranges::sort(lost, {}, &ExportPlanner::Request::relativePath);
  return lost;
}
