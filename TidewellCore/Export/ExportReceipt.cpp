#include "TidewellCore/Export/ExportReceipt.h"

#include <array>

#include "TidewellCore/Backup/StoredFileLocation.h"
#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Edition.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/FileStamp.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/JsonFile.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 64 << 10;
constexpr std::int64_t version = 1;
namespace Key {
constexpr const char* version = "version";
constexpr const char* asked = "asked";
constexpr const char* index = "index";
constexpr const char* databases = "databases";
constexpr const char* ofDatabases = "databaseState";
constexpr const char* destination = "destination";
constexpr const char* chatFolders = "chatFolders";
constexpr const char* media = "media";
constexpr const char* transcripts = "transcripts";
constexpr const char* unresolved = "unresolvedLinks";
constexpr const char* hasPage = "hasPage";
}  // namespace Key

constexpr std::array indexFiles{"Manifest.db",    "Manifest.db-wal", "Manifest.db-shm", "Manifest.db-journal",
                                "Manifest.plist", "Info.plist",      "Status.plist"};

std::string digestOf(const std::string& text) { return Base64::encode(sha256(bytesOf(text))); }

// What cannot be looked at is not known; whoever needs it tells.
template <typename Look>
std::optional<std::string> known(Look look) try {
  return look();
} catch (const fs::filesystem_error&) {
  return std::nullopt;
}

// Of files that may still be changed unseen nothing is known.
std::optional<std::string> stateOf(const std::vector<fs::path>& files) {
  return known([&]() -> std::optional<std::string> {
    std::string text;
    for (const fs::path& file : files) {
      const std::optional<FileStamp> stamp = FileStamp::of(file);
      if (stamp && !stamp->isSettled()) return std::nullopt;
      text += PathText::text(file) + "\n" + (stamp ? stamp->ofEverything() : "none") + "\n";
    }
    return digestOf(text);
  });
}

std::vector<fs::path> indexOf(const fs::path& backup) {
  std::vector<fs::path> files;
  for (const char* name : indexFiles) files.push_back(backup / name);
  return files;
}

// The files of an export, and nothing else in its content root.
std::optional<std::string> stateOfExport(const fs::path& destination, const CancellationCheck& isCancelled) {
  return known([&]() -> std::optional<std::string> {
    std::string text;
    const auto add = [&](const std::string& path, const FileStamp& stamp) {
      // The receipt is of what stands beside it; a journal goes when the library is closed.
      if (path == OwnFiles::receipt || path == LibraryFile::journalName) return;
      text += path + "\n" + stamp.ofContent() + "\n";
    };
    const auto page = FileStamp::of(destination / FolderNames::archivePage);
    if (page) add("..", *page);
    if (!forEachStampBelow(destination / FolderNames::content, add, isCancelled)) return std::nullopt;
    return digestOf(text);
  });
}

Json::Array listOf(const auto& texts) {
  Json::Array list;
  for (const auto& text : texts) list.emplace_back(std::string(text));
  return list;
}

std::string dayOf(const std::optional<Day>& day) { return day ? iso8601(*day) : std::string(); }

// All that the outcome depends on beside the backup and what stands at the destination.
std::string asked(const Exporter& exporter, const ExportJob& job) {
  Json::Array kinds;
  for (const MediaKind kind : job.options.includedKinds) kinds.emplace_back(kind.rawValue());
  Json::Array formats;
  for (const MessageFormat format : job.options.formats) formats.emplace_back(static_cast<std::int64_t>(format));
  const TranscriptStyle& style = exporter.transcriptStyle;
  return digestOf(
      Json(Json::Array{std::string(Edition::digest()), dateRulesVersion(), std::move(kinds), std::move(formats),
                       job.options.exportTranscripts, listOf(job.selection.chats), listOf(job.selection.notChats),
                       dayOf(job.selection.since), dayOf(job.selection.until), exporter.timeZone.identifier,
                       exporter.locale.identifier, exporter.isTimeZoneChosen, exporter.isLocaleChosen, style.youLabel,
                       style.unknownSenderLabel, style.languageCode})
          .write());
}

}  // namespace

ExportReceipt::ExportReceipt(const Exporter& exporter, const ExportJob& job, const CancellationCheck& isCancelled)
    : job_(job),
      contentRoot_(job.destination / FolderNames::content),
      asked_(asked(exporter, job)),
      ofIndex_(stateOf(indexOf(job.backup))),
      destination_(stateOfExport(job.destination, isCancelled)) {}

std::optional<ExportSummary> ExportReceipt::summaryOfNothingNew() const {
  if (!ofIndex_ || !destination_) return std::nullopt;
  const auto receipt = JsonFile::readIfThere(contentRoot_ / OwnFiles::receipt, largestFile);
  if (!receipt || JSONMembers::valueOf<std::int64_t>(*receipt, Key::version) != version) return std::nullopt;
  const auto says = [&](const char* key, const std::optional<std::string>& state) {
    return state && JSONMembers::textOf(*receipt, key) == state;
  };
  const bool isSame = says(Key::asked, asked_) && says(Key::index, ofIndex_) && says(Key::destination, destination_) &&
                      says(Key::ofDatabases, stateOfDatabases(JSONMembers::textsOf(*receipt, Key::databases))) &&
                      Files::kindOf(contentRoot_ / LibraryFile::journalName) == Files::Kind::nothing;
  if (!isSame) return std::nullopt;
  const DestinationLock lock(job_.destination);
  const auto count = [&](const char* key) { return JSONMembers::valueOf<std::int64_t>(*receipt, key); };
  ExportSummary summary{.skippedExistingCount = count(Key::media),
                        .transcriptCount = count(Key::transcripts),
                        .destination = job_.destination,
                        .chatFolderCount = count(Key::chatFolders),
                        .unresolvedArchiveLinkCount = count(Key::unresolved)};
  if (JSONMembers::valueOf<bool>(*receipt, Key::hasPage)) {
    summary.archiveIndexURL = job_.destination / FolderNames::archivePage;
  }
  return summary;
}

void ExportReceipt::noteDatabases(const ManifestStore& manifest) {
  const auto note = [this](const std::optional<ManifestFile>& file) {
    if (file) databases_.push_back(file->fileID);
  };
  for (const auto* file :
       {&manifest.chatStorage, &manifest.chatStorageWAL, &manifest.chatStorageSHM, &manifest.chatStorageRollback,
        &manifest.contacts, &manifest.contactsWAL, &manifest.contactsSHM, &manifest.contactsRollback}) {
    note(*file);
  }
  for (const StoredDatabase* database : {&manifest.callHistory, &manifest.identities}) {
    for (const auto* file : {&database->file, &database->wal, &database->shm, &database->rollback}) note(*file);
  }
  ofDatabases_ = stateOfDatabases(databases_);
}

void ExportReceipt::write(const ExportSummary& summary, const CancellationCheck& isCancelled) const {
  const bool isWhole = summary.warnings.empty() && summary.failures.empty() && !summary.mayBeIncomplete;
  if (!isWhole || !ofIndex_ || !ofDatabases_) return;
  const std::optional<std::string> left = stateOfExport(job_.destination, isCancelled);
  if (!left || left == destination_) return;
  Files::writeWhenDifferent(contentRoot_ / OwnFiles::receipt,
                            JsonFile::content({{Key::version, version},
                                               {Key::asked, asked_},
                                               {Key::index, *ofIndex_},
                                               {Key::databases, listOf(databases_)},
                                               {Key::ofDatabases, *ofDatabases_},
                                               {Key::destination, *left},
                                               {Key::chatFolders, summary.chatFolderCount},
                                               {Key::media, summary.copiedCount + summary.skippedExistingCount},
                                               {Key::transcripts, summary.transcriptCount},
                                               {Key::unresolved, summary.unresolvedArchiveLinkCount},
                                               {Key::hasPage, summary.archiveIndexURL.has_value()}}));
}

std::optional<std::string> ExportReceipt::stateOfDatabases(const std::vector<std::string>& databases) const {
  std::vector<fs::path> files;
  for (const std::string& name : databases) {
    const std::optional<fs::path> file = storedFileLocation(job_.backup, name);
    if (!file) return std::nullopt;
    files.push_back(*file);
  }
  return stateOf(files);
}
