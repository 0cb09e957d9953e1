#include "Tests/Support/BackupBuilder.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "Tests/Support/BackupPlists.h"
#include "Tests/Support/ChatDatabase.h"
#include "Tests/Support/DatabaseWriter.h"
#include "Tests/Support/MBFileRecord.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/SideDatabases.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/TestCrypto.h"

namespace Fixture {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t folderMode = 0040755;
constexpr std::uint32_t linkMode = 0120755;

constexpr const char* manifestSchema = R"sql(
CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file BLOB);
CREATE INDEX FilesDomainIdx ON Files(domain);
CREATE INDEX FilesRelativePathIdx ON Files(relativePath);
CREATE INDEX FilesFlagsIdx ON Files(flags);
CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB);
)sql";

BackupFile databaseFile(const WhatsAppContents& app, const std::string& relativePath, Bytes content) {
  const auto options = app.databaseStorage.find(relativePath);
  return {.domain = app.domain,
          .relativePath = relativePath,
          .content = std::move(content),
          .storage = options == app.databaseStorage.end() ? StorageOptions{} : options->second};
}

void addDatabase(std::vector<BackupFile>& files, const WhatsAppContents& app, const std::string& name,
                 DatabaseFiles database) {
  files.push_back(databaseFile(app, name, std::move(database.main)));
  if (database.shm) files.push_back(databaseFile(app, name + "-shm", *std::move(database.shm)));
  if (database.wal) files.push_back(databaseFile(app, name + "-wal", *std::move(database.wal)));
}

void addApp(std::vector<BackupFile>& files, const WhatsAppContents& app) {
  if (app.withChatStorage) addDatabase(files, app, "ChatStorage.sqlite", writeChatStorage(app));
  if (app.withContacts) addDatabase(files, app, "ContactsV2.sqlite", writeContacts(app));
  if (app.linkedAccounts) addDatabase(files, app, "LID.sqlite", writeLinkedAccounts(app));
  if (app.calls) addDatabase(files, app, "CallHistory.sqlite", writeCallHistory(app));
  for (const MediaFile& media : app.mediaFiles) {
    files.push_back({app.domain, "Message/" + media.localPath, media.content, media.storage});
  }
  for (const BackupFile& file : app.files) {
    files.push_back(file);
    if (file.domain.empty()) files.back().domain = app.domain;
  }
}

std::vector<BackupFile> allFiles(const BackupContents& contents) {
  std::vector<BackupFile> files;
  addApp(files, contents.whatsApp);
  if (contents.businessApp) addApp(files, *contents.businessApp);
  files.insert(files.end(), contents.otherFiles.begin(), contents.otherFiles.end());
  return files;
}

// Whether a file of this name can lie in the backup folder without leaving it.
bool canNameFile(const std::string& fileID) {
  return !fileID.empty() && fileID.size() <= 128 && fileID[0] != '.' && fileID.find('/') == std::string::npos &&
         fileID.find('\0') == std::string::npos;
}

Journal manifestJournal(const BackupContents& contents) {
  if (contents.encryption) return Journal::walHeader;
  return contents.manifestJournal.value_or(Journal::rollback);
}

// Stores files and lists them in Manifest.db.
class BackupWriter {
 public:
  BackupWriter(const BackupContents& contents, const fs::path& folder)
      : contents_(contents), random_(contents.seed), index_(manifestJournal(contents)) {
    backup_.folder = folder;
    backup_.info = infoPlist(contents);
    backup_.manifest = manifestPlist(contents);
    backup_.status = statusPlist(contents);
  }

  WrittenBackup write(const std::vector<BackupFile>& files) {
    fs::create_directories(backup_.folder);
    if (contents_.encryption) lock(*contents_.encryption);
    writePlists();
    index_.execute(manifestSchema);
    index_.insert("Properties", {{"key", "salt"}, {"value", random_.bytes(20)}});
    for (const IndexRow& row : contents_.indexRows) addRow(row);
    for (std::size_t position = 0; position < files.size(); ++position) {
      if (position == settledCount(files.size())) index_.checkpoint();
      addFile(files[position]);
    }
    if (!contents_.manifestSQL.empty()) index_.execute(contents_.manifestSQL);
    writeIndex();
    return std::move(backup_);
  }

 private:
  void lock(const Encryption& encryption) {
    backup_.keyBag = buildKeyBag(encryption.keyBag, random_);
    backup_.manifestKey = random_.bytes(32);
    if (!encryption.withoutKeyBag) backup_.manifest.emplace_back("BackupKeyBag", backup_.keyBag->blob);
    if (encryption.withoutManifestKey) return;
    backup_.manifest.emplace_back("ManifestKey",
                                  backup_.keyBag->persistentKey(encryption.manifestClass, backup_.manifestKey));
  }

  void writePlists() const {
    writeFile(backup_.folder / "Info.plist", xmlPlist(backup_.info));
    writeFile(backup_.folder / "Manifest.plist", binaryPlist(backup_.manifest));
    writeFile(backup_.folder / "Status.plist", binaryPlist(backup_.status));
  }

  void addRow(const IndexRow& row) {
    const MBFileRecord record{.relativePath = row.relativePath,
                              .size = 0,
                              .protectionClass = 0,
                              .mode = row.flags == 4 ? linkMode : folderMode,
                              .inode = ++inode_,
                              .modified = contents_.backupTime};
    list(fileIDOf(row.domain, row.relativePath), row, archive(record));
  }

  void addFile(const BackupFile& file) {
    const StorageOptions& storage = file.storage;
    const bool locked = contents_.encryption && !storage.withoutKey;
    const Bytes key = locked ? random_.bytes(32) : Bytes{};
    const std::string fileID = storage.fileID.value_or(fileIDOf(file.domain, file.relativePath));
    if (!storage.missing && canNameFile(fileID)) store(fileID, file, key);
    list(fileID, {file.domain, file.relativePath, 1}, record(file, key));
  }

  void store(const std::string& fileID, const BackupFile& file, const Bytes& key) const {
    Bytes stored = key.empty() ? file.content : aesCbcEncrypt(key, file.content);
    if (file.storage.truncatedTo && *file.storage.truncatedTo < stored.size()) {
      stored.resize(*file.storage.truncatedTo);
    }
    writeFile(storedPath(backup_.folder, fileID), stored);
  }

  SQLValue record(const BackupFile& file, const Bytes& key) {
    const StorageOptions& storage = file.storage;
    if (storage.withoutRecord) return {};
    if (storage.record) return *storage.record;
    MBFileRecord record{.relativePath = file.relativePath,
                        .protectionClass = storage.protectionClass,
                        .inode = ++inode_,
                        .modified = contents_.backupTime};
    if (!storage.withoutSize) {
      record.size = storage.recordedSize.value_or(static_cast<std::int64_t>(file.content.size()));
    }
    if (!key.empty()) record.encryptionKey = backup_.keyBag->persistentKey(storage.protectionClass, key);
    return archive(record);
  }

  void list(const std::string& fileID, const IndexRow& row, SQLValue record) {
    index_.insert("Files", {{"fileID", fileID},
                            {"domain", row.domain},
                            {"relativePath", row.relativePath},
                            {"flags", row.flags},
                            {"file", std::move(record)}});
  }

  void writeIndex() {
    DatabaseFiles index = index_.finish();
    const fs::path place = backup_.folder / "Manifest.db";
    writeFile(place, contents_.encryption ? aesCbcEncrypt(backup_.manifestKey, index.main) : index.main);
    if (index.wal) writeFile(backup_.folder / "Manifest.db-wal", *index.wal);
    if (index.shm) writeFile(backup_.folder / "Manifest.db-shm", *index.shm);
    backup_.manifestDatabase = std::move(index.main);
  }

  const BackupContents& contents_;
  SeededRandom random_;
  DatabaseWriter index_;
  WrittenBackup backup_;
  std::uint64_t inode_ = 4'000'000;
};

}  // namespace

fs::path WrittenBackup::storedFile(std::string_view relativePath, std::string_view domain) const {
  return storedPath(folder, fileIDOf(domain, relativePath));
}

WrittenBackup writeBackup(const BackupContents& contents, const fs::path& folder) {
  // The chat databases come first: one database is written at a time.
  const std::vector<BackupFile> files = allFiles(contents);
  return BackupWriter(contents, folder).write(files);
}

std::string fileIDOf(std::string_view domain, std::string_view relativePath) {
  return sha1Hex(bytesOf(std::string(domain) + "-" + std::string(relativePath)));
}

fs::path storedPath(const fs::path& folder, const std::string& fileID) { return folder / fileID.substr(0, 2) / fileID; }

}  // namespace Fixture
