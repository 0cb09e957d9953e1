#include "TidewellCore/ChatData/ScanResult.h"

#include <algorithm>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/Platform/Text.h"

namespace {

MediaTypeStats sum(const ScanResult& result, const MediaKinds& kinds) {
  MediaTypeStats total;
  for (const auto& [kind, stats] : result.statsByKind) {
    if (!kinds.contains(kind)) continue;
    total.count += stats.count;
    total.byteCount = saturatingAdd(total.byteCount, stats.byteCount);
  }
  return total;
}

// The container in which WhatsApp's files were found.
std::string domainOf(const ManifestStore& manifest) {
  if (manifest.chatStorage) return manifest.chatStorage->domain;
  return manifest.files.empty() ? std::string() : manifest.files.front().domain;
}

std::map<std::string, ScanChat> countChats(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest,
                                           const OpenedBackup& opened) {
  std::map<std::string, ScanChat> rows;
  for (const ManifestFile& file : manifest.media) {
    ScanChat& row = rows[snapshot.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath))];
    ++row.mediaFileCount;
    row.mediaBytes = saturatingAdd(row.mediaBytes, opened.sourceSize(file));
  }
  for (const auto& [pk, messages] : snapshot.messagesByChat) {
    const auto chat = snapshot.chats.find(pk);
    if (chat == snapshot.chats.end() || messages.empty()) continue;
    const std::string jid = snapshot.canonicalChatJID(chat->second.jid);
    rows[jid.empty() ? std::string(UnknownChatJID) : jid].messageCount += static_cast<std::int64_t>(messages.size());
  }
  return rows;
}

}  // namespace

void MediaTypeStats::add(std::int64_t bytes) {
  ++count;
  byteCount = saturatingAdd(byteCount, bytes);
}

std::int64_t ScanResult::count(const MediaKinds& kinds) const { return sum(*this, kinds).count; }

std::int64_t ScanResult::bytes(const MediaKinds& kinds) const { return sum(*this, kinds).byteCount; }

std::vector<std::string> ScanSummary::warnings(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest,
                                               const OpenedBackup& opened) {
  std::vector<std::string> all = opened.warnings();
  all.insert(all.end(), manifest.warnings.begin(), manifest.warnings.end());
  all.insert(all.end(), snapshot.warnings.begin(), snapshot.warnings.end());
  return all;
}

ScanResult ScanSummary::summarize(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest,
                                  const OpenedBackup& opened, const Locale& locale) {
  ScanResult result{.mediaFileCount = static_cast<std::int64_t>(manifest.media.size()),
                    .skippedThumbnailCount = static_cast<std::int64_t>(manifest.skippedThumbnails.size()),
                    .hasChatStorage = manifest.chatStorage.has_value(),
                    .whatsAppDomain = domainOf(manifest),
                    .chats = scanChats(snapshot, manifest, opened, locale),
                    .warnings = warnings(snapshot, manifest, opened)};
  for (const ManifestFile& file : manifest.media) {
    const std::int64_t size = opened.sourceSize(file);
    result.statsByKind[MediaKind::classify(PathText::extension(file.relativePath))].add(size);
    result.totalBytes = saturatingAdd(result.totalBytes, size);
  }
  result.chatCount = static_cast<std::int64_t>(result.chats.size());
  return result;
}

std::vector<ScanChat> ScanSummary::scanChats(const ChatStorageSnapshot& snapshot, const ManifestStore& manifest,
                                             const OpenedBackup& opened, const Locale& locale) {
  std::vector<ScanChat> chats;
  auto rows = countChats(snapshot, manifest, opened);
  for (auto& [jid, row] : rows) {
    row.jid = jid;
    row.name = snapshot.chatTitle(jid);
    chats.push_back(std::move(row));
  }
  // The rows come in the order of their JIDs, which a stable sort keeps among equal names.
  const Text::NameOrder order(locale.identifier);
  std::ranges::stable_sort(chats,
                           [&](const ScanChat& a, const ScanChat& b) { return order.compare(a.name, b.name) < 0; });
  return chats;
}
