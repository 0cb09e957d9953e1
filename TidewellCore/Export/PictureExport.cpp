#include "TidewellCore/Export/PictureExport.h"

#include "TidewellCore/Archive/ProfilePictures.h"
#include "TidewellCore/Export/EarlyEnd.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

// In seconds since 1970; 0 where the backup does not tell.
double dateOf(const BackupSource& backup) {
  const std::optional<Date>& date = backup.opened.info().backupDate;
  return date ? unixTime(*date) : 0;
}

bool hasNewerPicture(const KeptChat& chat, const std::filesystem::path& contentRoot, double backupDate) {
  return chat.avatar && chat.toldAt > backupDate && Files::isRegularFile(contentRoot / PathText::path(*chat.avatar));
}

}  // namespace

PictureExport::Outcome PictureExport::copy(const BackupSource& backup, const Library& library, const Place& place,
                                           FailureLog& failures, const CancellationCheck& isCancelled) {
  std::vector<ArchiveChat> chats;
  for (const KeptChat& chat : library.chats()) {
    if (hasNewerPicture(chat, place.contentRoot, dateOf(backup))) continue;
    chats.push_back({.id = chat.page, .name = chat.name, .jid = chat.jid});
  }
  const auto lost = [&](const std::exception& error, const ProfilePictures::Loss& loss) {
    failures.add(error,
                 {.name = loss.name, .chat = loss.chat.name, .reason = CopyFailures::reasonOf(error, loss.source)});
  };
  auto copied = ProfilePictures::attachAndCopy(chats, backup, place.contentRoot, lost, isCancelled);
  // An archive without pictures would look whole.
  EarlyEnd::requireBackup({.backup = &backup.opened.url(), .destination = &place.destination});
  Outcome outcome{.doubtful = std::move(copied.doubtful)};
  for (const ArchiveChat& chat : chats) {
    if (chat.avatarRelativePath) outcome.pictures.emplace(chat.id, *chat.avatarRelativePath);
  }
  return outcome;
}
