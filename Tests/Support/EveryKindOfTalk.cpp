#include <string>
#include <utility>

#include "Tests/Support/EveryKind.h"
#include "Tests/Support/EveryKindRows.h"
#include "Tests/Support/MessageBlobs.h"

// A talk of two people.
namespace Fixture::EveryKind {

namespace {

MediaFile file(const std::string& name, const std::string& extension, const std::string& caption = "") {
  MediaFile file{.localPath = mediaPath(ana, name, extension), .content = bytesOf("bytes of " + name)};
  if (!caption.empty()) file.title = caption;
  return file;
}

MediaFile once(const std::string& name, const std::string& extension, const std::string& mimeType) {
  MediaFile medium = file(name, extension);
  medium.mimeType = mimeType;
  return medium;
}

void addPictures(Rows& rows) {
  rows.say(me, {.text = "Shall we meet at the Blue Cafe?"});
  rows.send(ana, {.type = 1}, file("aa1", "jpg", "The new awning"));
  rows.send(ana, {.type = 1}, file("aa2", "jpg"));
  rows.say(ana, {.type = 1}, MediaItem{.title = "What a light"});
  rows.say(ana, {.type = 1},
           MediaItem{.latitude = 1200.0, .longitude = 1600.0, .mediaURL = "https://mmg.example.org/f"});
  rows.say(ana, {.type = 1}, MediaItem{.localPath = mediaPath(ana, "aa3", "jpg")});
  rows.say(ana, {.text = "A caption in another column", .type = 1},
           MediaItem{.localPath = mediaPath(ana, "aa4", "jpg")});
  rows.send(ben, {.type = 2}, file("ba1", "mp4", "The band is good"));
  rows.say(ana, {.type = 2}, MediaItem{.duration = 67});
  rows.send(ana, {.type = 11}, file("ca1", "mp4"));
  rows.say(ana, {.type = 11}, MediaItem{.duration = 3});
  rows.send(ana, {.type = 54}, file("da1", "mp4"));
  rows.say(ana, {.type = 54}, MediaItem{.duration = 12});
  rows.send(ana, {.type = 15}, file("ea1", "webp"));
  rows.say(ana, {.type = 15});
  rows.say(ana, {.type = 38});
  rows.send(ana, {.type = 39}, once("ba2", "mp4", "video/mp4"));
  rows.say(ana, {.type = 53}, MediaItem{.duration = 5, .vCard = "audio/ogg; codecs=opus"});
}

void addSoundsAndPapers(Rows& rows) {
  rows.send(ana, {.type = 3}, once("fa1", "opus", "audio/ogg; codecs=opus"));
  rows.say(ana, {.type = 3}, MediaItem{.duration = 7, .vCard = "audio/ogg; codecs=opus"});
  rows.say(me, {.type = 3}, MediaItem{.duration = 3723, .vCard = "audio/mpeg"});
  rows.send(ana, {.text = "Menu.pdf", .type = 8}, file("0a1", "pdf", "The cakes are on page 2"));
  rows.send(ana, {.type = 8}, file("0a2", "pdf", "Prices.pdf"));
  rows.say(ana, {.text = "Report.pdf", .type = 8});
  rows.say(ana, {.type = 43}, MediaItem{.vCard = "video/mp4"});
  rows.send(ana, {.type = 77}, once("0a3", "pdf", "application/pdf"));
}

void addPeopleAndPlaces(Rows& rows) {
  constexpr const char* nameMark = "_$!<Name-Separator>!$_";
  constexpr const char* cardMark = "_$!<VCard-Separator>!$_";
  const std::string carlasCard =
      "BEGIN:VCARD\nVERSION:3.0\nFN:Carla\nTEL;type=CELL;waid=15550000003:+1 555 000 0003\nEND:VCARD";
  const std::string emilsCard = "BEGIN:VCARD\nVERSION:3.0\nFN:Emil\nEMAIL:emil@example.org\nEND:VCARD";
  rows.say(ana, {.type = 4}, MediaItem{.vCard = carlasCard, .vCardName = "Carla"});
  rows.say(ana, {.type = 4},
           MediaItem{.vCard = carlasCard + cardMark + emilsCard,
                     .vCardName = std::string("2 contacts") + nameMark + "Carla" + nameMark + "Emil"});
  rows.say(ana, {.type = 4},
           MediaItem{.vCard = "BEGIN:VCARD\nVERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Zo=C3=AB\n"
                              "TEL:+1 555 000 0011\nEND:VCARD"});
  rows.say(ana, {.type = 5},
           MediaItem{.title = "Blue Cafe", .vCardName = "12 Main St", .latitude = 35.638504, .longitude = -78.876053});
  rows.say(ana, {.type = 5}, MediaItem{.vCard = "35.638504;-78.876053"});
  rows.say(ana, {.type = 5},
           MediaItem{.latitude = 35.7, .longitude = -78.9, .authorName = "1700000000000000", .origin = 1});
  rows.say(ana, {.type = 5});
}

void addLinks(Rows& rows, WhatsAppContents& app) {
  const auto link = [&](Message message, LinkItem item) {
    item.message = rows.say(ana, std::move(message));
    app.linkItems.push_back(std::move(item));
  };
  link({.text = "Look: https://example.org/cafe", .type = 7},
       {.matchedText = "https://example.org/cafe", .title = "Blue Cafe", .summary = "Coffee since 1931"});
  link({.text = "and this https://example.org/tea"}, {.matchedText = "https://example.org/tea", .summary = "All teas"});
  rows.say(ana, {.text = "https://example.org/cake", .type = 7},
           MediaItem{.title = "Cakes",
                     .mediaURL = "https://example.org/cake",
                     .metadata = linkMetadata("Of every colour").bytes()});
  rows.say(ana, {.text = "I saw your advertisement"},
           MediaItem{.metadata = advertisementMetadata("https://example.org/ad").bytes()});
}

void addReplies(Rows& rows) {
  const auto reply = [&](const std::string& words, const ReplyRow& row) {
    return rows.say(me, {.text = words}, MediaItem{.metadata = replyMetadata(row).bytes()});
  };
  const std::int64_t original = rows.say(ana, {.text = "Tea or coffee?"});
  const std::int64_t own = reply("Coffee", {stanzaIDOf(original), ana, "", copyOfText("Tea or coffee?")});
  reply("I mean: a lot of it", {stanzaIDOf(own), me, "", copyOfText("Coffee")});
  reply("Still true", {"3EB0FFFFFFFFFFFFFFFF", ana, "", copyOfText("Something from years ago")});
  reply("Delicious!", {"3EB0AAAAAAAAAAAAAAAA", ana, "status@broadcast", copyOfPhoto("Tomatoes")});
  reply("About the garden:", {"3EB0BBBBBBBBBBBBBBBB", ben, garden, copyOfText("Who brings the spade?")});
  reply("Nice one", {"3EB0CCCCCCCCCCCCCCCC", ana, "", copyOfPhoto()});
  reply("I hear you", {"3EB0DDDDDDDDDDDDDDDD", ana, "", copyOfVoiceMessage()});
  rows.say(me, {.text = "Without a copy"},
           MediaItem{.metadata = Protobuf().text(5, stanzaIDOf(original)).text(6, ana).bytes()});
  rows.say(ana, {.text = "Like in the old days"},
           MediaItem{.metadata = olderReplyMetadata({stanzaIDOf(original), ana, "", copyOfText("Tea or coffee?")})});
}

void addReactionsAndMarks(Rows& rows) {
  constexpr std::int64_t t = 1'678'310'000'000;
  rows.say(ana, {.text = "See you at ten", .receiptInfo = receiptInfo({{ana, "❤️", t}, {"", "👍", t + 1}})});
  rows.say(me, {.text = "Or at nine?", .receiptInfo = receiptInfo({{ana, "👍", t}, {ana, "", t + 1}})});
  rows.say(ana, {.text = "Frost tonight", .flags = 0x180, .starred = true});
  rows.say(ana, {.text = "Cover the beans"}, MediaItem{.metadata = forwardMetadata(5).bytes()});
  rows.say(me, {.text = "*Bold* _italic_ ~struck~ ```mono```\n> as she said\n- one\n- two\n1. first\n`code`"});
}

void addCards(Rows& rows) {
  rows.say(ana, {.type = 26},
           MediaItem{.metadata = productMetadata({"A lamp", "For the evenings", "EUR", 19'990}).bytes()});
  rows.say(ana, {.type = 26}, MediaItem{.metadata = productMetadata({"A spoon", "", "", 0}).bytes()});
  rows.say(ana, {.type = 27}, MediaItem{.metadata = inviteMetadata("Garden", "Come and dig with us").bytes()});
  rows.say(ana, {.type = 27});
  rows.say(ana, {.type = 28}, MediaItem{.metadata = timerMetadata(604'800).bytes()});
  rows.say(ana, {.type = 28}, MediaItem{.metadata = timerMetadata(0).bytes()});
  rows.say(ana, {.type = 46,
                 .receiptInfo = receiptInfo(
                     {}, PollRow{"Which day?", {"Monday", "Friday", "Never"}, {{"", {0}}, {ana, {0, 1}}}})});
  rows.say(ana, {.type = 46});
}

// A call that is in the list of calls as well is told once.
void addCalls(Rows& rows, WhatsAppContents& app) {
  rows.say(ana, {.type = 59}, MediaItem{.metadata = callMetadata(95).bytes()});
  app.calls->push_back({.id = "call:9", .date = rows.date(), .duration = 95.0, .video = true, .participants = {ana}});
  rows.say(me, {.type = 59, .stanzaID = "call:8"}, MediaItem{.metadata = callMetadata(0).bytes()});
  app.calls->push_back({.id = "call:8", .date = rows.date(), .incoming = false, .outcome = 2, .participants = {ana}});
  rows.say(ana, {.type = 59}, MediaItem{.metadata = callMetadata(0).bytes()});
}

void addLost(Rows& rows) {
  rows.say(ana, {.type = 12});
  rows.say(ana, {.type = 14}, MediaItem{.title = "3EB0123456789ABCDEF0"});
  rows.say(me, {.type = 14}, MediaItem{.title = "3EB0123456789ABCDEF1", .vCard = me});
  rows.say(ana, {.type = 66});
  for (const std::int64_t type : {60, 63, 73, 75, 76, 91}) rows.say(ana, {.type = type});
}

}  // namespace

void addConversation(Rows& rows, WhatsAppContents& app) {
  rows.begin({.jid = ana, .name = "Ana"});
  addPictures(rows);
  addSoundsAndPapers(rows);
  addPeopleAndPlaces(rows);
  addLinks(rows, app);
  addReplies(rows);
  addReactionsAndMarks(rows);
  addCards(rows);
  addCalls(rows, app);
  addLost(rows);
}

void addBusiness(Rows& rows) {
  const BusinessRow words{
      "Your seeds",
      "They come today",
      "The Seed Shop",
      {{"Track", "https://example.org/7", ""}, {"Call us", "", "+15550000010"}, {"Thanks", "", ""}}};
  const auto item = [](const Protobuf& metadata) { return MediaItem{.metadata = metadata.bytes()}; };
  rows.begin({.jid = shop, .name = "Seed Shop"});
  for (const std::int64_t type : {19, 20, 23, 24}) rows.say(shop, {.type = type}, item(templateMetadata(words)));
  for (const std::int64_t type : {30, 32}) rows.say(shop, {.type = type}, item(buttonsMetadata(words)));
  for (const std::int64_t type : {41, 42}) rows.say(shop, {.type = type}, item(listMetadata(words)));
  for (const std::int64_t type : {25, 31, 34}) rows.say(me, {.text = "Thanks", .type = type});
  rows.send(shop, {.type = 20},
            {.localPath = mediaPath(shop, "9a1", "jpg"), .content = bytesOf("seeds"), .mimeType = "image/jpeg"});
  rows.say(shop, {.type = 24}, MediaItem{.vCard = "application/pdf"});
  rows.say(shop, {.type = 19});
  for (const std::int64_t code : {25, 26, 29, 30, 38}) rows.tell(code, shop);
}

}  // namespace Fixture::EveryKind
