#include "TidewellCore/Export/PictureExport.h"

#include "TidewellCore/Archive/ProfilePictures.h"
#include "TidewellCore/Export/EarlyEnd.h"

PictureExport::Pictures PictureExport::copy(const BackupSource& backup, const Library& library, const Place& place,
                                            FailureLog& failures, const CancellationCheck& isCancelled) {
  std::vector<ArchiveChat> chats;
  for (const KeptChat& chat : library.chats()) chats.push_back({.id = chat.page, .name = chat.name, .jid = chat.jid});
  const auto lost = [&](const std::exception& error, const ProfilePictures::Loss& loss) {
    failures.add(error,
                 {.name = loss.name, .chat = loss.chat.name, .reason = CopyFailures::reasonOf(error, loss.source)});
  };
  ProfilePictures::attachAndCopy(chats, backup, place.contentRoot, lost, isCancelled);
  // An archive without pictures would look whole.
  EarlyEnd::requireBackup({.backup = &backup.opened.url(), .destination = &place.destination});
  Pictures pictures;
  for (const ArchiveChat& chat : chats) {
    if (chat.avatarRelativePath) pictures.emplace(chat.id, *chat.avatarRelativePath);
  }
  return pictures;
}
