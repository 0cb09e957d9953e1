#include "Tests/Support/SampleConversations.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/OpaqueName.h"
#include "Tests/Support/SampleChats.h"
#include "Tests/Support/SampleFiles.h"
#include "Tests/Support/SampleProfilePictures.h"
#include "Tests/Support/SampleSurroundings.h"
#include "Tests/Support/SampleTexts.h"
#include "Tests/Support/Screenplay.h"
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
    for (const ScriptCue& cue : script_) {
      Conversation& conversation = *std::ranges::find(conversations_, cue.jid, &Conversation::jid);
      const ScriptLine& line = cue.line;
      const bool mine = line.speaker == "Me";
      Message message = newMessage(conversation, line.date, mine);
      if (!mine && !conversation.members.empty()) message.member = memberFor(conversation, line.speaker);
      if (!line.text.empty()) message.text = line.text;
      if (!line.medium.empty()) attach(conversation, message, scriptedFile(line.medium));
      app_.messages.push_back(std::move(message));
    }
  }

  SampleFile scriptedFile(const std::string& medium) {
    if (medium == "photo") return makeFile_.photo(random_);
    if (medium == "video") return makeFile_.video(random_);
    if (medium == "voice") return makeFile_.voiceNote(random_);
    if (medium == "audio") return makeFile_.audio(random_);
    if (medium == "sticker") return makeFile_.sticker(random_);
    return makeFile_.document(random_, medium);
  }

  // The group member of that name in the address book, who joins when not yet there.
  std::int64_t memberFor(Conversation& conversation, const std::string& name) {
    const SamplePerson& person = *std::ranges::find_if(
        samplePeople(), [&](const SamplePerson& candidate) { return candidate.contact.starts_with(name); });
    return memberOf(conversation, person.jid(), app_);
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
    const bool mine = random_.chance(45) && conversation.jid != "120363000000000099@newsletter";
    const std::size_t done = app_.messages.size();
    Message message = newMessage(conversation, date, mine);
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
    app_.messages.push_back(std::move(message));
  }

  // Sent ones carry fractions of a second, received ones none.
  Message newMessage(const Conversation& conversation, double date, bool mine) {
    Message message{.chat = conversation.pk, .isFromMe = mine ? 1 : 0};
    if (mine) {
      message.date = date + static_cast<double>(random_.below(1'000'000)) / 1e6;
      message.toJID = conversation.jid;
    } else {
      message.date = date;
      message.fromJID = conversation.jid;
    }
    return message;
  }

  std::size_t scriptedMediaCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(script_, [](const ScriptCue& cue) { return !cue.line.medium.empty(); }));
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
  std::vector<ScriptCue> script_;
  std::vector<Conversation> conversations_;
};

}  // namespace

BackupContents sampleBackup(const SampleOptions& options) { return SampleWriter(options).write(); }

}  // namespace Fixture
