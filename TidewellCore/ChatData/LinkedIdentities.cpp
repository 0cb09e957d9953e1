#include "TidewellCore/ChatData/LinkedIdentities.h"

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/ChatData/TableReader.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

using Column = TableReader::Column;

// Text, numbers as text, and bytes that are text.
std::optional<std::string> field(const SQLiteRowView& row, Column column) {
  const bool isBlob = row.type(column.place) == SQLiteRowView::Type::blob;
  const auto text = isBlob ? textOrUTF8(row, column) : row.text(column.place);
  return text ? NameResolver::trimmedNonEmpty(NameResolver::cut(std::string(*text))) : std::nullopt;
}

// The JID when its server is that of the suffix.
std::optional<std::string> ofServer(const std::string& jid, std::string_view suffix) {
  auto checked = StoredJID::checked(jid);
  return checked && JID::hasServer(*checked, suffix) ? checked : std::nullopt;
}

std::optional<std::string> plausible(std::optional<std::string> name) {
  return name && NameResolver::isPlausibleDisplayName(*name) ? name : std::nullopt;
}

struct Columns {
  const char* table = nullptr;
  const char* lid = nullptr;
  bool hasNames = false;
};

enum class State { missing, partial, whole };

State load(const SQLiteDB& database, const Columns& columns, std::vector<LinkedIdentity>& identities) {
  TableReader table(database, columns.table);
  const Column lid = table.select({columns.lid});
  const Column phone = table.select({"ZPHONENUMBER"});
  const Column name = table.select({"ZDISPLAYNAME"});
  table.forEachRow([&](const SQLiteRowView& row) {
    const auto identity = ofServer(NameResolver::lidJID(field(row, lid).value_or("")), LIDJIDSuffix);
    if (!identity) return;
    const std::string number = NameResolver::whatsAppJID(field(row, phone).value_or(""));
    LinkedIdentity linked{
        .lid = *identity, .phoneJID = ofServer(number, UserJIDSuffix), .name = plausible(field(row, name))};
    if (linked.phoneJID || linked.name) identities.push_back(std::move(linked));
  });
  if (!table.isThere()) return State::missing;
  return areThere({lid, phone}) && (name.isThere() || !columns.hasNames) ? State::whole : State::partial;
}

}  // namespace

bool LinkedIdentities::load(const std::filesystem::path& copiedDatabase, std::vector<LinkedIdentity>& identities) {
  const SQLiteDB database(PathText::text(copiedDatabase), SQLiteDB::OpenMode::writableCopy);
  const State older = ::load(database, {.table = "ZWAPHONENUMBERLIDPAIR", .lid = "ZLID"}, identities);
  const State newer = ::load(database, {.table = "ZWAZACCOUNT", .lid = "ZIDENTIFIER", .hasNames = true}, identities);
  const bool isOneThere = older != State::missing || newer != State::missing;
  return isOneThere && older != State::partial && newer != State::partial;
}
