#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TidewellCore/ChatData/MessagePart.h"
#include "TidewellCore/ChatData/NoticeKind.h"

// What a message is when it is more than a text or a file, as facts; the words
// for them are made elsewhere, and so are the names of people. All text is UTF-8 and somebody else's.

// Who did something: the phone's owner, or somebody of a JID.
struct Person {
  std::string jid;  // empty for the owner
  bool isOwner = false;

  bool operator==(const Person&) const = default;
};

struct Coordinates {
  double latitude = 0;   // degrees, −90 to 90
  double longitude = 0;  // −180 to 180

  bool operator==(const Coordinates&) const = default;
};

struct SharedLocation {
  std::optional<Coordinates> coordinates;
  std::optional<std::string> name;
  std::optional<std::string> address;
  bool isLive = false;

  bool operator==(const SharedLocation&) const = default;
};

struct SharedContact {
  std::string name;
  std::vector<std::string> phones;
  std::vector<std::string> emails;

  bool operator==(const SharedContact&) const = default;
};

struct SharedContacts {
  std::vector<SharedContact> contacts;

  bool operator==(const SharedContacts&) const = default;
};

// Belongs to the text that it stands under.
struct LinkPreview {
  std::string url;  // empty when only the text holds it
  std::optional<std::string> title;
  std::optional<std::string> summary;

  bool operator==(const LinkPreview&) const = default;
};

struct PollOption {
  std::string words;
  std::vector<Person> voters;

  bool operator==(const PollOption&) const = default;
};

struct Poll {
  std::string question;  // empty when it is not stored
  std::vector<PollOption> options;

  bool operator==(const Poll&) const = default;
};

// Who called is who sent the message.
struct CallRecord {
  std::optional<bool> isVideo;  // absent when the phone does not say
  bool isGroup = false;
  bool isMissed = false;                // by the owner
  std::optional<std::int64_t> seconds;  // absent when nobody spoke

  bool operator==(const CallRecord&) const = default;
};

struct GroupInvite {
  std::optional<std::string> groupName;
  std::optional<std::string> caption;

  bool operator==(const GroupInvite&) const = default;
};

struct Product {
  std::string title;
  std::optional<std::string> description;
  std::optional<std::string> currency;      // of ISO 4217
  std::optional<std::int64_t> thousandths;  // the price; never without a currency

  bool operator==(const Product&) const = default;
};

struct BusinessButton {
  std::string words;
  std::optional<std::string> target;  // an address or a number, as it is stored

  bool operator==(const BusinessButton&) const = default;
};

// Title, words and footer of what a business sent, as far as there are some, and what could be tapped.
struct BusinessText {
  std::vector<std::string> paragraphs;
  std::vector<BusinessButton> buttons;

  bool operator==(const BusinessText&) const = default;
};

struct DeletedMessage {
  // Absent: its sender. Somebody who is neither that nor the owner is an admin of the
  // group, unless it turns out to be another JID of the sender.
  std::optional<Person> remover;

  bool operator==(const DeletedMessage&) const = default;
};

// One that has not arrived yet.
struct WaitingMessage {
  bool operator==(const WaitingMessage&) const = default;
};

// A medium whose file the phone has not kept.
struct MissingMedia {
  MessagePart part = MessagePart::photo;
  std::optional<std::int64_t> seconds;
  std::optional<std::string> fileName;

  bool operator==(const MissingMedia&) const = default;
};

// Something that WhatsApp tells; it has no sender.
struct Notice {
  NoticeKind kind = NoticeKind::unknownNotice;
  std::int64_t code = 0;  // WhatsApp's own number of it; 0 where it has none
  std::optional<Person> actor;
  std::vector<Person> targets;
  std::optional<std::string> parameter;
  std::optional<std::int64_t> seconds;  // of a timer

  bool operator==(const Notice&) const = default;
};

struct UnsupportedMessage {
  std::int64_t type = 0;

  bool operator==(const UnsupportedMessage&) const = default;
};

// Nothing for text and media, which speak for themselves.
using MessageContent =
    std::variant<std::monostate, SharedLocation, SharedContacts, LinkPreview, Poll, CallRecord, GroupInvite, Product,
                 BusinessText, DeletedMessage, WaitingMessage, MissingMedia, Notice, UnsupportedMessage>;

// What a message answers.
struct Quote {
  std::string stanzaID;  // of the original; empty when it is not stored
  std::optional<Person> sender;
  MessagePart part = MessagePart::text;
  std::optional<std::string> words;  // of the copy that came along, cut

  bool operator==(const Quote&) const = default;
};

struct Reaction {
  std::string emoji;
  std::optional<Person> person;   // absent where a channel only counts
  std::int64_t count = 1;         // greater only without a person
  std::int64_t milliseconds = 0;  // Unix time; 0 when it is not stored

  bool operator==(const Reaction&) const = default;
};

struct MessageMarks {
  bool isForwarded = false;
  bool isStarred = false;
  bool isViewOnce = false;
  bool isGIF = false;
  bool isRound = false;

  bool operator==(const MessageMarks&) const = default;
};

// All that a message has beside its text and its file.
struct MessageDetails {
  MessageContent content;
  std::optional<Quote> quote;
  std::vector<Reaction> reactions;  // the oldest first
  MessageMarks marks;
  // What stands above the text: the name of a document with a caption, the title of a medium with a text as well.
  std::optional<std::string> heading;

  bool operator==(const MessageDetails&) const = default;
};
