#include "TidewellCore/Export/ArchiveExport.h"

#include <algorithm>

#include "TidewellCore/Archive/ProfilePictures.h"
#include "TidewellCore/Archive/TranscriptWriter.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Writes what people read of an export, chat after chat.
class Writing {
 public:
  Writing(const ArchiveExport::Source& source, const ArchiveExport::Setting& setting, FailureLog& failures)
      : source_(source), setting_(setting), failures_(failures) {}

  // Returns the number of files written. One that cannot be written is recorded.
  std::int64_t writeTranscripts(const ArchiveChat& chat) {
    const ChatArchiveWriter::Setting& archive = setting_.archive;
    const fs::path folder = archive.contentRoot / PathText::path(chat.folder);
    std::int64_t written = 0;
    written += attempt(chat, FolderNames::textTranscript, [&] {
      MakeRoom::forFolder(folder);
      Files::writeWhenDifferent(folder / FolderNames::textTranscript,
                                TranscriptWriter::renderText(chat, archive.style, archive.timeZone, setting_.locale));
    });
    written += attempt(chat, FolderNames::htmlTranscript, [&] {
      Files::writeWhenDifferent(folder / FolderNames::htmlTranscript,
                                TranscriptWriter::renderHTML(chat, archive.style, archive.timeZone, setting_.locale));
    });
    return written;
  }

  void addTo(ChatArchiveWriter& archive, const ArchiveChat& chat) {
    attempt(chat, FolderNames::archivePage, [&] { archive.add(chat); });
  }

  void copyPictures(std::vector<ArchiveChat>& chats, const CancellationCheck& isCancelled) {
    const auto lost = [&](const std::exception& error, const ProfilePictures::Loss& loss) {
      failures_.add(error,
                    {.name = loss.name, .chat = loss.chat.name, .reason = CopyFailures::reasonOf(error, loss.source)});
    };
    ProfilePictures::attachAndCopy(chats, source_.backup, setting_.archive.contentRoot, lost, isCancelled);
  }

 private:
  // Returns 1 when it succeeds, else 0.
  template <typename Work>
  std::int64_t attempt(const ArchiveChat& chat, const char* name, Work work) {
    try {
      work();
      return 1;
    } catch (const std::exception& error) {
      failures_.add(error, {.name = name, .chat = chat.name, .reason = CopyFailures::reasonOf(error, {})});
      return 0;
    }
  }

  const ArchiveExport::Source& source_;
  const ArchiveExport::Setting& setting_;
  FailureLog& failures_;
};

std::int64_t unresolvedLinks(const ArchiveChat& chat, const MediaKinds& kinds) {
  return std::ranges::count_if(chat.messages, [&](const ArchiveMessage& message) {
    const bool isAbsent = message.media && !message.media->exported;
    const std::optional<MediaKind> kind = isAbsent ? std::optional(message.media->kind) : message.lostMedium;
    return kind && kinds.contains(*kind);
  });
}

}  // namespace

ArchiveExport::Outcome ArchiveExport::write(const Source& source, const Setting& setting, FailureLog& failures,
                                            const CancellationCheck& isCancelled, ProgressReporter& progress) {
  const ChatLines lines(source.backup.snapshot);
  const MediaLinks links(source.plan, source.media);
  std::vector<ArchiveChat> chats = lines.chats(PlannedChats::folders(source.plan.chats));
  progress.begin(ExportProgress::Phase::writingTranscripts, static_cast<std::int64_t>(chats.size()));
  Writing writing(source, setting, failures);
  writing.copyPictures(chats, isCancelled);
  // An archive without pictures would look whole.
  EarlyEnd::requireBackup({.backup = source.backup.opened.url(), .destination = &setting.archive.destination});

  ChatArchiveWriter archive(setting.archive);
  Outcome outcome;
  std::int64_t completed = 0;
  for (ArchiveChat& chat : chats) {
    throwIfCancelled(isCancelled);
    progress.report(chat.folder, completed);
    chat.messages = lines.messages(chat.jid, links, setting.archive.style);
    if (!chat.folder.empty()) outcome.transcriptCount += writing.writeTranscripts(chat);
    writing.addTo(archive, chat);
    outcome.unresolvedLinkCount += unresolvedLinks(chat, setting.kinds);
    progress.report(chat.folder, ++completed);
    chat.messages = {};
  }
  outcome.page = archive.finish();
  return outcome;
}
