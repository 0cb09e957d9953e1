#include "TidewellCore/ChatData/ScanResult.h"

#include <algorithm>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/SaturatingAdd.h"
#include "TidewellCore/Platform/Text.h"

namespace {

MediaTypeStats sum(const std::map<MediaKind, MediaTypeStats>& statsByKind, const MediaKinds& kinds) {
  MediaTypeStats total;
  for (const auto& [kind, stats] : statsByKind) {
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

MediaKind kindOf(const ManifestFile& file) { return MediaKind::classify(PathText::extension(file.relativePath)); }

// Hands over each medium in the scope, with its chat.
template <typename Visitor>
void forEachMedium(const BackupSource& source, const Scope& scope, Visitor visit) {
  for (const ManifestFile& file : source.media()) {
    const CanonicalJID chat = source.snapshot.ownerJID(file.relativePath, FileNaming::chatJID(file.relativePath));
    if (scope.has(chat, source.snapshot.mediaDate(file.relativePath))) visit(file, chat);
  }
}

std::map<CanonicalJID, ScanChat> countChats(const BackupSource& source, const Scope& scope) {
  std::map<CanonicalJID, ScanChat> rows;
  forEachMedium(source, scope, [&](const ManifestFile& file, const CanonicalJID& chat) {
    ScanChat& row = rows[chat];
    ++row.mediaFileCount;
    const std::int64_t size = source.opened.sourceSize(file);
    row.mediaBytes = saturatingAdd(row.mediaBytes, size);
    row.statsByKind[kindOf(file)].add(size);
  });
  for (const ChatStorageSnapshot::Chat& chat : source.snapshot.chats()) {
    const std::size_t count = scope.messages(source.snapshot, chat.jid).size();
    if (count > 0) rows[chat.jid].messageCount = static_cast<std::int64_t>(count);
  }
  return rows;
}

}  // namespace

void MediaTypeStats::add(std::int64_t bytes) {
  ++count;
  byteCount = saturatingAdd(byteCount, bytes);
}

MediaTypeStats ScanChat::stats(const MediaKinds& kinds) const { return sum(statsByKind, kinds); }

std::int64_t ScanResult::count(const MediaKinds& kinds) const { return sum(statsByKind, kinds).count; }

std::int64_t ScanResult::bytes(const MediaKinds& kinds) const { return sum(statsByKind, kinds).byteCount; }

ScanResult ScanSummary::summarize(const BackupSource& source, const Scope& scope, const Locale& locale) {
  const ManifestStore& manifest = source.manifest;
  ScanResult result{.skippedThumbnailCount = static_cast<std::int64_t>(manifest.skippedThumbnails.size()),
                    .hasChatStorage = manifest.chatStorage.has_value(),
                    .whatsAppDomain = domainOf(manifest),
                    .chats = scanChats(source, scope, locale),
                    .warnings = source.warnings};
  forEachMedium(source, scope, [&](const ManifestFile& file, const CanonicalJID&) {
    const std::int64_t size = source.opened.sourceSize(file);
    ++result.mediaFileCount;
    result.statsByKind[kindOf(file)].add(size);
    result.totalBytes = saturatingAdd(result.totalBytes, size);
  });
  result.chatCount = static_cast<std::int64_t>(result.chats.size());
  return result;
}

std::vector<ScanChat> ScanSummary::scanChats(const BackupSource& source, const Scope& scope, const Locale& locale) {
  std::vector<ScanChat> chats;
  auto rows = countChats(source, scope);
  for (auto& [jid, row] : rows) {
    row.jid = jid.text();
    row.name = source.snapshot.chatTitle(row.jid);
    chats.push_back(std::move(row));
  }
  // The rows come in the order of their JIDs, which a stable sort keeps among equal names.
  const Text::NameOrder order(locale.identifier);
  std::ranges::stable_sort(chats,
                           [&](const ScanChat& a, const ScanChat& b) { return order.compare(a.name, b.name) < 0; });
  return chats;
}
