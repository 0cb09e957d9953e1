#include "TidewellCLI/JsonRecords.h"

#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/RawValue.h"

namespace {

void add(Json::Object& object, const char* key, const std::optional<std::string>& text) {
  if (text) object.emplace(key, *text);
}

Json json(const DiscoveredBackup& backup) {
  const BackupInfo& info = backup.info;
  Json::Object object{{"url", PathText::text(info.url)}, {"isEncrypted", info.isEncrypted}};
  add(object, "deviceName", info.deviceName);
  add(object, "productType", info.productType);
  add(object, "iosVersion", info.iosVersion);
  add(object, "uniqueIdentifier", info.uniqueIdentifier);
  if (info.backupDate) object.emplace("backupDate", iso8601(*info.backupDate));
  if (backup.byteCount) object.emplace("byteCount", *backup.byteCount);
  return object;
}

Json json(const std::map<MediaKind, MediaTypeStats>& statsByKind) {
  Json::Object stats;
  for (const auto& [kind, kindStats] : statsByKind) {
    stats.emplace(kind.rawValue(), Json::Object{{"count", kindStats.count}, {"byteCount", kindStats.byteCount}});
  }
  return stats;
}

Json json(const ScanChat& chat) {
  return Json::Object{{"jid", chat.jid},
                      {"name", chat.name},
                      {"messageCount", chat.messageCount},
                      {"mediaFileCount", chat.mediaFileCount},
                      {"mediaBytes", chat.mediaBytes},
                      {"statsByKind", json(chat.statsByKind)}};
}

Json json(const DedupePair& pair) {
  Json::Object object{{"canonicalFolder", pair.canonicalFolder},
                      {"duplicateFolder", pair.duplicateFolder},
                      {"duplicateFileCount", pair.duplicateFileCount},
                      {"uniqueFileCount", pair.uniqueFileCount},
                      {"bytes", pair.bytes}};
  add(object, "jid", pair.jid);
  return object;
}

Json json(const CopyFailure& failure) {
  return Json::Object{
      {"name", failure.name}, {"chat", failure.chat}, {"reason", CopyFailures::words(failure.reason).sentence}};
}

}  // namespace

Json JsonRecords::json(const BackupLibrarySnapshot& snapshot) {
  Json::Array backups;
  for (const DiscoveredBackup& backup : snapshot.backups) backups.push_back(::json(backup));
  return Json::Object{{"access", rawValue(snapshot.access)}, {"backups", std::move(backups)}};
}

Json JsonRecords::json(const ScanResult& result) {
  Json::Array chats;
  for (const ScanChat& chat : result.chats) chats.push_back(::json(chat));
  return Json::Object{{"chatCount", result.chatCount},
                      {"mediaFileCount", result.mediaFileCount},
                      {"totalBytes", result.totalBytes},
                      {"statsByKind", ::json(result.statsByKind)},
                      {"skippedThumbnailCount", result.skippedThumbnailCount},
                      {"hasChatStorage", result.hasChatStorage},
                      {"whatsAppDomain", result.whatsAppDomain},
                      {"chats", std::move(chats)},
                      {"warnings", Json::Array(result.warnings.begin(), result.warnings.end())}};
}

Json JsonRecords::json(const ExportSummary& summary) {
  Json::Array failures;
  for (const CopyFailure& failure : summary.failures) failures.push_back(::json(failure));
  Json::Object object{{"copiedCount", summary.copiedCount},
                      {"skippedExistingCount", summary.skippedExistingCount},
                      {"transcriptCount", summary.transcriptCount},
                      {"failedCount", summary.failedCount},
                      {"totalBytesCopied", summary.totalBytesCopied},
                      {"destination", PathText::text(summary.destination)},
                      {"chatFolderCount", summary.chatFolderCount},
                      {"unresolvedArchiveLinkCount", summary.unresolvedArchiveLinkCount},
                      {"failures", std::move(failures)},
                      {"warnings", Json::Array(summary.warnings.begin(), summary.warnings.end())},
                      {"mayBeIncomplete", summary.mayBeIncomplete}};
  if (summary.archiveIndexURL) object.emplace("archiveIndexURL", PathText::text(*summary.archiveIndexURL));
  return object;
}

Json JsonRecords::json(const DedupeSummary& summary) {
  Json::Array pairs;
  for (const DedupePair& pair : summary.pairs) pairs.push_back(::json(pair));
  return Json::Object{{"dryRun", summary.dryRun},
                      {"pairs", std::move(pairs)},
                      {"skippedAmbiguousCount", summary.skippedAmbiguousCount},
                      {"deletedDuplicateCount", summary.deletedDuplicateCount},
                      {"movedUniqueCount", summary.movedUniqueCount},
                      {"removedFolderCount", summary.removedFolderCount},
                      {"bytesReclaimed", summary.bytesReclaimed},
                      {"archiveUpdated", summary.archiveUpdated},
                      {"warnings", Json::Array(summary.warnings.begin(), summary.warnings.end())},
                      {"mergedFolderCount", summary.mergedFolderCount()}};
}

Json JsonRecords::json(const VerifySummary& summary) {
  Json::Array findings;
  for (const VerifySummary::Finding& finding : summary.findings) {
    findings.push_back(Json::Object{
        {"kind", std::string(rawValue(finding.kind))}, {"place", finding.place}, {"message", finding.message}});
  }
  return Json::Object{{"mediaCount", summary.mediaCount},
                      {"chatCount", summary.chatCount},
                      {"messageCount", summary.messageCount},
                      {"newDigestCount", summary.newDigestCount},
                      {"findings", std::move(findings)},
                      {"warnings", Json::Array(summary.warnings.begin(), summary.warnings.end())}};
}

Json JsonRecords::json(const RenderSummary& summary) {
  Json::Array failures;
  for (const CopyFailure& failure : summary.failures) failures.push_back(::json(failure));
  return Json::Object{{"chatCount", summary.chatCount},
                      {"transcriptCount", summary.transcriptCount},
                      {"failedCount", summary.failedCount},
                      {"destination", PathText::text(summary.destination)},
                      {"archiveIndexURL", PathText::text(summary.archiveIndexURL)},
                      {"failures", std::move(failures)}};
}
