#include "TidewellCore/Export/ExportRequests.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

constexpr std::int64_t unknownSize = -1;

}  // namespace

std::vector<ExportPlanner::Request> ExportRequests::build(const ManifestStore& manifest,
                                                          const ChatStorageSnapshot& snapshot,
                                                          const OpenedBackup& opened, const Wish& wish,
                                                          const CancellationCheck& isCancelled) {
  std::vector<ExportPlanner::Request> requests;
  CancellationPoint cancellation(isCancelled);
  for (const ManifestFile& file : manifest.media) {
    cancellation.step();
    const MediaKind kind = MediaKind::classify(PathText::extension(file.relativePath));
    if (!wish.kinds.contains(kind)) continue;
    const MessageRecord* message = snapshot.mediaMessage(file.relativePath);
    const std::optional<Date> date = message == nullptr ? std::nullopt : message->date;
    requests.push_back({.source = opened.location(file).value_or(std::filesystem::path()),
                        .relativePath = file.relativePath,
                        .desiredName = FileNaming::exportFileName(date, file.relativePath, wish.stamps),
                        .chatJID = snapshot.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath)),
                        .kind = kind,
                        .sourceSize = opened.provenSize(file).value_or(unknownSize),
                        .date = date,
                        .encryptionKey = opened.keyOf(file)});
    ExportPlanner::Request& request = requests.back();
    request.isShorterThanRecorded = request.sourceSize >= 0 && request.sourceSize < file.plaintextSize.value_or(0);
  }
  return requests;
}

std::optional<std::string> ExportRequests::warningOfShortFiles(const std::vector<ExportPlanner::Request>& requests) {
  const std::int64_t count = std::ranges::count(requests, true, &ExportPlanner::Request::isShorterThanRecorded);
  if (count == 0) return std::nullopt;
  const auto first = std::ranges::find(requests, true, &ExportPlanner::Request::isShorterThanRecorded);
  const std::string others = count == 1 ? " is" : fmt::format(" and {} more are", count - 1);
  return fmt::format(
      "“{}”{} shorter in the backup than the iPhone recorded, and may have lost the end. Such files are exported as "
      "they "
      "are. Copy the backup again from where it came, or make a new one with the iPhone.",
      first->desiredName, others);
}

std::vector<ExportPlanner::Request> ExportRequests::lost(
    const ChatStorageSnapshot& snapshot, const std::vector<const std::vector<ExportPlanner::Request>*>& found,
    const DateFormatter& stamps) {
  std::unordered_set<std::string_view> whole;
  for (const auto* requests : found) {
    for (const ExportPlanner::Request& request : *requests) {
      if (request.sourceSize >= 0) whole.insert(request.relativePath);
    }
  }
  std::vector<ExportPlanner::Request> lost;
  for (const auto& [path, position] : snapshot.mediaByRelativePath) {
    if (whole.contains(path)) continue;
    const std::optional<Date> date = snapshot.mediaMessage(path)->date;
    lost.push_back({.relativePath = path,
                    .desiredName = FileNaming::exportFileName(date, path, stamps),
                    .chatJID = snapshot.ownerJID(path, FileNaming::chatJID(path)),
                    .kind = MediaKind::classify(PathText::extension(path)),
                    .sourceSize = unknownSize,
                    .date = date});
  }
  std::ranges::sort(lost, {}, &ExportPlanner::Request::relativePath);
  return lost;
}
