#include <string>

#include "Tests/Support/EveryKind.h"
#include "Tests/Support/EveryKindRows.h"
#include "Tests/Support/MessageBlobs.h"

// What WhatsApp itself tells, and what groups and channels say.
namespace Fixture::EveryKind {

namespace {

void addGroupsBeginning(Rows& rows) {
  rows.tell(12, ana, R"({"subject":"Garden","author":")" + ana + R"("})");
  rows.tell(2, ben, ana);
  rows.tell(2, doraLID, doraLID);
  rows.tell(2, carlaLID);
  rows.tell(2);
  rows.tell(50, "", ana + ";" + ben + "," + carlaLID);
  for (const std::int64_t code : {15, 23, 30}) rows.tell(code, ben);
}

void addGroupsLife(Rows& rows) {
  rows.tell(1, ana, "Garden friends");
  rows.tell(56, "", R"({"previous_subject":"Garden friends","new_subject":"Garden","author":")" + ben + R"("})");
  for (const std::int64_t code : {4, 5, 17, 22, 9}) rows.tell(code, ana);
  rows.tell(4, me);
  for (const std::int64_t code : {10, 11, 18, 19, 20, 21}) rows.tell(code);
  rows.tell(39, ben);
  for (const char* who : {"0", "1"}) {
    rows.tell(42, ana, who);
    rows.tell(64, ana, who);
  }
  rows.tell(26, ana, "604800");
  rows.tell(26, me, "86400");
  rows.tell(26, ana, "0");
  for (const std::int64_t code : {13, 31, 61, 33, 57, 60}) rows.tell(code, "", R"({"linked_groups":[]})");
  rows.tell(43, ben);
  rows.tell(51, "", R"({"author":")" + ana + R"(","subject":null,"parent_group_name":"Village"})");
  for (const std::int64_t code : {36, 37, 58, 68, 77, 91}) rows.tell(code, ana, "120363000000000009@g.us");
}

void addGroupTalk(Rows& rows, WhatsAppContents& app) {
  constexpr std::int64_t t = 1'678'320'000'000;
  const std::int64_t question = rows.say(ana, {.text = "Who brings the spade, @15550000002 or @100000000000003?"});
  rows.say(ben, {.text = "I do", .receiptInfo = receiptInfo({{ana, "👍", t}, {carlaLID, "👍", t + 1}, {"", "🎉", t + 2}})},
           MediaItem{.metadata = replyMetadata({stanzaIDOf(question), ana, "",
                                                copyOfText("Who brings the spade, @15550000002 or @100000000000003?")})
                                     .bytes()});
  rows.say(doraLID, {.text = "And I the rake"});
  rows.say(carlaLID, {.text = "See @99999999999 there"});
  rows.say(ben, {.type = 59}, MediaItem{.metadata = callMetadata(61).bytes()});
  app.calls->push_back({.id = "call:7", .date = rows.date(), .duration = 61.0, .participants = {garden, ben, ana}});
  rows.say(ben, {.type = 14}, MediaItem{.title = "3EB0123456789ABCDEF2", .vCard = ana});
  rows.say(carlaLID, {.type = 14}, MediaItem{.title = "3EB0123456789ABCDEF3", .vCard = carla});
  rows.say(ben, {.type = 14}, MediaItem{.title = "3EB0123456789ABCDEF4", .vCard = me});
  rows.say(
      ana,
      {.type = 46,
       .receiptInfo = receiptInfo(
           {}, PollRow{"Which tool, @15550000002?", {"Spade", "Rake"}, {{ben, {0}}, {carlaLID, {0}}, {"", {1}}}})});
}

void addGroupsEnd(Rows& rows) {
  rows.tell(7, ben, ana);
  rows.tell(7, carlaLID);
  rows.tell(7, me, ana);
  rows.tell(3, ben);
  rows.tell(3, me);
}

}  // namespace

void addGroups(Rows& rows, WhatsAppContents& app) {
  rows.begin({.jid = garden, .name = "Garden", .creatorJID = ana}, {ana, ben, carlaLID, doraLID});
  addGroupsBeginning(rows);
  addGroupsLife(rows);
  addGroupTalk(rows, app);
  addGroupsEnd(rows);
  rows.begin({.jid = roses, .name = "Roses", .creatorJID = me}, {ana});
  rows.tell(12);
}

void addNotices(Rows& rows) {
  rows.begin({.jid = ben, .name = "Ben"});
  for (const std::int64_t code : {2, 3, 36, 1, 45, 4, 46, 21, 22, 40, 41, 5, 6, 34, 35, 47, 51, 56, 58, 91}) {
    rows.tell(code);
  }
  rows.begin({.jid = channel, .name = "Village News", .sessionType = 5});
  for (const std::int64_t code : {1, 4, 9}) {
    rows.say(channel, {.type = 55, .event = code});
  }
  rows.say(channel, {.text = "The market opens at eight", .receiptInfo = reactionTotals({{"👍", 120}, {"❤️", 45}})});
}

}  // namespace Fixture::EveryKind
