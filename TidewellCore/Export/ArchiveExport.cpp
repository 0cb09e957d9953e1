#include "TidewellCore/Export/ArchiveExport.h"

#include <algorithm>
#include <map>
#include <set>

#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatLines.h"
#include "TidewellCore/Archive/MessageFiles.h"
#include "TidewellCore/Archive/TranscriptWriter.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Edition.h"
#include "TidewellCore/Export/RenderingPlan.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

// Where a chat's picture stands, from the content root.
std::optional<std::string> pictureOf(const KeptChat& chat, const ArchiveExport::Source& source,
                                     const fs::path& contentRoot) {
  const auto copied = source.pictures.find(chat.page);
  if (copied != source.pictures.end()) return copied->second;
  const bool stands = chat.avatar && Files::isRegularFile(contentRoot / PathText::path(*chat.avatar));
  return stands ? chat.avatar : std::nullopt;
}

// Every chat of the library as pages show it, without messages, in the library's order.
std::vector<ArchiveChat> shownChats(const ArchiveExport::Source& source, const fs::path& contentRoot) {
  const std::vector<KeptChat>& kept = source.library.chats();
  std::vector<ArchiveChat> chats;
  for (std::size_t place = 0; place < kept.size(); ++place) {
    const KeptChat& chat = kept[place];
    chats.push_back({.id = chat.page,
                     .name = chat.name,
                     .jid = chat.jid,
                     .folder = source.folders[place],
                     .isGroup = JID::isGroup(chat.jid),
                     .avatarRelativePath = pictureOf(chat, source, contentRoot),
                     .isGone = chat.isGone});
  }
  return chats;
}

std::map<MediaKind, std::int64_t> absentMedia(const ArchiveChat& chat) {
  std::map<MediaKind, std::int64_t> absent;
  for (const ArchiveMessage& message : chat.messages) {
    const bool isAbsent = message.media && !message.media->exported;
    const std::optional<MediaKind> kind = isAbsent ? std::optional(message.media->kind) : message.lostMedium;
    if (kind) ++absent[*kind];
  }
  return absent;
}

// Writes what people read of an export, chat after chat.
class Writing {
 public:
  Writing(const ArchiveExport::Source& source, const ArchiveExport::Setting& setting, FailureLog& failures,
          const CancellationCheck& isCancelled, ProgressReporter& progress)
      : source_(source),
        setting_(setting),
        failures_(failures),
        isCancelled_(isCancelled),
        progress_(progress),
        known_(Renderings::load(source.library.database())),
        chats_(shownChats(source, setting.archive.contentRoot)),
        formats_(wantedFormats()),
        lines_(source.library, setting.archive.style),
        files_(setting.disk) {}

  ArchiveExport::Outcome run() {
    for (const ArchiveChat& chat : chats_) {
      if (chat.avatarRelativePath) outcome_.pages.pictures.emplace(chat.id, *chat.avatarRelativePath);
    }
    ChatArchiveWriter::Setting setting = setting_.archive;
    setting.writeFile = [this](const fs::path& path, std::string_view content) { writeFile(path, content); };
    ChatArchiveWriter archive(std::move(setting));
    const RenderingPlan pages = plan();
    doubtOtherManners(pages);
    for (const RenderingPlan::Shelf& shelf : pages.shelves) {
      if (shelf.isStale) {
        fill(archive, shelf);
      } else {
        keep(archive, shelf);
      }
    }
    settle();
    outcome_.page = archive.finish();
    return std::move(outcome_);
  }

 private:
  // Whose file it is, and what it is called when it fails: blocks and data are the archive's page.
  struct Page {
    std::size_t chat = 0;
    std::int64_t shelf = 0;
    std::string name;
  };
  static Page pageOf(const RenderingPlan::Chat& chat, const char* name) {
    return {.chat = chat.number, .shelf = chat.rendering.shelf, .name = name};
  }

  const ChatArchiveWriter::Setting& archive() const { return setting_.archive; }
  const KeptChat& kept(std::size_t number) const { return source_.library.chats()[number]; }

  // Those that are asked for, and those that stand: they are not to grow old beside the other pages.
  MessageFormats wantedFormats() const {
    MessageFormats formats = setting_.formats;
    for (const auto& [format, name] : rawValueTable(MessageFormat())) {
      if (hasFiles(MessageFiles::nameOf(format))) formats.insert(format);
    }
    return formats;
  }

  // Whether any chat has a file of that name, or had one when its pages were written.
  bool hasFiles(const char* name) const {
    return std::ranges::any_of(known_.chats, [&](const auto& chat) { return chat.second.files.contains(name); }) ||
           std::ranges::any_of(chats_, [&](const ArchiveChat& chat) {
             return !chat.folder.empty() &&
                    Files::isRegularFile(archive().contentRoot / PathText::path(chat.folder) / name);
           });
  }

  RenderingPlan plan() const {
    const SQLiteDB& library = source_.library.database();
    Renderings known = known_;
    if (setting_.isAllStale) known.doubt();
    std::vector<RenderingPlan::Subject> subjects;
    for (std::size_t number = 0; number < chats_.size(); ++number) {
      subjects.push_back({.kept = &kept(number), .manner = mannerOf(chats_[number]), .files = filesOf(chats_[number])});
    }
    return RenderingPlan::make(subjects, known, library, ChatArchiveWriter::dataFolder(archive().contentRoot));
  }

  // Pages of another manner, such as another time zone, may have the lengths of those in whose place they come. Until
  // all are made and told, it is not known which stand.
  void doubtOtherManners(const RenderingPlan& pages) const {
    std::vector<std::int64_t> doubtful;
    for (const RenderingPlan::Shelf& shelf : pages.shelves) {
      for (const RenderingPlan::Chat& chat : shelf.chats) {
        const auto known = known_.chats.find(kept(chat.number).id);
        if (known == known_.chats.end() || known->second.manner == chat.rendering.manner) continue;
        doubtful.push_back(known->first);
      }
    }
    if (doubtful.empty()) return;
    SQLiteTransaction transaction(source_.library.database());
    Renderings::doubt(source_.library.database(), doubtful);
    transaction.commit();
  }

  // All that a chat's pages depend on beside what KeptChat::changed stands for.
  Bytes mannerOf(const ArchiveChat& chat) const {
    const TranscriptStyle& style = archive().style;
    Json::Array parts;
    for (const std::string_view part :
         {Edition::digest(), std::string_view(dateRules_), std::string_view(style.languageCode),
          std::string_view(style.youLabel), std::string_view(style.unknownSenderLabel),
          std::string_view(archive().timeZone.identifier), std::string_view(archive().locale.identifier),
          std::string_view(chat.folder)}) {
      parts.emplace_back(part);
    }
    if (chat.avatarRelativePath) parts.emplace_back(*chat.avatarRelativePath);
    const std::string text = Json(std::move(parts)).write();
    const std::array digest = sha256(bytesOf(text));
    return {digest.begin(), digest.end()};
  }

  std::vector<RenderingPlan::File> filesOf(const ArchiveChat& chat) const {
    std::vector<RenderingPlan::File> files;
    const std::string data = ArchiveScripts::chatFileName(chat.id);
    files.push_back({data, ChatArchiveWriter::dataFolder(archive().contentRoot) / PathText::path(data)});
    if (chat.folder.empty()) return files;
    const fs::path folder = archive().contentRoot / PathText::path(chat.folder);
    for (const char* name : {FolderNames::textTranscript, FolderNames::htmlTranscript}) {
      files.push_back({name, folder / name});
    }
    for (const MessageFormat format : formats_) {
      const char* name = MessageFiles::nameOf(format);
      files.push_back({name, folder / name});
    }
    return files;
  }

  // A shelf that stands as it was left.
  void keep(ChatArchiveWriter& pages, const RenderingPlan::Shelf& shelf) {
    for (const RenderedBlock& block : shelf.blocks) pages.blocks().keep(block);
    for (const RenderingPlan::Chat& chat : shelf.chats) {
      progress_.report(chats_[chat.number].folder, completed_);
      enter(pages, chat, chat.rendering);
    }
    outcome_.pages.renderings.shelves.emplace(shelf.number, shelf.blocks);
  }

  // One of which something is made anew, and so all of its blocks.
  void fill(ChatArchiveWriter& pages, const RenderingPlan::Shelf& shelf) {
    bool isWhole = true;
    for (const RenderingPlan::Chat& chat : shelf.chats) {
      throwIfCancelled(isCancelled_);
      ArchiveChat& shown = chats_[chat.number];
      progress_.report(shown.folder, completed_);
      shown.messages = lines_.messages(kept(chat.number));
      isWhole &= chat.isStale ? make(pages, chat) : makeLines(pages, chat);
      shown.messages = {};
      if (files_.isFull()) settle();
    }
    std::vector<RenderedBlock> blocks = pages.blocks().endShelf();
    isWhole &= !brokenShelves_.contains(shelf.number);
    if (isWhole) outcome_.pages.renderings.shelves.emplace(shelf.number, std::move(blocks));
  }

  // To come into its place together with others.
  void writeFile(const fs::path& path, std::string_view content) {
    files_.write(path, content);
    pages_.insert_or_assign(path, beingWritten_);
  }

  // Brings the files that were written into their places. A chat that lacks one of them is as good as not made.
  void settle() {
    for (const auto& [path, reason] : files_.settle()) {
      const Page page = pages_.at(path);
      attempt(page, [&failure = reason] { std::rethrow_exception(failure); });
      if (page.name != FolderNames::archivePage) --outcome_.transcriptCount;
      outcome_.pages.renderings.chats.erase(kept(page.chat).id);
      outcome_.pages.renderings.shelves.erase(page.shelf);
      brokenShelves_.insert(page.shelf);
    }
    pages_.clear();
  }

  // Makes all pages of a chat. Tells whether all could be written.
  bool make(ChatArchiveWriter& pages, const RenderingPlan::Chat& chat) {
    const ArchiveChat& shown = chats_[chat.number];
    const ArchiveChatSummary summary = ChatArchiveWriter::summary(shown, archive().style);
    ChatRendering rendering = chat.rendering;
    rendering.preview = summary.preview;
    rendering.messageCount = summary.messageCount;
    rendering.lastTimestamp = summary.lastTimestamp;
    rendering.absent = absentMedia(shown);
    rendering.folder = shown.folder;
    if (!shown.folder.empty()) writeTranscripts(chat, rendering.files);
    attempt(pageOf(chat, FolderNames::archivePage),
            [&] { rendering.files[summary.dataFile] = pages.writeMessages(shown); });
    return enter(pages, chat, std::move(rendering));
  }

  bool makeLines(ChatArchiveWriter& pages, const RenderingPlan::Chat& chat) {
    const bool isDone = attempt(pageOf(chat, FolderNames::archivePage), [&] { pages.writeLines(chats_[chat.number]); });
    enter(pages, chat, chat.rendering);
    return isDone;
  }

  // What cannot be written of a chat is recorded.
  void writeTranscripts(const RenderingPlan::Chat& planned, RenderedFiles& files) {
    const ArchiveChat& chat = chats_[planned.number];
    const fs::path folder = archive().contentRoot / PathText::path(chat.folder);
    const TranscriptStyle& style = archive().style;
    const auto write = [&](const char* name, auto render) {
      attempt(pageOf(planned, name), [&] {
        MakeRoom::forFolder(folder);
        const std::string text = render();
        writeFile(folder / name, text);
        files[name] = RenderedFile::of(text);
      });
    };
    write(FolderNames::textTranscript, [&] { return TranscriptWriter::renderText(chat, style, dates_); });
    write(FolderNames::htmlTranscript, [&] { return TranscriptWriter::renderHTML(chat, style, dates_); });
    for (const MessageFormat format : formats_) {
      write(MessageFiles::nameOf(format),
            [&] { return MessageFiles::render(format, chat, style, archive().timeZone); });
    }
  }

  template <typename Work>
  bool attempt(const Page& page, Work work) {
    try {
      beingWritten_ = page;
      work();
      return true;
    } catch (const std::exception& error) {
      failures_.add(error,
                    {.name = page.name, .chat = chats_[page.chat].name, .reason = CopyFailures::reasonOf(error, {})});
      return false;
    }
  }

  // Lists a chat and counts what its pages came to. Tells whether all that are wanted stand.
  bool enter(ChatArchiveWriter& pages, const RenderingPlan::Chat& chat, ChatRendering rendering) {
    const ArchiveChat& shown = chats_[chat.number];
    const std::string dataFile = ArchiveScripts::chatFileName(shown.id);
    pages.list({.id = shown.id,
                .name = shown.name,
                .jid = shown.jid,
                .folder = shown.folder,
                .dataFile = dataFile,
                .isGroup = shown.isGroup,
                .preview = rendering.preview,
                .messageCount = rendering.messageCount,
                .lastTimestamp = rendering.lastTimestamp,
                .avatarRelativePath = shown.avatarRelativePath,
                .isGone = shown.isGone});
    for (const auto& [kind, count] : rendering.absent) {
      if (setting_.kinds.contains(kind)) outcome_.unresolvedLinkCount += count;
    }
    const std::vector<RenderingPlan::File> wanted = filesOf(shown);
    const auto standing = std::ranges::count_if(
        wanted, [&](const RenderingPlan::File& file) { return rendering.files.contains(file.name); });
    outcome_.transcriptCount += standing - (rendering.files.contains(dataFile) ? 1 : 0);
    progress_.report(shown.folder, ++completed_);
    const bool isWhole = standing == std::ssize(wanted);
    if (isWhole) outcome_.pages.renderings.chats.emplace(kept(chat.number).id, std::move(rendering));
    return isWhole;
  }

  const ArchiveExport::Source& source_;
  const ArchiveExport::Setting& setting_;
  FailureLog& failures_;
  const CancellationCheck& isCancelled_;
  ProgressReporter& progress_;
  const Renderings known_;          // as they stood
  std::vector<ArchiveChat> chats_;  // by their places in the library
  const MessageFormats formats_;
  const ChatLines lines_;
  const TranscriptDates dates_{archive().timeZone, archive().locale};
  const std::string dateRules_ = dateRulesVersion();
  ArchiveExport::Outcome outcome_;
  std::int64_t completed_ = 0;
  FileBatch files_;
  Page beingWritten_;
  std::map<fs::path, Page> pages_;  // of the files that wait
  std::set<std::int64_t> brokenShelves_;
};

}  // namespace

ArchiveExport::Outcome ArchiveExport::write(const Source& source, const Setting& setting, FailureLog& failures,
                                            const CancellationCheck& isCancelled, ProgressReporter& progress) {
  return Writing(source, setting, failures, isCancelled, progress).run();
}
