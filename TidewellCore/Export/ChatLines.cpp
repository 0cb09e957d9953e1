#include "TidewellCore/Export/ChatLines.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <span>
#include <unordered_map>

#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Archive/ContentWords.h"
#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

constexpr double beforeAll = -std::numeric_limits<double>::infinity();

// Undated messages come first.
double newestDate(std::span<const MessageRecord> messages) {
  return messages.empty() || !messages.back().date ? beforeAll : unixTime(*messages.back().date);
}

bool isMissing(const MessageDetails& details) { return std::holds_alternative<MissingMedia>(details.content); }

std::optional<ArchiveMedia> mediaOf(const MessageRecord& message, const MediaLinks& links) {
  if (!message.mediaLocalPath) return std::nullopt;
  const std::string_view path = *message.mediaLocalPath;
  ArchiveMedia media{.kind = MediaKind::classify(PathText::extension(path)), .relativePath = links.relativePath(path)};
  media.exported = media.relativePath.has_value();
  media.fileName = PathText::lastComponent(media.relativePath ? std::string_view(*media.relativePath) : path);
  return media;
}

std::string idOf(const MessageRecord& message) { return std::to_string(message.pk); }

bool mayNamePeople(const MessageRecord& message) {
  return message.text && message.text->find('@') != std::string_view::npos;
}

// Words stand for a file that the backup lacks; one that is in the export all the same needs none.
void settleMedia(MessageDetails& details, ArchiveMessage& message) {
  if (!isMissing(details) || !message.media) return;
  if (message.media->exported) {
    details.content = std::monostate();
  } else {
    message.lostMedium = message.media->kind;
    message.media.reset();
  }
}

ArchiveMessage archiveMessage(const MessageRecord& message, std::string sender, const MediaLinks& links) {
  return {.id = idOf(message),
          .fromMe = message.isFromMe,
          .sender = std::move(sender),
          .timestamp = message.date ? std::optional(unixTime(*message.date)) : std::nullopt,
          .text = message.text && !message.text->empty() ? std::optional(std::string(*message.text)) : std::nullopt,
          .media = mediaOf(message, links)};
}

}  // namespace

std::vector<ArchiveChat> ChatLines::chats(const ChatFolders& folders) const {
  ChatFolders all = folders;
  for (const ChatStorageSnapshot::Chat& chat : snapshot_.chats()) all.emplace(chat.jid, "");
  std::vector<ArchiveChat> chats;
  std::unordered_map<std::string, double> newestDates;
  for (const auto& [jid, folder] : all) {
    const std::string& text = jid.text();
    chats.push_back({.name = snapshot_.chatTitle(text), .jid = text, .folder = folder, .isGroup = JID::isGroup(text)});
    newestDates[text] = newestDate(snapshot_.messages(jid));
  }
  ChatArchiveWriter::giveIDs(chats);
  std::ranges::stable_sort(chats, std::greater(), [&](const ArchiveChat& chat) { return newestDates.at(chat.jid); });
  return chats;
}

std::vector<CanonicalJID> ChatLines::chatsWithMessages() const {
  std::vector<CanonicalJID> jids;
  for (const ChatStorageSnapshot::Chat& chat : snapshot_.chats()) {
    if (chat.messageCount > 0) jids.push_back(chat.jid);
  }
  return jids;
}

std::vector<ArchiveMessage> ChatLines::messages(const std::string& jid, const MediaLinks& links,
                                                const TranscriptStyle& style) const {
  MessageWords::Context context = contextOf(jid, style);
  std::vector<ArchiveMessage> messages;
  for (const MessageRecord& record : snapshot_.messages(snapshot_.canonicalChatJID(jid))) {
    messages.push_back(archiveMessage(record, snapshot_.senderName(record, style), links));
    const MessageDetails* known = snapshot_.details(record);
    if (known == nullptr && !mayNamePeople(record)) continue;
    MessageDetails details = known == nullptr ? MessageDetails() : *known;
    settleMedia(details, messages.back());
    context.answered = answered(record, details, style);
    MessageWords::tell(details, context, messages.back());
  }
  return messages;
}

MessageWords::Context ChatLines::contextOf(const std::string& jid, const TranscriptStyle& style) const {
  const auto nameOf = [this](const Person& person) { return snapshot_.name(person); };
  return {.wording = {.style = style, .nameOf = nameOf},
          .mentioned = [this, style](std::string_view digits) { return snapshot_.nameOfDigits(digits, style); },
          .partner = snapshot_.partnerName(jid)};
}

std::optional<MessageWords::Answered> ChatLines::answered(const MessageRecord& record, const MessageDetails& details,
                                                          const TranscriptStyle& style) const {
  const MessageRecord* original = details.quote ? snapshot_.original(record, *details.quote) : nullptr;
  if (original == nullptr) return std::nullopt;
  MessageWords::Answered answered{
      .id = idOf(*original), .isOwner = original->isFromMe, .sender = snapshot_.senderName(*original, style)};
  if (original->text) answered.text = BlobText::shortWords(original->text);
  if (const MessageDetails* known = snapshot_.details(*original)) answered.part = ContentWords::partOf(known->content);
  if (original->mediaLocalPath && answered.part == MessagePart::text) {
    answered.part = ContentWords::partOf(MediaKind::classify(PathText::extension(*original->mediaLocalPath)));
  }
  return answered;
}
