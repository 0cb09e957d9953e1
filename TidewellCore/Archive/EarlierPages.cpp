#include "TidewellCore/Archive/EarlierPages.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <system_error>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/JSONText.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = std::int64_t{4} << 30;

// A link is none of an export's making.
bool isFolder(const fs::path& path) { return Files::kindOf(path) == Files::Kind::folder; }

// What a drive of another system takes for more than a name is none.
bool isPlain(std::string_view name) {
  return FileNaming::isSafeComponent(name) &&
         std::ranges::none_of(name, [](char c) { return c == '\\' || (c >= 0 && c < ' ') || c == 0x7F; });
}

// "folder/file", both plain names.
std::optional<ExportPlace> placeOf(std::string_view path) {
  const auto slash = path.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  ExportPlace place{.folder = std::string(path.substr(0, slash)), .name = std::string(path.substr(slash + 1))};
  return isPlain(place.folder) && isPlain(place.name) ? std::optional(std::move(place)) : std::nullopt;
}

// 0, which no row of a phone has, for what is no number.
std::int64_t keyOf(const std::string& id) {
  std::int64_t key = 0;
  const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), key);
  return error == std::errc() && end == id.data() + id.size() ? key : 0;
}

// Whole seconds that browsers know, as pages are written.
std::optional<double> timeOf(const std::optional<double>& seconds) {
  constexpr double latest = 8'640'000'000'000;
  return seconds ? std::optional(std::round(std::clamp(*seconds, -latest, latest))) : std::nullopt;
}

bool isPicture(const std::string& path) {
  const auto place = placeOf(path);
  return place && place->folder == FolderNames::avatars;
}

// The data files of an archive, and those of them that could not be read.
class DataFiles {
 public:
  explicit DataFiles(fs::path folder) : folder_(std::move(folder)) {}

  // Absent when it is not there, or cannot be read.
  std::optional<Bytes> read(const std::string& name) {
    const fs::path file = folder_ / PathText::path(name);
    try {
      auto bytes = Files::readIfThere(file, largestFile);
      if (bytes || !Files::isRegularFile(file)) return bytes;
    } catch (const std::system_error&) {
      // It may be read elsewhere, or later.
    }
    MakeRoom::at(file);
    unread_.push_back(name);
    return std::nullopt;
  }

  std::vector<std::string> warnings() const {
    if (unread_.empty()) return {};
    const std::string others = unread_.size() == 1 ? "" : fmt::format(" and {} more", unread_.size() - 1);
    return {fmt::format(
        "What earlier exports left in “{}”{} could not be read. It was set aside under another name, and messages that "
        "only it knew may be missing. Check the drive, and keep what was set aside.",
        unread_.front(), others)};
  }

 private:
  fs::path folder_;
  std::vector<std::string> unread_;
};

// The messages of one page.
class Reading {
 public:
  using OwnMedia = std::map<ExportPlace, std::int64_t>;  // by the ledger's numbers
  struct Ground {
    const fs::path& contentRoot;
    const OwnMedia& ownMedia;  // of the backup
    MediaLedger& ledger;
  };

  Reading(const Ground& ground, const std::string& jid) : ground_(ground), jid_(jid) {}

  // One that is no message counts too.
  void add(std::string_view text) {
    ++count_;
    const auto json = Json::parse(text);
    if (const auto* object = json ? json->as<Json::Object>() : nullptr) add(*object, text);
  }
  void add(const Json::Object& object) {
    ++count_;
    std::string text;
    ChatArchiveJSON::append(text, object);
    add(object, text);
  }

  std::int64_t count() const { return count_; }
  bool isEmpty() const { return messages_.list.empty(); }
  KeptMessages finish() { return std::move(messages_); }

 private:
  void add(const Json::Object& object, std::string_view text) {
    const ArchiveMessage told = ArchiveFormat::message(object);
    KeptMessage message{.key = keyOf(told.id), .time = timeOf(told.timestamp), .isFromMe = told.fromMe};
    if (told.kind() == ArchiveKind::none && told.text) message.text = messages_.texts.add(*told.text);
    message.medium = mediumOf(told);
    message.page = messages_.texts.add(text);
    message.isDeletedLater = told.isDeletedLater;
    auto& list = messages_.list;
    const bool isSameSecond = !list.empty() && list.back().time == message.time;
    message.placeInSecond = isSameSecond ? list.back().placeInSecond + 1 : 0;
    list.push_back(message);
  }

  // A page does not tell where on the phone its file was; one that the backup still has is the backup's.
  std::optional<std::int64_t> mediumOf(const ArchiveMessage& told) {
    const auto place = told.media && told.media->relativePath ? placeOf(*told.media->relativePath) : std::nullopt;
    if (!place) return std::nullopt;
    const auto own = ground_.ownMedia.find(*place);
    if (own != ground_.ownMedia.end()) return own->second;
    const fs::path file = place->in(ground_.contentRoot);
    const auto size = isFolder(file.parent_path()) ? Files::regularFileSize(file) : std::nullopt;
    const std::string path = "archive/" + place->relativePath();
    ground_.ledger.settle({.path = path,
                           .place = *place,
                           .size = size.value_or(0),
                           .date = dateOf(told),
                           .kind = told.media->kind,
                           .chatJID = jid_,
                           .isThere = size.has_value()});
    return ground_.ledger.enter(path);
  }

  static std::optional<Date> dateOf(const ArchiveMessage& told) {
    const auto time = timeOf(told.timestamp);
    return time ? std::optional(dateFromUnixTime(*time)) : std::nullopt;
  }

  const Ground& ground_;
  const std::string& jid_;
  KeptMessages messages_;
  std::int64_t count_ = 0;
};

// An archive's pages, read one after another.
class Pages {
 public:
  Pages(const fs::path& contentRoot, const std::map<std::string, std::string>& folders, MediaLedger& ledger)
      : files_(contentRoot / FolderNames::viewer / FolderNames::viewerData),
        ground_{.contentRoot = contentRoot, .ownMedia = ownMedia_, .ledger = ledger} {
    for (std::size_t number = 0; number < ledger.media().size(); ++number) {
      const KeptMedium& medium = ledger.media()[number];
      if (medium.place && medium.isThere) ownMedia_.emplace(*medium.place, static_cast<std::int64_t>(number));
    }
    readList();
    for (const auto& [jid, folder] : folders) {
      const std::string page = ChatArchiveWriter::pageID(jid);
      add({.jid = jid, .name = folder, .page = page}, ArchiveScripts::chatFileName(page));
    }
  }

  std::vector<std::string> forEachChat(const std::function<void(const LibraryUpdate::EarlierChat&)>& take) {
    for (const Page& page : pages_) {
      Reading reading(ground_, page.chat.jid);
      const bool isWhole = readFile(page, reading);
      if (!isWhole) readBlocks(page, reading);
      if (isWhole || !reading.isEmpty()) take({.chat = page.chat, .messages = reading.finish()});
    }
    return files_.warnings();
  }

 private:
  struct Page {
    KeptChat chat;
    std::string file;
  };

  // Those of the chat list come before those that only the memory of folders leads to.
  void readList() {
    const auto list = files_.read(FolderNames::archiveChats);
    if (!list) return;
    blocks_ = ArchiveScripts::blocks(textOf(*list));
    for (const ArchiveChatSummary& chat : ArchiveScripts::chats(textOf(*list))) {
      KeptChat kept{.jid = chat.jid, .name = chat.name, .page = chat.id};
      if (chat.avatarRelativePath && isPicture(*chat.avatarRelativePath)) kept.avatar = chat.avatarRelativePath;
      add(std::move(kept), chat.dataFile);
    }
  }

  void add(KeptChat chat, const std::string& file) {
    const bool isUsable = !chat.jid.empty() && isPlain(chat.page) && isPlain(file) && names_.insert(file).second;
    chat.isGone = true;
    if (isUsable) pages_.push_back({.chat = std::move(chat), .file = file});
  }

  // Tells whether it ends as it should.
  bool readFile(const Page& page, Reading& reading) {
    const auto script = files_.read(page.file);
    if (!script) return false;
    const std::string_view text = textOf(*script);
    const std::string_view payload = ChatArchiveJSON::assignedValue(text, "__CHAT_PAYLOAD");
    std::string_view messages = JSONText::member(payload, "\"messages\"");
    if (payload.empty() && text.starts_with(ArchiveScripts::chatOpening)) {
      messages = text.substr(ArchiveScripts::chatOpening.size() - 1);
    }
    JSONText::forEachElement(messages, [&](std::string_view message) { reading.add(message); });
    return !payload.empty() && !messages.empty();
  }

  // What comes after the messages that its own file has told.
  void readBlocks(const Page& page, Reading& reading) {
    for (const ArchiveBlock& block : blocks_.list) {
      const bool isOfChat =
          std::ranges::find(block.parts, page.chat.page, &ArchiveBlock::Part::chatID) != block.parts.end();
      if (!isOfChat || !isPlain(block.file)) continue;
      const auto script = files_.read(block.file);
      if (script) readBlock(block, textOf(*script), page.chat.page, reading);
    }
  }

  // The lines of a block are those of its parts, one part after another.
  void readBlock(const ArchiveBlock& block, std::string_view script, const std::string& chat, Reading& reading) const {
    auto part = block.parts.begin();
    std::int64_t line = 0;  // of the part
    ArchiveScripts::forEachLine(script, [&](std::string_view text) {
      while (part != block.parts.end() && line >= part->count) {
        ++part;
        line = 0;
      }
      if (part == block.parts.end()) return;
      const std::int64_t behind = reading.count() - line;  // how far the reading is, from the part's beginning
      if (part->chatID == chat && part->firstMessage >= behind) {
        if (const auto message = MessageLine::message(text, blocks_.form)) reading.add(*message);
      }
      ++line;
    });
  }

  DataFiles files_;
  Reading::OwnMedia ownMedia_;
  Reading::Ground ground_;
  ArchiveScripts::Blocks blocks_;
  std::vector<Page> pages_;
  std::set<std::string> names_;
};

}  // namespace

std::vector<std::string> EarlierPages::forEachChat(
    MediaLedger& ledger, const std::function<void(const LibraryUpdate::EarlierChat&)>& take) const {
  const fs::path data = contentRoot_ / FolderNames::viewer / FolderNames::viewerData;
  if (!isFolder(data.parent_path()) || !isFolder(data)) return {};
  return Pages(contentRoot_, folders_, ledger).forEachChat(take);
}
