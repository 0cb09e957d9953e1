#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Support/BackupContents.h"

namespace Fixture::EveryKind {

// Adds rows to the tables of an app as they come when people talk, each a minute after the one before.
class Rows {
 public:
  explicit Rows(WhatsAppContents& app) : app_(app) {}

  // Begins a chat, in which all that follows is said. The people are a group's members.
  void begin(const Chat& chat, const std::vector<std::string>& people = {});

  // Somebody says something, with an item that has no file when one is given. Returns the message's key.
  std::int64_t say(const std::string& jid, Message message, std::optional<MediaItem> item = std::nullopt);
  // The same with a file.
  std::int64_t send(const std::string& jid, Message message, MediaFile file);
  // What WhatsApp tells by itself: of somebody, or of nobody when there is no JID. Type 6 in groups, else 10.
  void tell(std::int64_t code, const std::string& jid = "", SQLValue text = {});

  // The date of the message that was added last.
  double date() const { return date_; }

 private:
  Message message(const std::string& jid, Message message);

  WhatsAppContents& app_;
  Chat chat_;
  std::map<std::string, std::int64_t> members_;
  double date_ = 700'000'000;
};

// Each adds chats of its own.
void addConversation(Rows& rows, WhatsAppContents& app);
void addBusiness(Rows& rows);
void addGroups(Rows& rows, WhatsAppContents& app);
void addNotices(Rows& rows);

}  // namespace Fixture::EveryKind
