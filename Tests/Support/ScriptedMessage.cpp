#include "Tests/Support/ScriptedMessage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "Tests/Support/SampleFiles.h"

namespace Fixture {

namespace {

// A line on its way to being a message.
struct Scripting {
  const ScriptLine& line;
  const JIDOfName& jidOf;
  Protobuf metadata;
  std::optional<PollRow> poll;
  ScriptedMessage made;

  MediaItem& item() {
    if (!made.item) made.item.emplace();
    return *made.item;
  }
};

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

std::string joined(std::vector<std::string>::const_iterator first, std::vector<std::string>::const_iterator last) {
  std::string text;
  for (; first != last; ++first) text += (text.empty() ? "" : "\n") + *first;
  return text;
}

// What stands before the last separator and behind it; all is before where there is none.
std::pair<std::string, std::string> cutAtLast(const std::string& text, const std::string& separator) {
  const std::size_t at = text.rfind(separator);
  if (at == std::string::npos) return {text, ""};
  return {text.substr(0, at), text.substr(at + separator.size())};
}

// "1:35" in seconds.
std::int64_t seconds(const std::string& text) {
  std::int64_t sum = 0;
  std::int64_t part = 0;
  for (const char c : text) {
    if (c == ':') sum = (sum + std::exchange(part, 0)) * 60;
    if (c != ':') part = part * 10 + (c - '0');
  }
  return sum + part;
}

void asText(Scripting& scripting) { scripting.made.message.text = scripting.line.text; }

void asCaption(Scripting& scripting) {
  if (!scripting.line.text.empty()) asText(scripting);
}

// A medium that the phone has not kept: its length, or its caption.
void asLost(Scripting& scripting) {
  const std::string& text = scripting.line.text;
  const bool isLength = !text.empty() && text.find_first_not_of("0123456789:") == std::string::npos;
  if (isLength) scripting.item().duration = seconds(text);
  if (!isLength && !text.empty()) scripting.item().title = text;
}

// "Blue Cafe, 12 Main St (35.638504, -78.876053)"
void asPlace(Scripting& scripting) {
  const auto [words, numbers] = cutAtLast(scripting.line.text, "(");
  const std::size_t comma = words.find(", ");
  MediaItem& item = scripting.item();
  item.latitude = std::strtod(numbers.c_str(), nullptr);
  item.longitude = std::strtod(numbers.substr(numbers.find(',') + 1).c_str(), nullptr);
  if (comma == std::string::npos) return;
  item.title = words.substr(0, comma);
  item.vCardName = words.substr(comma + 2, words.size() - comma - 3);
}

void asLivePlace(Scripting& scripting) {
  asPlace(scripting);
  scripting.item().origin = 1;
  scripting.item().authorName = "1717000000000000";
}

// A person on each line: "Carla, +1 555 000 0003"
void asContacts(Scripting& scripting) {
  std::string names;
  std::string cards;
  for (const std::string& person : linesOf(scripting.line.text)) {
    const auto [name, number] = cutAtLast(person, ", ");
    if (!cards.empty()) cards += "_$!<VCard-Separator>!$_";
    if (!names.empty()) names += "_$!<Name-Separator>!$_";
    names += name;
    cards += "BEGIN:VCARD\nVERSION:3.0\nFN:" + name + "\nTEL;type=CELL:" + number + "\nEND:VCARD";
  }
  const std::size_t count = linesOf(scripting.line.text).size();
  if (count > 1) names = std::to_string(count) + " contatos_$!<Name-Separator>!$_" + names;
  scripting.item().vCard = cards;
  scripting.item().vCardName = names;
}

void asPoll(Scripting& scripting) {
  PollRow poll{.question = scripting.line.text};
  for (const ScriptChoice& choice : scripting.line.choices) {
    const auto option = static_cast<std::int64_t>(poll.options.size());
    poll.options.push_back(choice.words);
    for (const std::string& name : namesIn(choice.rest)) {
      const std::string jid = scripting.jidOf(name);
      auto vote = std::ranges::find(poll.votes, jid, &VoteRow::jid);
      if (vote == poll.votes.end()) vote = poll.votes.insert(vote, {.jid = jid});
      vote->options.push_back(option);
    }
  }
  scripting.poll = std::move(poll);
}

// "A lamp, EUR 19.99", and what it is on the lines below
void asProduct(Scripting& scripting) {
  const std::vector<std::string> lines = linesOf(scripting.line.text);
  const auto [title, price] = cutAtLast(lines[0], ", ");
  ProductRow product{.title = title, .description = joined(lines.begin() + 1, lines.end())};
  product.currency = price.substr(0, 3);
  product.thousandths = static_cast<std::int64_t>(std::strtod(price.substr(3).c_str(), nullptr) * 1000 + 0.5);
  scripting.metadata.append(productMetadata(product));
}

// The group's name, and a word of invitation on the lines below
void asInvitation(Scripting& scripting) {
  const std::vector<std::string> lines = linesOf(scripting.line.text);
  scripting.metadata.append(inviteMetadata(lines[0], joined(lines.begin() + 1, lines.end())));
}

// A title, the words, and a footer
void asBusiness(Scripting& scripting) {
  const std::vector<std::string> lines = linesOf(scripting.line.text);
  BusinessRow text{.title = lines.front(), .words = joined(lines.begin() + 1, lines.end() - 1), .footer = lines.back()};
  for (const ScriptChoice& choice : scripting.line.choices) {
    const bool isURL = choice.rest.starts_with("http");
    text.buttons.push_back({choice.words, isURL ? choice.rest : "", isURL ? "" : choice.rest});
  }
  scripting.metadata.append(templateMetadata(text));
}

// How long it took, or nothing when nobody took it. The list of calls knows it too.
void asCall(Scripting& scripting) {
  const ScriptLine& line = scripting.line;
  const std::int64_t length = seconds(line.text);
  const bool isIncoming = line.speaker != "Me";
  scripting.metadata.append(callMetadata(length));
  scripting.made.call = Call{.duration = static_cast<double>(length),
                             .incoming = isIncoming,
                             .video = line.medium.find("video") != std::string::npos,
                             .missed = isIncoming && length == 0,
                             .outcome = length == 0 ? 1 : 0};
}

void asDeleted(Scripting& scripting) {
  scripting.item().title = "3EB0" + std::to_string(static_cast<std::int64_t>(scripting.line.date));
}

void asNothing(Scripting&) {}

// Somebody was added, or made an admin: the name is the text.
void asAdded(Scripting& scripting) {
  const ScriptLine& line = scripting.line;
  const bool isMine = line.speaker == "Me";
  scripting.made.message.text = scripting.jidOf(isMine ? line.text : line.speaker);
  if (!isMine) scripting.made.member = line.text;
}

void asOfMember(Scripting& scripting) { scripting.made.member = scripting.line.text; }

// What stands in the brackets of a line: its type, its file and how its text is kept.
struct Kind {
  std::string_view medium;
  std::int64_t type = 0;
  void (*make)(Scripting&) = asCaption;
  std::string_view file;
  std::int64_t event = 0;
};

constexpr std::array kinds = {
    Kind{"photo", 1, asCaption, "photo"},
    Kind{"video", 2, asCaption, "video"},
    Kind{"voice", 3, asCaption, "voice"},
    Kind{"audio", 3, asCaption, "audio"},
    Kind{"sticker", 15, asCaption, "sticker"},
    Kind{"gif", 11, asCaption, "video"},
    Kind{"round", 54, asCaption, "video"},
    Kind{"photo once", 38, asCaption, "photo"},
    Kind{"lost photo", 1, asLost},
    Kind{"lost photo once", 38, asLost},
    Kind{"lost video", 2, asLost},
    Kind{"lost voice", 3, asLost},
    Kind{"place", 5, asPlace},
    Kind{"live place", 5, asLivePlace},
    Kind{"contact", 4, asContacts},
    Kind{"poll", 46, asPoll},
    Kind{"product", 26, asProduct},
    Kind{"invitation", 27, asInvitation},
    Kind{"business", 24, asBusiness},
    Kind{"voice call", 59, asCall},
    Kind{"video call", 59, asCall},
    Kind{"deleted", 14, asDeleted},
    Kind{"waiting", 12, asNothing},
    Kind{"unsupported", 91, asNothing},
    Kind{"group renamed", groupEventType, asText, "", 1},
    Kind{"group picture", groupEventType, asNothing, "", 4},
    Kind{"group description", groupEventType, asNothing, "", 17},
    Kind{"added", groupEventType, asAdded, "", 2},
    Kind{"joined by link", groupEventType, asNothing, "", 15},
    Kind{"admin", groupEventType, asOfMember, "", 39},
    Kind{"timer", groupEventType, asText, "", 26},
    Kind{"strange event", groupEventType, asNothing, "", 77},
    Kind{"encrypted", noticeType, asNothing, "", 2},
    Kind{"security code", noticeType, asNothing, "", 3},
    Kind{"business chat", noticeType, asNothing, "", 26},
    Kind{"channel created", 55, asNothing, "", 1},
};

// Views the line.
Kind kindOf(const ScriptLine& line) {
  if (line.medium.empty()) return {.make = asText};
  const auto* kind = std::ranges::find(kinds, line.medium, &Kind::medium);
  if (kind != kinds.end()) return *kind;
  if (!line.medium.ends_with(".pdf") && !line.medium.ends_with(".docx")) {
    throw std::runtime_error("No message is a \"" + line.medium + "\".");
  }
  return {.type = 8, .file = line.medium};
}

// Each a second after the one before.
std::optional<Bytes> receiptsOf(const Scripting& scripting) {
  std::vector<ReactionRow> reactions;
  std::vector<std::pair<std::string, std::int64_t>> totals;
  auto time = static_cast<std::int64_t>((scripting.line.date + 978'307'200 + 60) * 1000);
  for (const ScriptReaction& reaction : scripting.line.reactions) {
    const bool isTotal = reaction.people.find_first_not_of("0123456789") == std::string::npos;
    if (isTotal) totals.emplace_back(reaction.emoji, std::stoll(reaction.people));
    if (isTotal) continue;
    for (const std::string& name : namesIn(reaction.people)) {
      reactions.push_back({.jid = scripting.jidOf(name), .emoji = reaction.emoji, .milliseconds = time += 1000});
    }
  }
  if (!totals.empty()) return reactionTotals(totals);
  if (reactions.empty() && !scripting.poll) return std::nullopt;
  return receiptInfo(reactions, scripting.poll);
}

void addMarks(const ScriptLine& line, Message& message) {
  for (const std::string& mark : line.marks) {
    if (mark == "starred") message.starred = true;
    if (mark == "forwarded") message.flags = 0x180;
  }
}

void addPreview(const ScriptLine& line, ScriptedMessage& made) {
  if (line.preview.empty()) return;
  const auto [title, summary] = cutAtLast(line.preview, " — ");
  const std::size_t start = line.text.find("https://");
  const std::string url = line.text.substr(start, line.text.find_first_of(" \n", start) - start);
  made.message.type = 7;
  made.link = LinkItem{.matchedText = url, .title = title, .summary = summary};
}

}  // namespace

ScriptedMessage scriptedMessage(const ScriptLine& line, const std::optional<ReplyRow>& answered,
                                const JIDOfName& jidOf) {
  Scripting scripting{.line = line, .jidOf = jidOf};
  const Kind kind = kindOf(line);
  Message& message = scripting.made.message;
  message.type = kind.type;
  message.event = kind.event;
  scripting.made.file = kind.file;
  kind.make(scripting);
  addMarks(line, message);
  addPreview(line, scripting.made);
  if (const auto receipts = receiptsOf(scripting)) message.receiptInfo = *receipts;
  if (answered) scripting.metadata.append(replyMetadata(*answered));
  if (!scripting.metadata.bytes().empty()) scripting.item().metadata = scripting.metadata.bytes();
  return std::move(scripting.made);
}

bool hasFile(const ScriptLine& line) { return !kindOf(line).file.empty(); }

Protobuf copyOf(const ScriptLine& line) {
  if (line.medium == "photo") return copyOfPhoto(line.text);
  if (line.medium == "video") return copyOfVideo(line.text);
  return line.medium == "voice" ? copyOfVoiceMessage() : copyOfText(line.text);
}

}  // namespace Fixture
