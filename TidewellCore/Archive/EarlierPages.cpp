#include "TidewellCore/Archive/EarlierPages.h"

#include <charconv>
#include <cmath>
#include <set>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/JSONText.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = std::int64_t{4} << 30;

std::optional<Bytes> read(const fs::path& file) { return Files::readIfThere(file, largestFile); }

// A link is none of an export's making.
bool isFolder(const fs::path& path) { return Files::kindOf(path) == Files::Kind::folder; }

// "folder/file", both plain names.
std::optional<ExportPlace> placeOf(std::string_view path) {
  const auto slash = path.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  ExportPlace place{.folder = std::string(path.substr(0, slash)), .name = std::string(path.substr(slash + 1))};
  const bool isPlain = FileNaming::isSafeComponent(place.folder) && FileNaming::isSafeComponent(place.name);
  return isPlain ? std::optional(std::move(place)) : std::nullopt;
}

std::int64_t keyOf(const std::string& id) {
  std::int64_t key = 0;
  const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), key);
  return error == std::errc() && end == id.data() + id.size() ? key : 0;
}

// The list of a chat's messages in its data file, as far as it goes.
std::string_view messagesOf(std::string_view script) {
  const std::string_view payload = ChatArchiveJSON::assignedValue(script, "__CHAT_PAYLOAD");
  if (!payload.empty()) return JSONText::member(payload, "\"messages\"");
  return script.starts_with(ArchiveScripts::chatOpening) ? script.substr(ArchiveScripts::chatOpening.size() - 1)
                                                         : std::string_view();
}

// The messages of one page.
class Reading {
 public:
  Reading(const fs::path& contentRoot, const std::string& jid, MediaLedger& ledger)
      : contentRoot_(contentRoot), jid_(jid), ledger_(ledger) {}

  void add(std::string_view text) {
    const auto json = Json::parse(text);
    const auto* object = json ? json->as<Json::Object>() : nullptr;
    if (object == nullptr) return;
    const ArchiveMessage told = ArchiveFormat::message(*object);
    KeptMessage message{.key = keyOf(told.id), .time = told.timestamp, .isFromMe = told.fromMe};
    if (told.kind() == ArchiveKind::none && told.text) message.text = messages_.texts.add(*told.text);
    message.medium = mediumOf(told);
    message.page = messages_.texts.add(text);
    message.isDeletedLater = told.isDeletedLater;
    auto& list = messages_.list;
    const bool isSameSecond = !list.empty() && list.back().time == message.time;
    message.placeInSecond = isSameSecond ? list.back().placeInSecond + 1 : 0;
    list.push_back(message);
  }

  KeptMessages finish() { return std::move(messages_); }

 private:
  // A page does not tell where on the phone its file was.
  std::optional<std::int64_t> mediumOf(const ArchiveMessage& told) {
    const auto place = told.media && told.media->relativePath ? placeOf(*told.media->relativePath) : std::nullopt;
    if (!place) return std::nullopt;
    const auto size = Files::regularFileSize(place->in(contentRoot_));
    const std::string path = "archive/" + place->relativePath();
    ledger_.settle({.path = path,
                    .place = *place,
                    .size = size.value_or(0),
                    .date = told.timestamp ? std::optional(dateFromUnixTime(*told.timestamp)) : std::nullopt,
                    .kind = told.media->kind,
                    .chatJID = jid_,
                    .isThere = size.has_value()});
    return ledger_.enter(path);
  }

  const fs::path& contentRoot_;
  const std::string& jid_;
  MediaLedger& ledger_;
  KeptMessages messages_;
};

bool isPicture(const std::string& path) {
  const auto place = placeOf(path);
  return place && place->folder == FolderNames::avatars;
}

}  // namespace

void EarlierPages::forEachChat(MediaLedger& ledger,
                               const std::function<void(const LibraryUpdate::EarlierChat&)>& take) const {
  const fs::path data = contentRoot_ / FolderNames::viewer / FolderNames::viewerData;
  if (!isFolder(data.parent_path()) || !isFolder(data)) return;
  for (const Page& page : pages()) {
    const auto script = read(data / PathText::path(page.file));
    if (!script) continue;
    Reading reading(contentRoot_, page.chat.jid, ledger);
    JSONText::forEachElement(messagesOf(textOf(*script)), [&](std::string_view message) { reading.add(message); });
    take({.chat = page.chat, .messages = reading.finish()});
  }
}

// Those of the chat list, then those that only the memory of folders leads to.
std::vector<EarlierPages::Page> EarlierPages::pages() const {
  std::vector<Page> pages;
  std::set<std::string> files;
  const auto add = [&](KeptChat chat, const std::string& file) {
    const bool isUsable = !chat.jid.empty() && FileNaming::isSafeComponent(chat.page) &&
                          FileNaming::isSafeComponent(file) && files.insert(file).second;
    chat.isGone = true;
    if (isUsable) pages.push_back({.chat = std::move(chat), .file = file});
  };
  const auto list = read(contentRoot_ / FolderNames::viewer / FolderNames::viewerData / FolderNames::archiveChats);
  if (list) {
    for (const ArchiveChatSummary& chat : ArchiveScripts::chats(textOf(*list))) {
      KeptChat kept{.jid = chat.jid, .name = chat.name, .page = chat.id};
      if (chat.avatarRelativePath && isPicture(*chat.avatarRelativePath)) kept.avatar = chat.avatarRelativePath;
      add(std::move(kept), chat.dataFile);
    }
  }
  for (const auto& [jid, folder] : folders_) {
    const std::string page = ChatArchiveWriter::pageID(jid);
    add({.jid = jid, .name = folder, .page = page}, ArchiveScripts::chatFileName(page));
  }
  return pages;
}
