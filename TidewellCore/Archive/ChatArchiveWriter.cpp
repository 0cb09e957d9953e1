#include "TidewellCore/Archive/ChatArchiveWriter.h"

#include <algorithm>

#include "TidewellCore/Archive/ArchiveFormat.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveAssets.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/ChatArchiveStrings.h"
#include "TidewellCore/Archive/MessageWords.h"
#include "TidewellCore/ExportTexts.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/ReadableText.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/PortableNames.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t longestID = 200;  // leaves room for what file names add to it
constexpr std::size_t previewCharacters = 100;
constexpr double withoutActivity = -1;

bool isKept(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_' || c == '.';
}

// Its words are a sentence about who did it.
bool saysWhoItself(const ArchiveMessage& message) {
  return message.kind() == ArchiveKind::notice || message.kind() == ArchiveKind::deleted;
}

// An empty one is what a power cut left of it.
bool isOurs(const fs::path& page) {
  constexpr std::int64_t largestPage = 1 << 20;
  const std::optional<Bytes> content = Files::readIfThere(page, largestPage);
  return content && (content->empty() || textOf(*content).find(ChatArchiveAssets::pageMark) != std::string_view::npos);
}

}  // namespace

ChatArchiveWriter::ChatArchiveWriter(Setting setting)
    : setting_(std::move(setting)), blocks_(dataFolder(), setting_.writeFile) {
  MakeRoom::forFolder(setting_.contentRoot / FolderNames::viewer);
  MakeRoom::forFolder(dataFolder());
}

fs::path ChatArchiveWriter::dataFolder(const fs::path& contentRoot) {
  return contentRoot / FolderNames::viewer / FolderNames::viewerData;
}

void ChatArchiveWriter::add(const ArchiveChat& chat) {
  list(summary(chat, setting_.style));
  writeMessages(chat);
}

void ChatArchiveWriter::writeLines(const ArchiveChat& chat) {
  blocks_.beginChat(chat.id);
  for (const ArchiveMessage& message : chat.messages) blocks_.add(ArchiveFormat::json(message));
}

RenderedFile ChatArchiveWriter::writeMessages(const ArchiveChat& chat) {
  std::string script(ArchiveScripts::chatOpening);
  blocks_.beginChat(chat.id);
  for (const ArchiveMessage& message : chat.messages) {
    if (&message != &chat.messages.front()) script += ',';
    Json::Object json = ArchiveFormat::json(message);
    ChatArchiveJSON::append(script, json);
    blocks_.add(std::move(json));
  }
  script += ArchiveScripts::chatClosing;
  setting_.writeFile(dataFolder() / ArchiveScripts::chatFileName(chat.id), script);
  return RenderedFile::of(script);
}

fs::path ChatArchiveWriter::finish() {
  writeViewer();
  writeChatList();
  const bool isFlat = setting_.contentRoot == setting_.destination;
  const std::string base = isFlat ? "" : PathText::text(setting_.contentRoot.filename()) + "/";
  const fs::path page = setting_.destination / FolderNames::archivePage;
  if (!isOurs(page)) MakeRoom::at(page);
  MakeRoom::write(page, ChatArchiveAssets::indexHTML(ChatArchiveStrings::forStyle(setting_.style),
                                                     base + FolderNames::viewer + "/"));
  blocks_.removeOthers();
  return page;
}

void ChatArchiveWriter::writeViewer() const {
  const fs::path viewer = setting_.contentRoot / FolderNames::viewer;
  MakeRoom::write(viewer / FolderNames::viewerStyleSheet, ChatArchiveAssets::styleSheet());
  MakeRoom::write(viewer / FolderNames::viewerScript, ChatArchiveAssets::script());
}

void ChatArchiveWriter::writeChatList() {
  const ChatArchiveStrings& strings = ChatArchiveStrings::forStyle(setting_.style);
  const ArchiveFormat::Description archive{.title = strings.title,
                                           .strings = ExportTexts::section(strings.language, "page"),
                                           .timeZone = setting_.timeZone.identifier,
                                           .region = setting_.locale.region(),
                                           .blocks = blocks_.finish()};
  MakeRoom::write(dataFolder() / FolderNames::archiveChats,
                  ArchiveScripts::list(archive, sortedByActivity(chats_, setting_.style)));
}

fs::path ChatArchiveWriter::write(Setting setting, const std::vector<ArchiveChat>& chats) {
  ChatArchiveWriter writer(std::move(setting));
  for (const ArchiveChat& chat : chats) writer.add(chat);
  return writer.finish();
}

std::vector<ArchiveChatSummary> ChatArchiveWriter::sortedByActivity(std::vector<ArchiveChatSummary> chats,
                                                                    const TranscriptStyle& style) {
  const Text::NameOrder names(style.languageCode);
  std::ranges::stable_sort(chats, [&](const ArchiveChatSummary& a, const ArchiveChatSummary& b) {
    const double activityOfA = a.lastTimestamp.value_or(withoutActivity);
    const double activityOfB = b.lastTimestamp.value_or(withoutActivity);
    if (activityOfA != activityOfB) return activityOfA > activityOfB;
    return names.compare(a.name, b.name) < 0;
  });
  return chats;
}

std::string ChatArchiveWriter::safeID(std::string_view jid, std::optional<std::int64_t> pk) {
  if (jid.empty()) return "chat-" + std::to_string(pk.value_or(0));
  std::string id(jid.substr(0, longestID));
  std::ranges::replace_if(
      id, [](char c) { return !isKept(c); }, '_');
  if (id.front() == '.') id.front() = '_';  // a hidden file's name
  return id;
}

std::string ChatArchiveWriter::pageID(const std::string& jid) {
  return PortableNames::portable(safeID(jid, std::nullopt));
}

ArchiveChatSummary ChatArchiveWriter::summary(const ArchiveChat& chat, const TranscriptStyle& style) {
  const auto lastDated = std::find_if(chat.messages.rbegin(), chat.messages.rend(),
                                      [](const ArchiveMessage& message) { return message.timestamp.has_value(); });
  return {.id = chat.id,
          .name = chat.name,
          .jid = chat.jid,
          .folder = chat.folder,
          .dataFile = ArchiveScripts::chatFileName(chat.id),
          .isGroup = chat.isGroup,
          .preview = preview(chat.messages.empty() ? nullptr : &chat.messages.back(), style),
          .messageCount = static_cast<std::int64_t>(chat.messages.size()),
          .lastTimestamp = lastDated == chat.messages.rend() ? std::nullopt : lastDated->timestamp,
          .avatarRelativePath = chat.avatarRelativePath,
          .isGone = chat.isGone};
}

std::string ChatArchiveWriter::preview(const ArchiveMessage* message, const TranscriptStyle& style) {
  if (message == nullptr) return {};
  std::string content = ReadableText::onOneLine(MessageWords::text(*message));
  content = Text::firstCharacters(content, previewCharacters);
  if (content.empty() && message->media) content = ChatArchiveStrings::forStyle(style).mediaLabel(message->media->kind);
  const bool isSaid = message->fromMe && !content.empty() && !saysWhoItself(*message);
  return isSaid ? style.youLabel + ": " + content : content;
}

Json::Object ChatArchiveWriter::dictionary(const ArchiveChatSummary& chat) { return ArchiveFormat::json(chat); }

Json::Object ChatArchiveWriter::dictionary(const ArchiveMessage& message) { return ArchiveFormat::json(message); }
