#include "TidewellCore/Export/ArchiveExport.h"

#include <algorithm>
#include <limits>
#include <map>

#include "TidewellCore/Archive/ChatLines.h"
#include "TidewellCore/Archive/MessageFiles.h"
#include "TidewellCore/Archive/ProfilePictures.h"
#include "TidewellCore/Archive/TranscriptWriter.h"
#include "TidewellCore/ChatData/JID.h"
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
    return written + writeMessageFiles(chat, folder);
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
  // Likewise.
  std::int64_t writeMessageFiles(const ArchiveChat& chat, const fs::path& folder) {
    const ChatArchiveWriter::Setting& archive = setting_.archive;
    std::int64_t written = 0;
    for (const MessageFormat format : setting_.formats) {
      const char* name = MessageFiles::nameOf(format);
      written += attempt(chat, name, [&] {
        Files::writeWhenDifferent(folder / name, MessageFiles::render(format, chat, archive.style, archive.timeZone));
      });
    }
    return written;
  }

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

// The date of each chat's newest message, by the chat's number.
std::map<std::int64_t, double> newestDates(const SQLiteDB& database) {
  std::map<std::int64_t, double> dates;
  database.forEachRow("SELECT chat, max(time) FROM message GROUP BY chat", [&](const SQLiteRowView& row) {
    if (const auto newest = row.number(1)) dates.emplace(row.integer(0).value_or(0), *newest);
  });
  return dates;
}

// A chat and how pages show it.
struct ShownChat {
  const KeptChat* kept;
  ArchiveChat shown;
};

// Every chat of the library, without messages, the one with the newest message first.
std::vector<ShownChat> shownChats(const Library& library, const ExportPlan& plan, const fs::path& contentRoot) {
  const std::vector<KeptChat>& kept = library.chats();
  std::vector<std::string> folders(kept.size());
  for (const PlannedChat& chat : plan.chats) {
    for (const std::size_t place : library.chatsOf({chat.jid.text()})) {
      if (folders[place].empty() || chat.isInExport) folders[place] = chat.folder;
    }
  }
  std::vector<ShownChat> chats;
  for (std::size_t place = 0; place < kept.size(); ++place) {
    const KeptChat& chat = kept[place];
    chats.push_back({.kept = &chat,
                     .shown = {.id = chat.page,
                               .name = chat.name,
                               .jid = chat.jid,
                               .folder = folders[place],
                               .isGroup = JID::isGroup(chat.jid),
                               .isGone = chat.isGone}});
    const bool hasPicture = chat.avatar && Files::isRegularFile(contentRoot / PathText::path(*chat.avatar));
    if (hasPicture) chats.back().shown.avatarRelativePath = chat.avatar;
  }
  const std::map<std::int64_t, double> dates = newestDates(library.database());
  std::ranges::stable_sort(chats, std::greater(), [&](const ShownChat& chat) {
    const auto newest = dates.find(chat.kept->id);
    return newest == dates.end() ? -std::numeric_limits<double>::infinity() : newest->second;
  });
  return chats;
}

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
  const ChatLines lines(source.library, setting.archive.style);
  std::vector<ShownChat> shown = shownChats(source.library, source.plan, setting.archive.contentRoot);
  std::vector<ArchiveChat> chats;
  for (ShownChat& chat : shown) chats.push_back(std::move(chat.shown));
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
    const KeptChat& kept = *shown[static_cast<std::size_t>(completed)].kept;
    progress.report(chat.folder, completed);
    chat.messages = lines.messages(kept);
    if (!chat.folder.empty()) outcome.transcriptCount += writing.writeTranscripts(chat);
    writing.addTo(archive, chat);
    if (chat.avatarRelativePath) outcome.pictures.emplace(chat.id, *chat.avatarRelativePath);
    outcome.unresolvedLinkCount += unresolvedLinks(chat, setting.kinds);
    progress.report(chat.folder, ++completed);
    chat.messages = {};
  }
  outcome.page = archive.finish();
  return outcome;
}
