#include "TidewellCore/ChatData/MessageDecoder.h"

#include <algorithm>
#include <array>

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/GroupEvents.h"
#include "TidewellCore/ChatData/MessageMetadata.h"
#include "TidewellCore/ChatData/ReceiptInfo.h"
#include "TidewellCore/ChatData/RowLocation.h"
#include "TidewellCore/ChatData/RowMedia.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/ChatData/SystemNotices.h"
#include "TidewellCore/ChatData/VCardText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

const Person owner{.isOwner = true};

// A row on its way to being a message.
struct Decoding {
  const MessageRow& row;
  bool isMetadataWhole = true;
  MessageMetadata metadata;
  std::optional<Poll> poll;
  DecodedMessage message;
  MessageDetails details;
};

void setContent(MessageContent content, Decoding& decoding) { decoding.details.content = std::move(content); }

// What nobody can write a text beside keeps one only where somebody may have written it.
void keepReadable(Decoding& decoding) {
  if (!BlobText::isReadable(decoding.message.text)) decoding.message.text.reset();
}

void setContentWithReadable(MessageContent content, Decoding& decoding) {
  keepReadable(decoding);
  setContent(std::move(content), decoding);
}

// What stands in the place of the text is a parameter, or nothing that people wrote.
void setContentAlone(MessageContent content, Decoding& decoding) {
  decoding.message.text.reset();
  setContent(std::move(content), decoding);
}

NoticeRow noticeRow(const MessageRow& row) {
  return {.code = row.eventType,
          .text = row.text,
          .memberJID = row.memberJID,
          .creatorJID = row.creatorJID,
          .isFromMe = row.isFromMe,
          .ownJIDs = row.ownJIDs};
}

bool isEmpty(std::optional<std::string_view> text) { return text.value_or("").empty(); }

// A row of which nobody knows what it is stays with its file or its text.
void unknown(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  const auto part = RowMedia::partOfMIMEType(row);
  if (row.hasFile || part) {
    decoding.message.text = RowMedia::caption(row);
    keepReadable(decoding);
    if (!row.hasFile) setContent(RowMedia::missing(row, *part), decoding);
  } else if (!BlobText::isReadable(row.text)) {
    setContentAlone(UnsupportedMessage{.type = row.type}, decoding);
  }
}

// What somebody chose of what a business offered.
void answer(Decoding& decoding) {
  if (isEmpty(decoding.row.text)) unknown(decoding);
}

void text(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  LinkPreview preview{.url = BlobText::words(row.linkURL).value_or(""),
                      .title = BlobText::shortWords(row.linkTitle),
                      .summary = BlobText::shortWords(row.linkSummary)};
  if (preview.title || preview.summary) return setContent(std::move(preview), decoding);
  if (decoding.metadata.sourceURL) setContent(LinkPreview{.url = *decoding.metadata.sourceURL}, decoding);
}

void link(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  LinkPreview preview{.url = BlobText::words(isEmpty(row.linkURL) ? row.mediaURL : row.linkURL).value_or(""),
                      .title = BlobText::shortWords(isEmpty(row.linkTitle) ? row.title : row.linkTitle),
                      .summary = BlobText::shortWords(row.linkSummary)};
  if (!preview.summary) preview.summary = decoding.metadata.linkDescription;
  // A preview that stands alone is what was sent.
  for (const auto& words : {row.linkURL, row.mediaURL, row.linkTitle, row.title}) {
    if (isEmpty(decoding.message.text)) decoding.message.text = words;
  }
  if (preview.title || preview.summary) setContent(std::move(preview), decoding);
}

void media(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  const MessagePart part = RowMedia::partOf(row).value_or(MessagePart::document);
  const bool hasCaption =
      part != MessagePart::voiceMessage && part != MessagePart::audio && part != MessagePart::sticker;
  if (hasCaption) {
    decoding.message.text = RowMedia::caption(row);
    decoding.details.heading = BlobText::words(RowMedia::titleAboveText(row));
  } else {
    keepReadable(decoding);
    if (part == MessagePart::audio) decoding.details.heading = BlobText::shortWords(row.title);
  }
  if (!row.hasFile) setContent(RowMedia::missing(row, part), decoding);
  decoding.details.marks.isGIF = part == MessagePart::gif;
  decoding.details.marks.isRound = part == MessagePart::videoNote;
}

void viewOnce(Decoding& decoding) {
  media(decoding);
  decoding.details.marks.isViewOnce = true;
}

void document(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  const auto caption = RowMedia::documentCaption(row);
  const auto name = RowMedia::documentName(row);
  decoding.message.text = caption || !row.hasFile ? caption : name;
  if (!row.hasFile) return setContent(RowMedia::missing(row, MessagePart::document), decoding);
  if (caption) decoding.details.heading = BlobText::shortWords(name);
}

void contacts(Decoding& decoding) {
  setContentWithReadable(VCardText::contacts(decoding.row.vCardName, decoding.row.vCardString), decoding);
}

void location(Decoding& decoding) { setContentWithReadable(RowLocation::read(decoding.row), decoding); }

void groupEvent(Decoding& decoding) { setContentAlone(GroupEvents::read(noticeRow(decoding.row)), decoding); }

void systemNotice(Decoding& decoding) {
  MessageContent notice = SystemNotices::read(noticeRow(decoding.row));
  const auto* call = std::get_if<CallRecord>(&notice);
  decoding.message.isIncoming = call != nullptr && call->isMissed;
  setContentAlone(std::move(notice), decoding);
}

void channelNotice(Decoding& decoding) { setContentAlone(SystemNotices::ofChannel(noticeRow(decoding.row)), decoding); }

void waiting(Decoding& decoding) { setContentAlone(WaitingMessage(), decoding); }

// Whether that is its sender is known when all JIDs of people are.
void deleted(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  auto remover = StoredJID::person(row.vCardString.value_or(""), row.ownJIDs);
  if (row.isFromMe && (!remover || row.ownJIDs.empty())) remover = owner;
  setContentAlone(DeletedMessage{.remover = std::move(remover)}, decoding);
}

// The text may be one of them, all of them, or what they lack.
void addText(std::string_view text, std::vector<std::string>& paragraphs) {
  const std::string_view words = Text::trimmedPart(text);
  const auto isIn = [&](const std::string& paragraph) { return words.find(paragraph) != std::string_view::npos; };
  const auto isThat = [&](const std::string& paragraph) { return Text::trimmedPart(paragraph) == words; };
  if (std::ranges::any_of(paragraphs, isThat)) return;
  if (std::ranges::all_of(paragraphs, isIn)) paragraphs.clear();
  paragraphs.emplace(paragraphs.begin(), words);
}

void business(Decoding& decoding) {
  BusinessText& words = decoding.metadata.business;
  if (words.paragraphs.empty() && words.buttons.empty()) return unknown(decoding);
  if (BlobText::isReadable(decoding.row.text)) addText(*decoding.row.text, words.paragraphs);
  setContentAlone(std::move(words), decoding);
}

void product(Decoding& decoding) {
  if (!decoding.metadata.product) return unknown(decoding);
  setContentWithReadable(std::move(*decoding.metadata.product), decoding);
}

// The text may hold the key to the group.
void invitation(Decoding& decoding) { setContentAlone(decoding.metadata.invite.value_or(GroupInvite()), decoding); }

void defaultTimer(Decoding& decoding) {
  if (!decoding.metadata.timerSeconds) return unknown(decoding);
  setContentAlone(Notice{.kind = NoticeKind::defaultTimerSet, .seconds = decoding.metadata.timerSeconds}, decoding);
}

void poll(Decoding& decoding) { setContentWithReadable(decoding.poll.value_or(Poll()), decoding); }

// A call that nobody took has no length.
void call(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  CallRecord record{.seconds = decoding.metadata.callSeconds};
  if (record.seconds == 0) record.seconds.reset();
  const bool isKnown = !row.metadata.empty() && decoding.isMetadataWhole;
  record.isMissed = isKnown && !row.isFromMe && !record.seconds;
  setContentAlone(record, decoding);
}

// An item of its own that holds more than metadata. Of pictures and videos width and height stand in the place of a
// place.
bool hasMedium(const MessageRow& row) {
  const bool hasNumbers =
      row.duration.value_or(0) != 0 || row.latitude.value_or(0) != 0 || row.longitude.value_or(0) != 0;
  const bool hasWords = !isEmpty(row.title) || !isEmpty(row.vCardString) || !isEmpty(row.mediaURL);
  return row.hasFile || row.namesFile || hasNumbers || hasWords;
}

// What belongs to another message and is no message itself.
void association(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  if (!isEmpty(row.text)) return;
  if (hasMedium(row)) return unknown(decoding);
  decoding.message.isHidden = true;
}

struct Type {
  std::int64_t number = 0;
  void (*decode)(Decoding&) = unknown;
};

constexpr std::array types{
    Type{0, text},         Type{1, media},      Type{2, media},       Type{3, media},          Type{4, contacts},
    Type{5, location},     Type{6, groupEvent}, Type{7, link},        Type{8, document},       Type{10, systemNotice},
    Type{11, media},       Type{12, waiting},   Type{14, deleted},    Type{15, media},         Type{19, business},
    Type{20, business},    Type{23, business},  Type{24, business},   Type{25, answer},        Type{31, answer},
    Type{34, answer},      Type{26, product},   Type{27, invitation}, Type{28, defaultTimer},  Type{30, business},
    Type{32, business},    Type{38, viewOnce},  Type{39, viewOnce},   Type{41, business},      Type{42, business},
    Type{46, poll},        Type{53, viewOnce},  Type{54, media},      Type{55, channelNotice}, Type{59, call},
    Type{66, association},
};

bool isForwarded(const MessageRow& row, const MessageMetadata& metadata) {
  constexpr std::int64_t mark = 0x180;
  return metadata.isForwarded || (row.flags >= 0 && (row.flags & mark) == mark);
}

// Most rows are, and need no further look.
bool isPlainText(const MessageRow& row) {
  const bool hasPreview = row.linkTitle || row.linkSummary;
  return row.type == 0 && row.flags == 0 && !row.isStarred && row.metadata.empty() && row.receiptInfo.empty() &&
         !hasPreview;
}

void readBlobs(Decoding& decoding) {
  const MessageRow& row = decoding.row;
  if (!row.metadata.empty()) {
    auto metadata = MessageMetadata::read(row.metadata, row.ownJIDs);
    decoding.isMetadataWhole = metadata.has_value();
    if (metadata) decoding.metadata = std::move(*metadata);
  }
  auto receipts = row.receiptInfo.empty() ? std::nullopt : ReceiptInfo::read(row.receiptInfo, row.ownJIDs);
  if (!receipts) return;
  decoding.poll = std::move(receipts->poll);
  decoding.details.reactions = std::move(receipts->reactions);
}

// What people's messages have, and neither notices nor messages that are gone.
void addMarksAndQuote(Decoding& decoding) {
  const MessageContent& content = decoding.details.content;
  if (std::holds_alternative<Notice>(content) || std::holds_alternative<DeletedMessage>(content)) return;
  decoding.details.quote = std::move(decoding.metadata.quote);
  decoding.details.marks.isForwarded = isForwarded(decoding.row, decoding.metadata);
  decoding.details.marks.isStarred = decoding.row.isStarred;
}

}  // namespace

DecodedMessage MessageDecoder::decode(const MessageRow& row) {
  if (isPlainText(row)) return {.text = row.text};
  Decoding decoding{.row = row, .message = {.text = row.text}};
  readBlobs(decoding);
  const auto* type = std::ranges::find(types, row.type, &Type::number);
  (type == types.end() ? unknown : type->decode)(decoding);
  addMarksAndQuote(decoding);
  if (decoding.details != MessageDetails()) decoding.message.details = std::move(decoding.details);
  return std::move(decoding.message);
}
