#include "Tests/Export/ExportScene.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/Library/LibraryFile.h"

namespace ExportTest {

namespace fs = std::filesystem;

Fixture::MediaFile media(const std::string& jid, const std::string& name, const std::string& extension,
                         const std::string& content, std::optional<std::int64_t> message,
                         Fixture::StorageOptions storage) {
  return {.localPath = Fixture::mediaPath(jid, name, extension),
          .content = Fixture::bytesOf(content),
          .message = message,
          .storage = std::move(storage)};
}

Fixture::BackupContents smallBackup(bool isEncrypted) {
  Fixture::BackupContents contents;
  if (isEncrypted) contents.encryption = Fixture::Encryption{};
  Fixture::WhatsAppContents& app = contents.whatsApp;
  app.chats = {{.jid = ana, .name = "Ana"}, {.jid = group, .name = "Us"}, {.jid = bea, .name = "Bea"}};
  app.messages = {{.chat = 1, .date = firstDate},
                  {.chat = 1, .date = firstDate + 1.25, .isFromMe = 1},
                  {.chat = 2, .date = firstDate + 60},
                  {.chat = 3, .date = firstDate + 3600}};
  app.mediaFiles = {media(ana, "aa1", "jpg", "a photo", 1), media(ana, "ab2", "mp4", "a video, sixteen", 2),
                    media(group, "ca3", "opus", "a voice note", 3), media(bea, "da4", "webp", "a sticker", 4),
                    media(bea, "ea5", "pdf", "a document that no message carries")};
  app.files = {Fixture::thumbnail(app.mediaFiles[0].localPath, Fixture::bytesOf("a thumbnail"))};
  return contents;
}

std::string encryptionName(const testing::TestParamInfo<bool>& isEncrypted) {
  return isEncrypted.param ? "Encrypted" : "Plain";
}

std::map<std::string, std::string> filesBelow(const fs::path& root) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.symlink_status().type() != fs::file_type::regular) continue;
    const fs::path name = entry.path().filename();
    if (name == LibraryFile::fileName || name == OwnFiles::receipt) continue;  // they tell of times
    files.emplace(entry.path().lexically_relative(root).generic_string(), textOf(entry.path()));
  }
  return files;
}

std::vector<std::string> foldersBelow(const fs::path& root) {
  std::vector<std::string> folders;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_directory()) folders.push_back(entry.path().lexically_relative(root).generic_string());
  }
  std::ranges::sort(folders);
  return folders;
}

void forgetReceipt(const fs::path& destination) {
  std::error_code isNone;
  fs::remove(destination / "messages" / OwnFiles::receipt, isNone);
}

void forgetLibrary(const fs::path& destination) {
  forgetReceipt(destination);
  fs::remove(destination / "messages" / LibraryFile::fileName);
}

bool holdsPartials(const fs::path& root) {
  const fs::recursive_directory_iterator entries(root);
  return std::any_of(begin(entries), end(entries), [](const fs::directory_entry& entry) {
    return entry.path().filename().string().starts_with(".tidewell-partial-");
  });
}

std::string textOf(const fs::path& file) {
  const Fixture::Bytes bytes = Fixture::readFile(file);
  return {bytes.begin(), bytes.end()};
}

std::int64_t modified(const fs::path& file) {
  struct stat status {};
  if (::lstat(file.c_str(), &status) != 0) return -1;
  return status.st_mtim.tv_sec;
}

ChatTables tablesOf(const JIDPairs& chats, const JIDPairs& lids) {
  ChatTables tables;
  for (const auto& [jid, name] : chats) {
    const auto pk = static_cast<std::int64_t>(tables.chats.size() + 1);
    tables.chats.emplace(pk, ChatRecord{.pk = pk, .jid = jid, .name = name});
  }
  for (const auto& [lid, phone] : lids) tables.directory.link(lid, phone);
  return tables;
}

ChatStorageSnapshot snapshotOf(const JIDPairs& chats, const JIDPairs& lids) {
  return ChatStorageSnapshot(tablesOf(chats, lids));
}

CanonicalJID canonical(const std::string& jid) { return ChatStorageSnapshot().canonicalChatJID(jid); }

ChatFolders foldersOf(const JIDPairs& folders) {
  ChatFolders all;
  for (const auto& [jid, folder] : folders) all.emplace(canonical(jid), folder);
  return all;
}

ExportOptions mediaAlone() {
  ExportOptions options = ExportOptions::defaultOptions();
  options.exportTranscripts = false;
  return options;
}

void Scene::write() {
  fs::remove_all(backup);
  Fixture::writeBackup(contents, backup);
}

ExportSummary Scene::run(const ExportOptions& options, const RunControl& control) const {
  return runPart({}, options, control);
}

ExportSummary Scene::runPart(const Selection& selection, const ExportOptions& options,
                             const RunControl& control) const {
  const Exporter exporter{.timeZone = TimeZone{"UTC"}, .locale = Locale{"en_US"}};
  ExportJob job{.backup = backup, .destination = destination, .options = options, .selection = selection};
  if (contents.encryption) job.password = contents.encryption->keyBag.password;
  forgetReceipt(destination);
  return exporter.exportBackup(job, control);
}

PrivateTemporaryFolder::PrivateTemporaryFolder() {
  if (const char* before = std::getenv("TMPDIR")) before_ = before;
  ::setenv("TMPDIR", folder_.path().c_str(), 1);
}

PrivateTemporaryFolder::~PrivateTemporaryFolder() {
  before_ ? ::setenv("TMPDIR", before_->c_str(), 1) : ::unsetenv("TMPDIR");
}

}  // namespace ExportTest
