#include "Tests/Support/SampleConversations.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/OpaqueName.h"
#include "Tests/Support/SampleChats.h"
#include "Tests/Support/SampleDetails.h"
#include "Tests/Support/SampleFiles.h"
#include "Tests/Support/SampleProfilePictures.h"
#include "Tests/Support/SampleSurroundings.h"
#include "Tests/Support/SampleTexts.h"
#include "Tests/Support/Screenplay.h"
#include "Tests/Support/ScriptedMessage.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

namespace {

// Seconds since 2001: January 2018 and May 2024, before the screenplay begins.
constexpr double firstDate = 536'500'000;
constexpr double lastDate = 737'500'000;
constexpr double distantPast = -63'114'076'800;
constexpr double distantFuture = 63'113'904'000;
// Smaller samples have no room for the screenplay beside the years before it.
constexpr std::size_t leastMessagesForScreenplay = 1'000;
constexpr std::size_t leastMediaForScreenplay = 100;

class SampleWriter {
 public:
  explicit SampleWriter(const SampleOptions& options)
      : options_(options), random_(options.seed), makeFile_(options.playableMedia, options.seed) {
    if (options.messageCount >= leastMessagesForScreenplay && options.mediaCount >= leastMediaForScreenplay) {
      script_ = cuesInOrder(sampleScreenplay());
    }
  }

  BackupContents write() {
    conversations_ = addSampleChats(app_, random_);
    details_.addCalls(conversations_, firstDate, lastDate);
    addMessages();
    addScript();
    if (options_.sentinelDates) putSentinelDates();
    addLooseMedia();
    for (BackupFile& picture : sampleProfilePictures(app_.chats, options_.playableMedia, random_)) {
      app_.files.push_back(std::move(picture));
    }
    BackupContents contents{.deviceName = "iPhone de Ana", .encryption = options_.encryption, .seed = options_.seed};
    contents.whatsApp = std::move(app_);
    addSurroundings(contents, random_);
    return contents;
  }

 private:
  // Talks of a few messages in one chat, one talk after the other; the keys follow the dates.
  void addMessages() {
    const std::size_t count = options_.messageCount - script_.size();
    double date = firstDate;
    while (app_.messages.size() < count) {
      const Conversation& conversation = pickConversation();
      double now = date;
      for (std::size_t left = 3 + random_.below(11); left > 0 && app_.messages.size() < count; --left) {
        addMessage(conversation, now, count);
        if (!random_.chance(6)) now += static_cast<double>(5 + random_.below(400));
      }
      // A talk has 8 messages on average.
      const auto remaining = static_cast<double>(count - app_.messages.size());
      date += (lastDate - date) * std::min(1.0, 8 / std::max(remaining, 1.0));
    }
  }

  bool isScripted(const std::string& jid) const {
    return std::ranges::find(script_, jid, &ScriptCue::jid) != script_.end();
  }

  void addScript() {
    const std::size_t before = app_.messages.size();
    for (std::size_t place = 0; place < script_.size(); ++place) {
      perform(script_[place], answeredBy(place, before));
    }
  }

  void perform(const ScriptCue& cue, const std::optional<ReplyRow>& answered) {
    Conversation& conversation = *std::ranges::find(conversations_, cue.jid, &Conversation::jid);
    const ScriptLine& line = cue.line;
    const bool mine = line.speaker == "Me";
    ScriptedMessage made = scriptedMessage(withMentions(line), answered, jidOf);
    Message message = std::move(made.message);
    address(conversation, line.date, mine, message);
    if (!made.member.empty() || (!mine && !conversation.members.empty())) {
      message.member = memberOf(conversation, jidOf(made.member.empty() ? line.speaker : made.member), app_);
    }
    if (message.type == groupEventType || message.type == noticeType) message.toJID = sampleOwnJID;
    const std::int64_t type = message.type;
    if (!made.file.empty()) attach(conversation, message, scriptedFile(made.file));
    message.type = type;
    const std::string speaker = conversation.members.empty() ? "" : jidOf(line.speaker);
    add(conversation, speaker, std::move(message), std::move(made));
  }

  // The message with what else tells of it; `speaker` is a member of a group.
  void add(const Conversation& conversation, const std::string& speaker, Message message, ScriptedMessage made) {
    const auto key = static_cast<std::int64_t>(app_.messages.size() + 1);
    if (made.call) {
      message.stanzaID = "call:" + std::to_string(key);
      made.call->id = *message.stanzaID;
      made.call->date = message.date;
      made.call->participants = {conversation.jid};
      if (made.call->incoming && !speaker.empty()) made.call->participants.push_back(speaker);
      app_.calls->push_back(*std::move(made.call));
    }
    if (made.link) {
      made.link->message = key;
      app_.linkItems.push_back(*std::move(made.link));
    }
    if (made.item && !made.file.empty()) {
      app_.mediaFiles.back().metadata = made.item->metadata;
    } else if (made.item) {
      made.item->message = key;
      app_.mediaItems.push_back(*std::move(made.item));
    }
    app_.messages.push_back(std::move(message));
  }

  // `before`: how many messages there were before the script's.
  std::optional<ReplyRow> answeredBy(std::size_t place, std::size_t before) const {
    const ScriptCue& cue = script_[place];
    if (!cue.line.answer) return std::nullopt;
    const ScriptAnswer& answer = *cue.line.answer;
    const std::string jid = answer.speaker == "Me" ? sampleOwnJID : jidOf(answer.speaker);
    for (std::size_t other = place; other-- > 0;) {
      const ScriptLine& line = script_[other].line;
      const bool isIt = script_[other].jid == cue.jid && line.speaker == answer.speaker;
      if (!isIt || !line.text.starts_with(answer.words)) continue;
      return ReplyRow{stanzaIDOf(static_cast<std::int64_t>(before + other + 1)), jid, "", copyOf(withMentions(line))};
    }
    return ReplyRow{"3EB0" + std::to_string(place), jid, "", copyOfText(answer.words)};
  }

  static std::string jidOf(const std::string& name) { return name == "Me" ? "" : personCalled(name).jid(); }

  // The app keeps the digits of who is mentioned, not the name.
  static ScriptLine withMentions(ScriptLine line) {
    for (const SamplePerson& person : samplePeople()) {
      const std::string name = "@" + std::string(person.chatName);
      const std::size_t at = person.chatName.empty() ? std::string::npos : line.text.find(name);
      if (at != std::string::npos) line.text.replace(at + 1, name.size() - 1, person.user);
    }
    return line;
  }

  SampleFile scriptedFile(const std::string& medium) {
    if (medium == "photo") return makeFile_.photo(random_);
    if (medium == "video") return makeFile_.video(random_);
    if (medium == "voice") return makeFile_.voiceNote(random_);
    if (medium == "audio") return makeFile_.audio(random_);
    if (medium == "sticker") return makeFile_.sticker(random_);
    return makeFile_.document(random_, medium);
  }

  // Two dates that stand for none, in chats where they do no harm to a scripted talk.
  void putSentinelDates() {
    std::vector<Message*> plain;
    for (Message& message : app_.messages) {
      const auto chat = static_cast<std::size_t>(std::get<std::int64_t>(message.chat));
      if (plain.size() < 9 && !isScripted(conversations_[chat - 1].jid)) plain.push_back(&message);
    }
    if (app_.messages.size() <= 10 || plain.size() < 9) return;
    plain[3]->date = distantPast;
    plain[8]->date = distantFuture;
  }

  // The first chats are the busiest, the last one stays without a message.
  const Conversation& pickConversation() {
    const std::size_t chats = conversations_.size() - 1;
    const std::size_t range = random_.chance(40) ? 1 + random_.below(chats) : chats;
    return conversations_[random_.below(range)];
  }

  void addMessage(const Conversation& conversation, double date, std::size_t count) {
    const bool mine =
        random_.chance(45) && !conversation.jid.ends_with("@newsletter") && !conversation.jid.ends_with("@status");
    const std::size_t done = app_.messages.size();
    Message message;
    address(conversation, date, mine, message);
    if (!mine) {
      if (!conversation.members.empty()) message.member = random_.pick(conversation.members);
      message.pushName = messagePushName();
    }
    const std::size_t share = options_.mediaCount - scriptedMediaCount();
    if ((done + 1) * share / count > done * share / count) {
      SampleFile file = makeFile_.any(random_);
      if (file.type == photoType && random_.chance(20)) message.text = sampleText(conversation.language, random_);
      attach(conversation, message, std::move(file));
    } else if (random_.chance(2)) {
      message.type = conversation.members.empty() ? deletedType : groupEventType;
    } else {
      message.text = sampleText(conversation.language, random_);
    }
    details_.dress(message, conversation);
    app_.messages.push_back(std::move(message));
  }

  // Sent ones carry fractions of a second, received ones none.
  void address(const Conversation& conversation, double date, bool mine, Message& message) {
    message.chat = conversation.pk;
    message.isFromMe = mine ? 1 : 0;
    (mine ? message.toJID : message.fromJID) = conversation.jid;
    message.date = mine ? date + static_cast<double>(random_.below(1'000'000)) / 1e6 : date;
  }

  std::size_t scriptedMediaCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(script_, [](const ScriptCue& cue) { return hasFile(cue.line); }));
  }

  SQLValue messagePushName() {
    const std::size_t roll = random_.below(100);
    if (roll < 25) return opaqueName(random_);
    if (roll < 30) return bytesOf("Convidada");
    return {};
  }

  // The message is the next one to be added; its text is the file's caption.
  void attach(const Conversation& conversation, Message& message, SampleFile made) {
    message.type = made.type;
    MediaFile file = media(conversation.jid, made.extension, std::move(made.content));
    file.message = static_cast<std::int64_t>(app_.messages.size() + 1);
    file.title = made.type == documentType ? std::move(made.title) : message.text;
    file.duration = std::move(made.duration);
    if (made.type == photoType || made.type == videoType) {
      app_.files.push_back(thumbnail(file.localPath, SampleFiles::thumbnail(random_)));
      file.thumbnailPath = app_.files.back().relativePath.substr(std::string_view("Message/").size());
    }
    app_.mediaFiles.push_back(std::move(file));
  }

  MediaFile media(const std::string& jid, const std::string& extension, Bytes content) {
    return {.localPath = mediaPath(jid, random_.uuid(), extension), .content = std::move(content)};
  }

  // Files that no message carries: in a known chat, and in a chat that has no record any more.
  void addLooseMedia() {
    for (const std::string& jid : {conversations_.front().jid, std::string("5511900014141@s.whatsapp.net")}) {
      for (int count = 0; count < 4; ++count)
        app_.mediaFiles.push_back(media(jid, "jpg", makeFile_.photo(random_).content));
    }
  }

  const SampleOptions& options_;
  SeededRandom random_;
  WhatsAppContents app_;
  SampleFiles makeFile_;
  SampleDetails details_{app_, options_.seed};
  std::vector<ScriptCue> script_;
  std::vector<Conversation> conversations_;
};

}  // namespace

BackupContents sampleBackup(const SampleOptions& options) { return SampleWriter(options).write(); }

}  // namespace Fixture
