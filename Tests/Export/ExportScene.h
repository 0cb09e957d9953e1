#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/Destination/FolderAllocator.h"
#include "TidewellCore/Export/Exporter.h"

// A phone's backup and a place to export it to.
namespace ExportTest {

inline const std::string ana = "5511900001111@s.whatsapp.net";
inline const std::string anaLID = "200000000000001@lid";
inline const std::string bea = "5511900002222@s.whatsapp.net";
inline const std::string group = "5511900001111-1500000000@g.us";

// 2023-03-08T20:26:40Z in seconds since 2001, the date of message 1.
inline constexpr double firstDate = 700'000'000;
inline constexpr std::int64_t firstUnixDate = 1'678'307'200;

// Three chats, five media files of five kinds: two of Ana's, one of a group's, two of Bea's, of which
// the document has no message.
Fixture::BackupContents smallBackup(bool isEncrypted = false);

// A media file "Message/Media/<jid>/<x>/<y>/<name>.<extension>".
Fixture::MediaFile media(const std::string& jid, const std::string& name, const std::string& extension,
                         const std::string& content, std::optional<std::int64_t> message = std::nullopt,
                         Fixture::StorageOptions storage = {});

// Names the two forms of a test that runs with a plain and an encrypted backup.
std::string encryptionName(const testing::TestParamInfo<bool>& isEncrypted);

// Every regular file below `root` and its bytes, by its path relative to it; hidden ones too, but
// for libraries, which tell when they were written.
std::map<std::string, std::string> filesBelow(const std::filesystem::path& root);
// Every folder below `root`, by its path relative to it.
std::vector<std::string> foldersBelow(const std::filesystem::path& root);
// So that the next export does all its work, even where there is nothing to do.
void forgetReceipt(const std::filesystem::path& destination);
// As if the export was one of a version without a library.
void forgetLibrary(const std::filesystem::path& destination);
bool holdsPartials(const std::filesystem::path& root);
std::string textOf(const std::filesystem::path& file);
// Seconds since 1970; whole seconds are cut off.
std::int64_t modified(const std::filesystem::path& file);

using JIDPairs = std::vector<std::pair<std::string, std::string>>;

// The tables of these chats, JID and name, numbered from 1; each pair of the others is a LID and its phone JID.
ChatTables tablesOf(const JIDPairs& chats, const JIDPairs& lids = {});
ChatStorageSnapshot snapshotOf(const JIDPairs& chats, const JIDPairs& lids = {});
// A JID that is canonical as it is.
CanonicalJID canonical(const std::string& jid);
// Chats, by such JIDs, and their folders.
ChatFolders foldersOf(const JIDPairs& folders);

// Every kind of media and no transcripts: what most tests are about.
ExportOptions mediaAlone();

class Scene {
 public:
  explicit Scene(Fixture::BackupContents initial = smallBackup()) : contents(std::move(initial)) { write(); }

  // Replaces the backup by what `contents` holds now.
  void write();
  ExportSummary run(const ExportOptions& options = mediaAlone(), const RunControl& control = {}) const;
  // An export of a part of the backup.
  ExportSummary runPart(const Selection& selection, const ExportOptions& options = mediaAlone(),
                        const RunControl& control = {}) const;

  Fixture::TemporaryDirectory folder;
  Fixture::BackupContents contents;
  std::filesystem::path backup = folder / "device";
  std::filesystem::path destination = folder / "Desktop";
  std::filesystem::path content = destination / "messages";
};

// Sets TMPDIR to an empty folder for as long as this lives.
class PrivateTemporaryFolder {
 public:
  PrivateTemporaryFolder();
  ~PrivateTemporaryFolder();
  PrivateTemporaryFolder(const PrivateTemporaryFolder&) = delete;
  PrivateTemporaryFolder& operator=(const PrivateTemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return folder_.path(); }
  bool isEmpty() const { return std::filesystem::is_empty(folder_.path()); }

 private:
  Fixture::TemporaryDirectory folder_;
  std::optional<std::string> before_;
};

}  // namespace ExportTest
