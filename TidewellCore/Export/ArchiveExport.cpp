#include "TidewellCore/Export/ArchiveExport.h"

#include <algorithm>

#include "TidewellCore/Archive/ProfilePictures.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Returns the number of files written.
std::int64_t writeTranscripts(const ArchiveChat& chat, const ArchiveExport::Setting& setting) {
  const auto& [destination, contentRoot, style, timeZone] = setting.archive;
  const fs::path folder = contentRoot / PathText::path(chat.folder);
  fs::create_directories(folder);
  const std::vector<TranscriptWriter::Line> lines = ChatLines::transcriptLines(chat);
  Files::writeWhenDifferent(folder / FolderNames::textTranscript,
                            TranscriptWriter::renderText(chat.name, lines, timeZone, setting.locale));
  Files::writeWhenDifferent(folder / FolderNames::htmlTranscript,
                            TranscriptWriter::renderHTML(chat.name, lines, style, timeZone, setting.locale));
  return 2;
}

std::int64_t unresolvedLinks(const ArchiveChat& chat, const MediaKinds& kinds) {
  return std::ranges::count_if(chat.messages, [&](const ArchiveMessage& message) {
    return message.media && !message.media->exported && kinds.contains(message.media->kind);
  });
}

}  // namespace

ArchiveExport::Outcome ArchiveExport::write(const Source& source, const Setting& setting,
                                            const CancellationCheck& isCancelled, ProgressReporter& progress) {
  const ChatLines lines(source.snapshot);
  const MediaLinks links(source.plan);
  std::vector<ArchiveChat> chats = lines.chats(source.plan.folders);
  progress.begin(ExportProgress::Phase::writingTranscripts, static_cast<std::int64_t>(chats.size()));
  ProfilePictures::attachAndCopy(
      chats, {.files = source.manifest.profilePictures, .snapshot = source.snapshot, .backup = source.opened},
      setting.archive.contentRoot, isCancelled);
  // A picture that does not read is left out; without its backup none would.
  EarlyEnd::requireBackup({.backup = source.opened.url(), .destination = &setting.archive.destination});

  ChatArchiveWriter writer(setting.archive);
  Outcome outcome;
  std::int64_t completed = 0;
  for (ArchiveChat& chat : chats) {
    throwIfCancelled(isCancelled);
    progress.report(chat.folder, completed);
    chat.messages = lines.messages(chat.jid, links, setting.archive.style);
    if (!chat.folder.empty()) outcome.transcriptCount += writeTranscripts(chat, setting);
    writer.add(chat);
    outcome.unresolvedLinkCount += unresolvedLinks(chat, setting.kinds);
    progress.report(chat.folder, ++completed);
    chat.messages = {};
  }
  outcome.page = writer.finish();
  return outcome;
}
