#include "TidewellCore/Export/Verification.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/Destination/DestinationLock.h"
#include "TidewellCore/Destination/ExportDestination.h"
#include "TidewellCore/Destination/ExportLayout.h"
#include "TidewellCore/ErrorReport.h"
#include "TidewellCore/Export/BackupMedia.h"
#include "TidewellCore/Export/BackupReading.h"
#include "TidewellCore/Export/BackupVerification.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Export/FileDigest.h"
#include "TidewellCore/Export/ProgressReporter.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Library/ArchiveOwner.h"
#include "TidewellCore/Library/Library.h"
#include "TidewellCore/Library/Renderings.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using Kind = VerifySummary::Kind;

constexpr std::int64_t largestList = 1 << 30;  // bytes

constexpr const char* advice = "Export again: what the backup still has is brought back.";
constexpr const char* adviceToReplace = "Delete it, or move it out of the export, and export again.";
constexpr const char* mayBeDamaged =
    "may be damaged: the backup’s own file was when it was copied. Copy the backup again from where it came, or make a "
    "new one with the iPhone, and export again.";
constexpr const char* adviceForLibrary =
    "Move the file “{}” out of the export and export again: it is made anew from the pages and the backup.";

class Run {
 public:
  // `backup` is null where the archive alone is looked at.
  Run(const fs::path& contentRoot, Library& library, const BackupSource* backup, const RunControl& control)
      : contentRoot_(contentRoot),
        dataFolder_(ChatArchiveWriter::dataFolder(contentRoot)),
        library_(library),
        backup_(backup),
        backupMedia_(backup == nullptr ? std::optional<BackupMedia>() : std::optional<BackupMedia>(*backup)),
        renderings_(Renderings::load(library.database())),
        control_(control),
        progress_(control.progress) {}

  VerifySummary run() {
    progress_.begin(ExportProgress::Phase::verifying, stepCount());
    try {
      lookAtMedia();
    } catch (...) {
      keepDigests();
      throw;
    }
    keepDigests();
    lookAtChats();
    lookAtBlocks();
    if (!library_.chats().empty()) lookAtList();  // an export of the media alone has no pages
    if (library_.knowsNothing()) {
      find(Kind::unfinished, LibraryFile::fileName, "This export was not finished. Export again.");
    }
    if (backup_ != nullptr) lookAtBackup();
    progress_.begin(ExportProgress::Phase::finished);
    return std::move(summary_);
  }

 private:
  std::int64_t stepCount() const {
    std::int64_t count = std::ssize(library_.media().media());
    if (backup_ != nullptr) count += BackupVerification::stepCount(*backup_);
    for (const auto& [number, chat] : renderings_.chats) count += std::ssize(chat.files);
    for (const auto& [number, blocks] : renderings_.shelves) count += std::ssize(blocks);
    return count;
  }

  void find(Kind kind, std::string place, std::string message) {
    summary_.findings.push_back({.kind = kind, .place = std::move(place), .message = std::move(message)});
  }

  // `what` throws what the file system reports, which is one more finding.
  template <typename Work>
  void look(const std::string& place, Work what) {
    throwIfCancelled(control_.isCancelled);
    progress_.report(place, completed_);
    try {
      what();
    } catch (const fs::filesystem_error& error) {
      find(Kind::unreadable, place,
           fmt::format("“{}” could not be read: {}", place, ErrorReport::of(error).errorDescription));
    }
    progress_.report(place, ++completed_);
  }

  // Whether a file of that length stands there; else it is found.
  bool stands(const fs::path& file, const std::string& place, std::int64_t size) {
    const std::optional<std::int64_t> found = Files::regularFileSize(file);
    if (!found) {
      find(Kind::missing, place, fmt::format("“{}” is missing. {}", place, advice));
    } else if (*found != size) {
      find(Kind::changed, place,
           fmt::format("“{}” has {} bytes, and had {} when it was written. {}", place, *found, size, adviceToReplace));
    }
    return found == size;
  }

  void changed(const std::string& place) {
    find(Kind::changed, place,
         fmt::format("“{}” has other bytes than when it was written. {}", place, adviceToReplace));
  }

  void lookAtMedia() {
    MediaLedger& ledger = library_.media();
    for (std::int64_t number = 0; const KeptMedium& medium : ledger.media()) {
      const std::int64_t own = number++;
      if (!medium.place || !medium.isThere) continue;
      ++summary_.mediaCount;
      const std::string place = medium.place->relativePath();
      look(place, [&] { lookAtMedium(own, medium, place); });
    }
  }

  void lookAtMedium(std::int64_t number, const KeptMedium& medium, const std::string& place) {
    const fs::path file = contentRoot_ / PathText::path(place);
    if (!stands(file, place, medium.size)) return;
    if (medium.isDoubtful) find(Kind::notArchived, place, fmt::format("“{}” {}", place, mayBeDamaged));
    std::string digest = FileDigest::of(file, control_.isCancelled);
    const bool isAsSent = digest == medium.sentDigest;
    if (!medium.digest.empty() && medium.digest != digest && !isAsSent) return changed(place);
    if (!isAsSent && !medium.sentDigest.empty() && isOtherwiseInBackup(medium, digest)) {
      return find(Kind::changed, place,
                  fmt::format("“{}” has other bytes than in the backup. {}", place, adviceToReplace));
    }
    if (medium.digest == digest) return;
    library_.media().keepDigest(number, std::move(digest));
    ++summary_.newDigestCount;
  }

  // A file that is not what WhatsApp sent may have been changed by the phone since: the backup has it so, too.
  bool isOtherwiseInBackup(const KeptMedium& medium, const std::string& digest) {
    if (!backupMedia_) return false;
    const auto there = backupMedia_->digest(medium.path, medium.size, control_.isCancelled);
    return there && *there != digest;
  }

  void keepDigests() {
    if (summary_.newDigestCount == 0) return;
    const bool isKept = kept([this] { library_.media().save(library_.database()); });
    if (!isKept) summary_.newDigestCount = 0;
  }

  // Whether the drive takes anything: what is verified may well stand on one that can only be read.
  template <typename Write>
  bool kept(Write write) {
    try {
      SQLiteTransaction transaction(library_.database());
      write();
      transaction.commit();
      return true;
    } catch (const fs::filesystem_error& error) {
      if (error.code() != std::errc::read_only_file_system) throw;
      return false;
    }
  }

  // So that the next export brings what they lack.
  void forgetDigests(const std::vector<std::size_t>& chats) {
    if (chats.empty()) return;
    kept([&] {
      for (const std::size_t place : chats) KeptChats::forgetDigest(library_.database(), library_.chats()[place].id);
    });
  }

  void lookAtChats() {
    const std::map<std::int64_t, std::int64_t> counts = messageCounts();
    for (const KeptChat& chat : library_.chats()) {
      ++summary_.chatCount;
      const auto counted = counts.find(chat.id);
      const std::int64_t count = counted == counts.end() ? 0 : counted->second;
      summary_.messageCount += count;
      const auto rendering = renderings_.chats.find(chat.id);
      if (rendering == renderings_.chats.end() || rendering->second.changed != chat.changed) {
        find(Kind::unfinished, chat.name, fmt::format("The pages of “{}” were not finished. Export again.", chat.name));
        continue;
      }
      if (rendering->second.messageCount != count) contradict(chat, rendering->second.messageCount, count);
      lookAtPages(chat, rendering->second);
    }
  }

  void contradict(const KeptChat& chat, std::int64_t onPages, std::int64_t inLibrary) {
    find(Kind::library, chat.name,
         fmt::format("The pages of “{}” tell {} messages, and the library {}. {}", chat.name, onPages, inLibrary,
                     onPages > inLibrary ? LibraryFile::adviceForDamaged()
                                         : fmt::format(adviceForLibrary, LibraryFile::fileName)));
  }

  std::map<std::int64_t, std::int64_t> messageCounts() const {
    std::map<std::int64_t, std::int64_t> counts;
    library_.database().forEachRow("SELECT chat, count(*) FROM message GROUP BY chat", [&](const SQLiteRowView& row) {
      counts.emplace(row.integer(0).value_or(0), row.integer(1).value_or(0));
    });
    return counts;
  }

  void lookAtPages(const KeptChat& chat, const ChatRendering& rendering) {
    const std::string data = ArchiveScripts::chatFileName(chat.page);
    for (const auto& [name, file] : rendering.files) {
      const fs::path folder = name == data ? dataFolder_ : contentRoot_ / PathText::path(rendering.folder);
      lookAtFile(folder / PathText::path(name), file.size, [this, &digest = file.digest](const fs::path& page) {
        return FileDigest::of(page, control_.isCancelled) == digest;
      });
    }
  }

  void lookAtBlocks() {
    for (const auto& [number, blocks] : renderings_.shelves) {
      for (const RenderedBlock& block : blocks) {
        lookAtFile(dataFolder_ / PathText::path(block.file), block.size, [&](const fs::path& file) {
          const auto content = Files::readIfThere(file, block.size);
          return content && MessageBlocks::fileName(textOf(*content)) == block.file;
        });
        for (const RenderedBlock::Part& part : block.parts) linesByPage_[part.page] += part.count;
      }
    }
    for (const KeptChat& chat : library_.chats()) {
      const auto rendering = renderings_.chats.find(chat.id);
      if (rendering == renderings_.chats.end()) continue;
      const auto lines = linesByPage_.find(chat.page);
      if ((lines == linesByPage_.end() ? 0 : lines->second) == rendering->second.messageCount) continue;
      find(Kind::unfinished, chat.name,
           fmt::format("The blocks of “{}” do not hold all of its messages. Export again.", chat.name));
    }
  }

  // `isRight` is asked of a file that stands with its length.
  template <typename IsRight>
  void lookAtFile(const fs::path& file, std::int64_t size, IsRight isRight) {
    const std::string place = PathText::text(file.lexically_relative(contentRoot_));
    look(place, [&] {
      if (stands(file, place, size) && !isRight(file)) changed(place);
    });
  }

  // What the page opens with.
  void lookAtList() {
    const fs::path file = dataFolder_ / FolderNames::archiveChats;
    const std::string place = PathText::text(file.lexically_relative(contentRoot_));
    look(place, [&] {
      const auto content = Files::readIfThere(file, largestList);
      if (!content) {
        find(Kind::missing, place, fmt::format("“{}” is missing. {}", place, advice));
      } else if (!isRight(textOf(*content))) {
        find(Kind::changed, place, fmt::format("“{}” does not list what the library has. Export again.", place));
      }
    });
  }

  bool isRight(std::string_view list) const {
    std::map<std::string, std::int64_t> listed;
    for (const ArchiveChatSummary& chat : ArchiveScripts::chats(list)) listed.emplace(chat.id, chat.messageCount);
    std::map<std::string, std::int64_t> known;
    for (const KeptChat& chat : library_.chats()) {
      const auto rendering = renderings_.chats.find(chat.id);
      if (rendering != renderings_.chats.end()) known.emplace(chat.page, rendering->second.messageCount);
    }
    return listed == known && listedBlocks(list) == knownBlocks();
  }

  // What each block holds, by its file; parts of a chat begin at their first message.
  using Blocks = std::map<std::string, std::map<std::pair<std::string, std::int64_t>, std::int64_t>>;

  static Blocks listedBlocks(std::string_view list) {
    Blocks blocks;
    for (const ArchiveBlock& block : ArchiveScripts::blocks(list).list) {
      for (const auto& [chat, first, count] : block.parts) blocks[block.file][{chat, first}] = count;
    }
    return blocks;
  }

  Blocks knownBlocks() const {
    Blocks known;
    for (const auto& [number, blocks] : renderings_.shelves) {
      for (const RenderedBlock& block : blocks) {
        for (const auto& [page, first, count] : block.parts) known[block.file][{page, first}] = count;
      }
    }
    return known;
  }

  void lookAtBackup() {
    const auto step = [this](const std::string& name) {
      throwIfCancelled(control_.isCancelled);
      progress_.report(name, completed_++);
    };
    const BackupVerification::Ground ground{.backup = *backup_, .library = library_, .contentRoot = contentRoot_};
    const EarlyEnd::Places places{.backup = &backup_->opened.url()};
    auto outcome = EarlyEnd::explained(places, [&] { return BackupVerification::compare(ground, step); });
    EarlyEnd::requireBackup(places);  // all of one that was taken away would be absent
    std::ranges::move(outcome.findings, std::back_inserter(summary_.findings));
    forgetDigests(outcome.forgetfulChats);
    summary_.warnings = backup_->warnings;
  }

  const fs::path& contentRoot_;
  const fs::path dataFolder_;
  Library& library_;
  const BackupSource* backup_;
  std::optional<BackupMedia> backupMedia_;
  const Renderings renderings_;
  const RunControl& control_;
  ProgressReporter progress_;
  std::map<std::string, std::int64_t> linesByPage_;  // by page ID
  VerifySummary summary_;
  std::int64_t completed_ = 0;
};

// One that is damaged is all that can be said of an export.
VerifySummary damaged() {
  VerifySummary summary;
  summary.findings.push_back(
      {.kind = Kind::library, .place = LibraryFile::fileName, .message = LibraryFile::adviceForDamaged()});
  return summary;
}

Library openLibrary(const fs::path& contentRoot) {
  auto file = LibraryFile::openIfThere(contentRoot);
  if (file) return Library(std::move(*file));
  throw TidewellError::ioFailure(
      "This folder holds no export that can be verified. One from an earlier version can be after the next export.");
}

// Absent where none is wanted.
std::optional<BackupSource> readBackup(const VerifyJob& job, const RunControl& control) {
  if (!job.backup) return std::nullopt;
  TemporaryFolder::sweep();
  ProgressReporter progress(control.progress);
  const BackupToRead backup{.backup = *job.backup,
                            .password = job.password,
                            .passwordKey = job.passwordKey,
                            .unlockReport = job.unlockReport};
  return EarlyEnd::explained({.backup = &*job.backup}, [&] { return BackupReading::read(backup, progress, control); });
}

}  // namespace

VerifySummary Verification::run(const VerifyJob& job, const RunControl& control) {
  const fs::path destination = ExportDestination::meant(job.destination);
  if (!Files::isFolder(destination)) throw TidewellError::ioFailure("There is no export in this folder.");
  const DestinationLock lock(destination);
  const fs::path contentRoot = ExportLayout::resolveContentRoot(destination);
  std::optional<Library> library;
  try {
    library.emplace(openLibrary(contentRoot));
  } catch (const SQLiteDamage&) {
    return damaged();
  }
  const std::optional<BackupSource> backup = readBackup(job, control);  // whose databases may be damaged, too
  try {
    if (backup) ArchiveOwner::requireSame(library->database(), backup->snapshot);
    return Run(contentRoot, *library, backup ? &*backup : nullptr, control).run();
  } catch (const SQLiteDamage&) {
    return damaged();
  }
}
