#include "Tests/Support/SideDatabases.h"

#include <cstdint>
#include <vector>

#include "Tests/Support/CallSchema.h"

namespace Fixture {

namespace {

// Core Data's entity numbers.
enum Entity : std::int64_t { aggregateEntity = 1, callEntity = 2, participantEntity = 3, accountEntity = 17 };

void addAccount(DatabaseWriter& writer, const LinkedAccount& account, std::int64_t pk) {
  writer.insert("ZWAZACCOUNT", {{"Z_PK", pk},
                                {"Z_ENT", accountEntity},
                                {"Z_OPT", 1},
                                {"ZIDENTIFIER", account.lid},
                                {"ZPHONENUMBER", account.phoneNumber},
                                {"ZDISPLAYNAME", account.displayName}});
}

// Each call is a row of the list by itself.
void addCall(DatabaseWriter& writer, const Call& call, std::int64_t pk) {
  writer.insert("ZWAAGGREGATECALLEVENT", {{"Z_PK", pk},
                                          {"Z_ENT", aggregateEntity},
                                          {"Z_OPT", 1},
                                          {"ZINCOMING", call.incoming ? 1 : 0},
                                          {"ZMISSED", call.missed ? 1 : 0},
                                          {"ZVIDEO", call.video ? 1 : 0},
                                          {"ZFIRSTDATE", call.date}});
  writer.insert("ZWACDCALLEVENT", {{"Z_PK", pk},
                                   {"Z_ENT", callEntity},
                                   {"Z_OPT", 1},
                                   {"ZOUTCOME", call.outcome},
                                   {"Z1CALLEVENTS", pk},
                                   {"ZDATE", call.date},
                                   {"ZDURATION", call.duration},
                                   {"ZCALLIDSTRING", call.id}});
  for (const std::string& jid : call.participants) {
    writer.insert(
        "ZWACDCALLEVENTPARTICIPANT",
        {{"Z_ENT", participantEntity}, {"Z_OPT", 1}, {"ZOUTCOME", 0}, {"Z1PARTICIPANTS", pk}, {"ZJIDSTRING", jid}});
  }
}

template <typename Record>
DatabaseFiles write(Journal journal, const char* schema, const std::vector<Record>& records,
                    void (*add)(DatabaseWriter&, const Record&, std::int64_t)) {
  DatabaseWriter writer(journal);
  writer.execute(schema);
  for (std::size_t index = 0; index < records.size(); ++index) {
    if (index == settledCount(records.size())) writer.checkpoint();
    add(writer, records[index], static_cast<std::int64_t>(index + 1));
  }
  return writer.finish();
}

}  // namespace

DatabaseFiles writeLinkedAccounts(const WhatsAppContents& app) {
  return write(app.journal, linkedIdentitySchema, *app.linkedAccounts, addAccount);
}

DatabaseFiles writeCallHistory(const WhatsAppContents& app) {
  return write(app.journal, callHistorySchema, *app.calls, addCall);
}

}  // namespace Fixture
