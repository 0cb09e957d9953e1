#include "Tests/Fuzz/DestinationTargets.h"

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ArchiveRelocation.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Export/ExportPreferences.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

const Fixture::TemporaryDirectory& scratch() {
  static const Fixture::TemporaryDirectory folder;
  return folder;
}

}  // namespace

void DestinationTargets::folderManifest(ByteView input) {
  const fs::path contentRoot = scratch() / "messages";
  Fixture::writeFile(contentRoot / FolderManifest::fileName, input);
  for (const auto& [jid, folder] : FolderManifest::load(contentRoot)) {
    precondition(!jid.empty() && FileNaming::isSafeComponent(folder), "a folder that is remembered may be opened");
  }
}

void DestinationTargets::preferences(ByteView input) {
  const fs::path file = scratch() / "preferences.json";
  Fixture::writeFile(file, input);
  const ExportPreferences remembered = ExportPreferences::load(file);
  precondition(Text::isValid(remembered.lastBackupPath.value_or("")), "a path that is remembered is UTF-8");
  precondition(Text::isValid(remembered.lastDestinationPath.value_or("")), "a path that is remembered is UTF-8");
}

void DestinationTargets::archive(ByteView input) {
  const fs::path data = scratch() / "data";
  fs::remove_all(data);
  Fixture::writeFile(data / "chats.js", input);
  Fixture::writeFile(data / "chat-a.js", input);
  const auto chats = ArchiveRelocation::loadChats(data);
  for (const auto& chat : chats) {
    precondition(FileNaming::isSafeComponent(chat.folder), "a folder of the archive's may be opened");
  }
  const auto nothingMoves = [](const std::string&) { return std::optional<std::string>(); };
  precondition(!ArchiveRelocation::rewrite(data, {nothingMoves, nothingMoves}), "what has not moved is left alone");
  const auto moved = [](const std::string& place) {
    return place.starts_with("Ana") ? std::optional("Eva" + place.substr(3)) : std::nullopt;
  };
  ArchiveRelocation::rewrite(data, {moved, moved});
  precondition(ArchiveRelocation::loadChats(data).size() == chats.size(), "no chat is lost by a move");
}
