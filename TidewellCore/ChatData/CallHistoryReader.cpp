#include "TidewellCore/ChatData/CallHistoryReader.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/ChatData/StoredNumber.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

using Column = TableReader::Column;

constexpr std::int64_t missedOutcome = 1;

// What calls of one row of the list have in common.
struct Aggregate {
  bool isIncoming = false;
  std::optional<bool> isVideo;
  bool isMissed = false;
};

// Rows by their keys, and whether their table has the columns that it has in every version, and holds what it should.
template <typename Row>
struct Rows {
  std::map<std::int64_t, Row> byKey;
  bool areWhole = false;
};
using Aggregates = Rows<Aggregate>;
using Participants = Rows<std::vector<std::string>>;  // by the call's key

Aggregates aggregates(const SQLiteDB& database) {
  TableReader table(database, "ZWAAGGREGATECALLEVENT");
  const Column pk = table.select({"Z_PK"});
  const Column incoming = table.select({"ZINCOMING"});
  const Column video = table.select({"ZVIDEO"});
  const Column missed = table.select({"ZMISSED"});
  Aggregates found{.areWhole = areThere({pk, incoming, video, missed})};
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(pk.place);
    const auto isVideo = row.integer(video.place);
    if (!key) return;
    found.byKey.insert_or_assign(*key, Aggregate{.isIncoming = row.integer(incoming.place).value_or(0) != 0,
                                                 .isVideo = isVideo ? std::optional(*isVideo != 0) : std::nullopt,
                                                 .isMissed = row.integer(missed.place).value_or(0) != 0});
  });
  return found;
}

std::optional<std::string> jid(const SQLiteRowView& row, Column column) {
  return StoredJID::checked(textOrUTF8(row, column).value_or(""));
}

Participants participants(const SQLiteDB& database) {
  TableReader table(database, "ZWACDCALLEVENTPARTICIPANT");
  const Column call = table.select({"Z1PARTICIPANTS"});
  const Column participant = table.select({"ZJIDSTRING"});
  Participants found{.areWhole = areThere({call, participant})};
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto key = row.integer(call.place);
    auto person = jid(row, participant);
    // A call whose person cannot be told is in no chat.
    if (!person && !textOrUTF8(row, participant).value_or("").empty()) found.areWhole = false;
    if (!key || !person) return;
    std::vector<std::string>& people = found.byKey[*key];
    const bool isNew = std::ranges::find(people, *person) == people.end();
    if (isNew && people.size() < CallHistoryReader::mostParticipants) people.push_back(std::move(*person));
  });
  return found;
}

// A group among the participants is where the call was.
void moveGroup(PastCall& call) {
  const auto group =
      std::ranges::find_if(call.participantJIDs, [](const std::string& each) { return JID::isGroup(each); });
  if (group == call.participantJIDs.end()) return;
  if (!call.groupJID) call.groupJID = *group;
  call.participantJIDs.erase(group);
}

class CallTable {
 public:
  CallTable(const SQLiteDB& database, Aggregates aggregates, Participants participants)
      : table_(database, "ZWACDCALLEVENT"),
        aggregates_(std::move(aggregates)),
        participants_(std::move(participants)) {}

  bool isWhole() const {
    return aggregates_.areWhole && participants_.areWhole && areThere({pk_, aggregate_, date_, duration_, outcome_});
  }

  std::vector<PastCall> load() {
    std::vector<std::pair<std::int64_t, PastCall>> calls;
    table_.forEachRow([&](const SQLiteRowView& row) {
      if (const auto key = row.integer(pk_.place)) calls.emplace_back(*key, call(row, *key));
    });
    std::ranges::sort(calls, {}, [](const auto& each) {
      const std::optional<Date>& date = each.second.date;
      return std::tuple(date.has_value(), date ? unixTime(*date) : 0.0, each.first);
    });
    std::vector<PastCall> inOrder;
    for (auto& [key, each] : calls) inOrder.push_back(std::move(each));
    return inOrder;
  }

 private:
  PastCall call(const SQLiteRowView& row, std::int64_t key) {
    const auto found = aggregates_.byKey.find(row.integer(aggregate_.place).value_or(0));
    const Aggregate common = found == aggregates_.byKey.end() ? Aggregate{} : found->second;
    const auto people = participants_.byKey.find(key);
    PastCall call{.pk = key,
                  .id = std::string(textOrUTF8(row, id_).value_or("")),
                  .date = StoredNumber::date(row, date_),
                  .isIncoming = common.isIncoming,
                  .call = {.isVideo = common.isVideo, .seconds = StoredNumber::seconds(row, duration_)},
                  .groupJID = jid(row, group_),
                  .creatorJID = jid(row, creator_)};
    if (people != participants_.byKey.end()) call.participantJIDs = people->second;
    moveGroup(call);
    if (call.call.seconds == 0) call.call.seconds.reset();
    const bool isMissed = common.isMissed || row.integer(outcome_.place) == missedOutcome;
    call.call.isMissed = isMissed && call.isIncoming && !call.call.seconds;
    call.call.isGroup = call.groupJID.has_value();
    return call;
  }

  TableReader table_;
  const Aggregates aggregates_;
  const Participants participants_;
  const Column pk_ = table_.select({"Z_PK"});
  const Column aggregate_ = table_.select({"Z1CALLEVENTS"});
  const Column date_ = table_.select({"ZDATE"});
  const Column duration_ = table_.select({"ZDURATION"});
  const Column outcome_ = table_.select({"ZOUTCOME"});
  const Column id_ = table_.select({"ZCALLIDSTRING", "ZCALLID"});
  const Column group_ = table_.select({"ZGROUPJIDSTRING", "ZGROUPJID"});
  const Column creator_ = table_.select({"ZGROUPCALLCREATORUSERJIDSTRING", "ZCREATORJIDSTRING", "ZCREATORJID"});
};

}  // namespace

bool CallHistoryReader::load(const std::filesystem::path& copiedDatabase, std::vector<PastCall>& calls) {
  const SQLiteDB database(PathText::text(copiedDatabase), SQLiteDB::OpenMode::writableCopy);
  CallTable table(database, aggregates(database), participants(database));
  calls = table.load();
  return table.isWhole();
}
