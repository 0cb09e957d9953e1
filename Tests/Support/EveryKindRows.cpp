#include "Tests/Support/EveryKindRows.h"

#include "Tests/Support/EveryKind.h"

namespace Fixture::EveryKind {

namespace {

constexpr std::int64_t groupEventType = 6;
constexpr std::int64_t noticeType = 10;

bool isGroup(const Chat& chat) { return std::get<std::string>(chat.jid).ends_with("@g.us"); }

}  // namespace

void Rows::begin(const Chat& chat, const std::vector<std::string>& people) {
  app_.chats.push_back(chat);
  chat_ = chat;
  chat_.pk = static_cast<std::int64_t>(app_.chats.size());
  members_.clear();
  for (const std::string& jid : people) {
    app_.members.push_back({.chat = chat_.pk, .jid = jid});
    members_[jid] = static_cast<std::int64_t>(app_.members.size());
  }
}

// A push name is never a name: it is a message in base64 that holds a time.
Message Rows::message(const std::string& jid, Message message) {
  message.pk = static_cast<std::int64_t>(app_.messages.size() + 1);
  message.chat = chat_.pk;
  message.date = date_ += 60;
  if (jid == me) {
    message.isFromMe = 1;
    message.toJID = chat_.jid;
  } else {
    message.fromJID = chat_.jid;
    message.pushName = "COah/ZEGIAA=";
  }
  if (const auto member = members_.find(jid); member != members_.end()) message.member = member->second;
  return message;
}

std::int64_t Rows::say(const std::string& jid, Message said, std::optional<MediaItem> item) {
  app_.messages.push_back(message(jid, std::move(said)));
  const std::int64_t key = app_.messages.back().pk;
  if (item) {
    item->message = key;
    app_.mediaItems.push_back(*std::move(item));
  }
  return key;
}

std::int64_t Rows::send(const std::string& jid, Message said, MediaFile file) {
  file.message = say(jid, std::move(said));
  app_.mediaFiles.push_back(std::move(file));
  return app_.messages.back().pk;
}

void Rows::tell(std::int64_t code, const std::string& jid, SQLValue text) {
  Message told = message(jid, {.text = std::move(text), .type = isGroup(chat_) ? groupEventType : noticeType});
  told.event = code;
  told.toJID = me;
  app_.messages.push_back(std::move(told));
}

}  // namespace Fixture::EveryKind
