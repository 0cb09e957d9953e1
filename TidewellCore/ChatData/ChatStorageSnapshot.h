#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TidewellCore/ChatData/CanonicalJID.h"
#include "TidewellCore/ChatData/ChatTables.h"
#include "TidewellCore/TranscriptStyle.h"

// All that one backup's chat database holds, put together once and then
// unchanged: the one answer to whose a message is, and which chat's. It cannot
// be copied, since its messages' texts stand in it.
//
// WhatsApp may keep two records of one person, one by phone number and one by
// LID. They are one chat, known by its canonical JID: the phone's. Records
// without a JID, and messages of records that are not there, belong to the chat
// UnknownChatJID.
class ChatStorageSnapshot {
 public:
  // A chat and its messages.
  struct Chat {
    CanonicalJID jid;
    std::size_t firstMessage = 0;
    std::size_t messageCount = 0;
  };

  // `tables` with a directory that knows what contacts say as well.
  explicit ChatStorageSnapshot(ChatTables tables = {});
  ChatStorageSnapshot(ChatStorageSnapshot&&) = default;
  ChatStorageSnapshot& operator=(ChatStorageSnapshot&&) = default;

  const std::map<std::int64_t, ChatRecord>& records() const { return tables_.chats; }
  const ContactDirectory& directory() const { return tables_.directory; }
  const UnreadMessages& unread() const { return tables_.unread; }

  // Every chat that has a record or a message, by its JID.
  std::span<const Chat> chats() const { return chats_; }
  // Undated ones first, then oldest first; those of one second by their record, then in the phone's order.
  std::span<const MessageRecord> messages(const Chat& chat) const;
  // None for a chat that is not here.
  std::span<const MessageRecord> messages(const CanonicalJID& jid) const;
  std::span<const MessageRecord> messages() const { return tables_.messages; }

  // The record of that very JID, else that of its canonical JID, else the first
  // of the same person. Null when there is none.
  const ChatRecord* chat(std::string_view jid) const;
  // The phone's JID for a LID that the directory knows; else the JID, trimmed.
  CanonicalJID canonicalChatJID(std::string_view jid) const;
  // The canonical JID, then its LID or phone counterpart.
  std::vector<std::string> aliasJIDs(std::string_view jid) const;
  // What a chat is called everywhere.
  std::string chatTitle(std::string_view jid) const;
  // Whom a chat of two is with; empty when that is nobody known, and of any other chat.
  std::string partnerName(std::string_view jid) const;

  // Who is in a group: canonical JIDs, ascending. None for other chats, and where the tables do not say.
  std::vector<std::string> memberJIDs(const CanonicalJID& chat) const;

  // What a message is beside its text and its file; null when that is all.
  const MessageDetails* details(const MessageRecord& message) const;
  // The message of the same chat that another answers; null when it is not there.
  const MessageRecord* original(const MessageRecord& answer, const Quote& quote) const;

  // The message that carries a media file of the backup; null when none does.
  const MessageRecord* mediaMessage(std::string_view relativePath) const;
  // The date of that message; absent when there is none, or it has none.
  std::optional<Date> mediaDate(std::string_view relativePath) const;
  // WhatsApp's own digest of a media file, SHA-256 in Base64: of the file, or of what was sent before the phone changed
  // it. Empty where it is not known.
  std::string_view sentDigest(std::string_view relativePath) const;
  bool hasMedia() const { return !mediaByRelativePath_.empty(); }
  // The paths of the files that messages carry, in no order, as `mediaMessage` knows them.
  std::vector<std::string_view> mediaPaths() const;
  // The chat that a media file belongs to: its message's, else that of its path, else UnknownChatJID.
  CanonicalJID ownerJID(std::string_view mediaPath, const std::optional<std::string>& pathJID) const;

  // Who wrote a message that is not the owner's.
  struct Sender {
    std::string jid;                  // canonical; empty when it is not known
    std::optional<std::string> name;  // as it is shown; never the digits of a LID

    bool operator==(const Sender&) const = default;
  };
  Sender sender(const MessageRecord& message) const;
  // The name of who wrote a message, the owner's too.
  std::string senderName(const MessageRecord& message, const TranscriptStyle& style) const;
  // The name or number of somebody whom a message tells of, who is not the owner; absent where there is neither. A
  // channel and a list have digits too, and no number.
  std::optional<std::string> name(const Person& person) const;
  // Whether a JID, under any of its identities, is the owner's.
  bool isOwner(std::string_view jid) const { return ownJIDs_.contains(canonicalChatJID(jid).text()); }
  // The owner's JIDs, canonical, as far as the tables tell them.
  const std::set<std::string, std::less<>>& ownJIDs() const { return ownJIDs_; }
  // The name of somebody whom the directory, a group or a chat knows; of a group too.
  std::optional<std::string> knownName(const std::string& jid) const;
  // The name of the owner, contact or group member whose number or LID has these digits; absent for anybody else.
  std::optional<std::string> nameOfDigits(std::string_view digits, const TranscriptStyle& style) const;

 private:
  using Keys = std::vector<std::int64_t>;     // of rows, ascending
  using Places = std::vector<std::uint32_t>;  // of rows, among all messages
  using ChatsOfRecords = std::unordered_map<std::int64_t, std::size_t>;

  void fileRecords();
  ChatsOfRecords listChats();
  Places arrange();
  void attachMedia(const Keys& keys, const Places& places);
  void markDetailed(const Keys& keys, const Places& places);
  void fileMembers();
  void unifyPeople(const Keys& keys, const Places& places);
  void fileOriginals(const Keys& keys, const Places& places);
  // The owner, or somebody by their canonical JID.
  Person person(const std::string& jid) const;
  const GroupMemberRecord* member(const std::string& jid) const;
  std::vector<Chat>::const_iterator placeOf(const CanonicalJID& jid) const;
  static CanonicalJID known(CanonicalJID jid);
  CanonicalJID jidOfRecord(std::int64_t pk) const;
  std::string personTitle(const ChatRecord& record) const;
  std::string titleOf(const ChatRecord& record) const;

  ChatTables tables_;
  std::map<std::string, std::int64_t, std::less<>> recordsByJID_;           // as the JID is stored
  std::map<std::string, std::int64_t, std::less<>> recordsByCanonicalJID_;  // the first of each
  std::vector<Chat> chats_;
  std::unordered_map<std::string_view, std::uint32_t> mediaByRelativePath_;  // places among the messages
  std::unordered_map<std::string_view, std::string_view> sentDigests_;       // by the same paths
  std::unordered_map<std::string, const GroupMemberRecord*> membersByJID_;   // canonical; those with a name first
  std::map<CanonicalJID, std::set<std::string>> membersByChat_;
  std::set<std::string, std::less<>> ownJIDs_;  // canonical
  // The places of messages that are answered, by their stanza IDs; one ID may stand in several chats.
  std::vector<std::pair<std::string_view, std::uint32_t>> originals_;
};
