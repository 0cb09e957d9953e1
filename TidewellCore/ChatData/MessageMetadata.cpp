#include "TidewellCore/ChatData/MessageMetadata.h"

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/BusinessMessage.h"
#include "TidewellCore/ChatData/QuotedMessage.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/Platform/BigEndian.h"
#include "TidewellCore/Platform/KeyedArchive.h"
#include "TidewellCore/Platform/ProtobufReader.h"

namespace {

using OwnJIDs = std::span<const std::string>;

// The numbers of the fields that are known.
enum Field : std::uint32_t {
  description = 3,
  quotedID = 5,
  quotedSender = 6,
  forwardCount = 17,
  quotedCopy = 19,
  templateText = 24,
  productField = 26,
  inviteField = 28,
  timer = 36,
  advertisement = 42,
  listText = 43,
  buttonsText = 51,
  call = 87,
};

GroupInvite invite(ProtobufReader fields) {
  GroupInvite invite;
  while (fields.next()) {
    if (fields.number() == 4) invite.groupName = BlobText::words(fields.text());
    if (fields.number() == 6) invite.caption = BlobText::words(fields.text());
  }
  return invite;
}

std::optional<std::string> advertisedURL(ProtobufReader fields) {
  std::optional<std::string> url;
  forEachMessage(fields, 1, [&](ProtobufReader info) {
    while (info.next()) {
      if (info.number() == 9) url = BlobText::words(info.text());
    }
  });
  return url;
}

std::optional<std::int64_t> secondsOfCall(ProtobufReader fields) {
  std::optional<std::int64_t> seconds;
  forEachMessage(fields, 1, [&](ProtobufReader record) {
    while (record.next()) {
      if (record.number() == 3) record.read(seconds);
    }
  });
  return BlobText::seconds(seconds);
}

void readQuote(const ProtobufReader& field, OwnJIDs ownJIDs, Quote& quote) {
  const std::string_view text = field.text().value_or("");
  if (field.number() == quotedID) quote.stanzaID = text;
  if (field.number() == quotedSender) quote.sender = StoredJID::person(text, ownJIDs);
  if (field.number() == quotedCopy) QuotedMessage::read(field.message(), quote);
}

void readField(const ProtobufReader& field, MessageMetadata& metadata) {
  switch (field.number()) {
    case description:
      metadata.linkDescription = BlobText::shortWords(field.text());
      break;
    case forwardCount:
      metadata.isForwarded = field.integer().value_or(0) > 0;
      break;
    case templateText:
      metadata.business = BusinessMessage::fromTemplate(field.message());
      break;
    case listText:
      metadata.business = BusinessMessage::fromList(field.message());
      break;
    case buttonsText:
      metadata.business = BusinessMessage::fromButtons(field.message());
      break;
    case productField:
      metadata.product = BusinessMessage::product(field.message());
      break;
    case inviteField:
      metadata.invite = invite(field.message());
      break;
    case timer:
      metadata.timerSeconds = BlobText::seconds(field.integer());
      break;
    case advertisement:
      metadata.sourceURL = advertisedURL(field.message());
      break;
    case call:
      metadata.callSeconds = secondsOfCall(field.message());
      break;
    default:
      break;
  }
}

bool saysSomething(const Quote& quote) {
  return !quote.stanzaID.empty() || quote.words || quote.part != MessagePart::text;
}

// Some bytes have their length in front, after a 0, with which no message begins.
ByteView withoutLength(ByteView bytes) {
  constexpr std::size_t size = 5;
  if (bytes.size() < size || bytes[0] != 0) return bytes;
  return readBigEndian(bytes.subspan(1, 4)) == bytes.size() - size ? bytes.subspan(size) : bytes;
}

MessageMetadata fromProtobuf(ByteView bytes, OwnJIDs ownJIDs) {
  MessageMetadata metadata;
  Quote quote;
  for (ProtobufReader fields(bytes); fields.next();) {
    readField(fields, metadata);
    readQuote(fields, ownJIDs, quote);
  }
  if (saysSomething(quote)) metadata.quote = std::move(quote);
  return metadata;
}

// What older versions wrote: an archived WAMediaItemMetadata, of which the reply alone is known.
MessageMetadata fromKeyedArchive(ByteView bytes, OwnJIDs ownJIDs) {
  if (bytes.size() > ProtobufLimits::bytes) throw ProtobufError("An archive is too long.");
  const KeyedArchive archive(bytes);
  Quote quote{.stanzaID = KeyedArchive::text(archive.object("stanzaID")).value_or("")};
  const auto sender = KeyedArchive::text(archive.object("senderJID"));
  if (sender && !sender->empty()) quote.sender = StoredJID::person(*sender, ownJIDs);
  const auto copy = KeyedArchive::bytes(archive.object("quotedMessageData"));
  if (copy) QuotedMessage::read(ProtobufReader(*copy), quote);
  MessageMetadata metadata;
  if (saysSomething(quote)) metadata.quote = std::move(quote);
  return metadata;
}

}  // namespace

std::optional<MessageMetadata> MessageMetadata::read(ByteView bytes, std::span<const std::string> ownJIDs) {
  try {
    if (textOf(bytes).starts_with("bplist00")) return fromKeyedArchive(bytes, ownJIDs);
    return fromProtobuf(withoutLength(bytes), ownJIDs);
  } catch (const ProtobufError&) {
    return std::nullopt;
  } catch (const PropertyListError&) {
    return std::nullopt;
  }
}
