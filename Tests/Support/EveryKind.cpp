#include "Tests/Support/EveryKind.h"

#include "Tests/Support/EveryKindRows.h"

namespace Fixture::EveryKind {

namespace {

void addPeople(WhatsAppContents& app) {
  app.contacts = {{.fullName = "Ana", .whatsAppID = ana},
                  {.fullName = "Ben", .whatsAppID = ben},
                  {.fullName = "Carla", .whatsAppID = carla},
                  {.businessName = "Seed Shop", .whatsAppID = shop}};
  app.pushNames = {{.jid = emil, .name = "Emil"}};
  app.linkedAccounts = {{.lid = carlaLID, .phoneNumber = "15550000003"}, {.lid = doraLID, .displayName = "Dora"}};
}

// What somebody shows to all for a day, and somebody who showed nothing.
void addStatus(Rows& rows) {
  rows.begin({.jid = "15550000001@status", .sessionType = 3});
  rows.say(ana, {.text = "Tomatoes for everybody"});
  rows.begin({.jid = "15550000002@status", .sessionType = 3});
}

void addAnonymousPerson(Rows& rows) {
  rows.begin({.jid = carlaLID});
  rows.say(carla, {.text = "It is me, with another number"});
  rows.say(me, {.text = "I know"});
}

// By columns: a call that no chat tells of, one of a group, and one of somebody without a chat.
void addCalls(Rows& rows, WhatsAppContents& app) {
  const double later = rows.date() + 3600;
  app.calls->push_back({.id = "call:1", .date = later, .duration = 95.4, .participants = {ana}});
  app.calls->push_back({.id = "call:2", .date = later + 60, .missed = true, .outcome = 1, .participants = {ben}});
  app.calls->push_back({.id = "call:3",
                        .date = later + 120,
                        .duration = 104.0,
                        .incoming = false,
                        .video = true,
                        .participants = {ana}});
  app.calls->push_back(
      {.id = "call:4", .date = later + 180, .duration = 3723.0, .video = true, .participants = {garden, ben, ana}});
  app.calls->push_back({.id = "call:5", .date = later + 240, .duration = 7.0, .participants = {emil}});
}

}  // namespace

WhatsAppContents app() {
  WhatsAppContents app;
  app.calls.emplace();
  addPeople(app);
  Rows rows(app);
  addConversation(rows, app);
  addBusiness(rows);
  addGroups(rows, app);
  addNotices(rows);
  addStatus(rows);
  addAnonymousPerson(rows);
  addCalls(rows, app);
  return app;
}

}  // namespace Fixture::EveryKind
