#include "TidewellCore/Archive/ArchiveRelocation.h"

#include <set>

#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

namespace fs = std::filesystem;
using ArchiveRelocation::NewPlaces;

constexpr std::int64_t largestFile = std::int64_t{4} << 30;

std::optional<Bytes> read(const fs::path& file) { return Files::readIfThere(file, largestFile); }

std::string fileNameShown(std::string_view place) { return ReadableText::cleaned(PathText::lastComponent(place)); }

// An archive's data files, rewritten one after another.
class Rewriting {
 public:
  Rewriting(const fs::path& folder, const NewPlaces& places) : folder_(folder), places_(places) {}

  bool run() {
    const fs::path list = folder_ / FolderNames::archiveChats;
    const std::optional<Bytes> content = read(list);
    if (!content) return false;
    const std::string text(textOf(*content));
    const std::string newText = ArchiveScripts::changedList(
        text, {.block = [this](ArchiveBlock& block, MessageLine::Form form) { rewriteBlock(block, form); },
               .chat = [this](ArchiveChatSummary& chat) { move(chat); }});
    rewriteDataFiles();
    if (newText != text) write(list, newText);
    removeFormerBlocks();
    return isChanged_;
  }

 private:
  void move(ArchiveChatSummary& chat) {
    addDataFile(chat.dataFile);
    const auto folder = places_.folder(chat.folder);
    if (folder) chat.folder = *folder;
  }

  void move(ArchiveMessage& message) const {
    if (!message.media || !message.media->relativePath) return;
    ArchiveMedia& media = *message.media;
    const auto place = places_.file(*media.relativePath);
    if (!place) return;
    if (media.fileName == fileNameShown(*media.relativePath)) media.fileName = fileNameShown(*place);
    media.relativePath = *place;
  }

  void rewriteBlock(ArchiveBlock& block, MessageLine::Form form) {
    if (!FileNaming::isSafeComponent(block.file)) return;
    const auto script = read(folder_ / PathText::path(block.file));
    const auto newScript = script ? ArchiveScripts::changedBlock(textOf(*script), form, moveMessage_) : std::nullopt;
    if (newScript) {
      formerBlocks_.insert(block.file);
      block.file = MessageBlocks::fileName(*newScript);
      write(folder_ / block.file, *newScript);
    }
    currentBlocks_.insert(block.file);
  }

  void addDataFile(const std::string& name) {
    if (FileNaming::isSafeComponent(name)) dataFiles_.insert(name);
  }

  // Those of chats that only earlier exports had, too, which no list names.
  void rewriteDataFiles() {
    for (const Files::Entry& entry : Files::list(folder_)) {
      if (ArchiveScripts::isChatFileName(entry.name)) addDataFile(entry.name);
    }
    for (const std::string& name : dataFiles_) rewriteDataFile(folder_ / PathText::path(name));
  }

  void rewriteDataFile(const fs::path& file) {
    const auto script = read(file);
    const auto newScript = script ? ArchiveScripts::changedChat(textOf(*script), moveMessage_) : std::nullopt;
    if (newScript) write(file, *newScript);
  }

  void write(const fs::path& file, const std::string& text) {
    Files::writeAtomically(file, text);
    isChanged_ = true;
  }

  void removeFormerBlocks() const {
    for (const std::string& file : formerBlocks_) {
      if (!currentBlocks_.contains(file)) Files::remove(folder_ / PathText::path(file));
    }
  }

  const fs::path& folder_;
  const NewPlaces& places_;
  const ArchiveFormat::Change<ArchiveMessage> moveMessage_ = [this](ArchiveMessage& message) { move(message); };
  std::set<std::string> dataFiles_;
  std::set<std::string> formerBlocks_;
  std::set<std::string> currentBlocks_;
  bool isChanged_ = false;
};

}  // namespace

std::vector<ArchiveRelocation::ChatReference> ArchiveRelocation::loadChats(const fs::path& dataFolder) {
  std::vector<ChatReference> references;
  const std::optional<Bytes> list = read(dataFolder / FolderNames::archiveChats);
  if (!list) return references;
  for (const ArchiveChatSummary& chat : ArchiveScripts::chats(textOf(*list))) {
    if (chat.jid.empty() || !FileNaming::isSafeComponent(chat.folder)) continue;
    references.push_back({.jid = chat.jid, .folder = chat.folder});
  }
  return references;
}

bool ArchiveRelocation::rewrite(const fs::path& dataFolder, const NewPlaces& places) {
  return Rewriting(dataFolder, places).run();
}
