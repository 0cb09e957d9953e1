#include "TidewellCore/Library/ArchiveOwner.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/NameResolver.h"
#include "TidewellCore/Library/LibraryFile.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;
using ArchiveOwner::JIDs;

// What there is to compare; the number first, since people know that.
constexpr std::array servers{UserJIDSuffix, LIDJIDSuffix};

// Whether a JID is somebody's of this server. What a library holds may be anybody's writing, and is shown.
bool isOf(std::string_view jid, std::string_view server) {
  const std::string_view user = JID::userPart(jid);
  return JID::hasServer(jid, server) && !user.empty() && NameResolver::digitsOnly(user) == user;
}

JIDs::const_iterator firstOf(const JIDs& jids, std::string_view server) {
  return std::ranges::find_if(jids, [&](const std::string& jid) { return isOf(jid, server); });
}

bool haveOneInCommon(const JIDs& some, const JIDs& others) {
  return std::ranges::any_of(some, [&](const std::string& jid) { return others.contains(jid); });
}

bool areComparable(const JIDs& some, const JIDs& others) {
  return std::ranges::any_of(servers, [&](std::string_view server) {
    return firstOf(some, server) != some.end() && firstOf(others, server) != others.end();
  });
}

// Of an owner with a JID of either server.
std::string shown(const JIDs& owner) {
  const auto number = firstOf(owner, servers.front());
  const std::string& jid = number != owner.end() ? *number : *firstOf(owner, servers.back());
  return NameResolver::formattedPhone(jid).value_or(std::string(JID::userPart(jid)));
}

void requireSame(const JIDs& owner, const JIDs& own) {
  if (areComparable(owner, own) && !haveOneInCommon(owner, own)) throw TidewellError::foreignArchive(shown(owner));
}

JIDs readable(const fs::path& contentRoot) try {
  return ArchiveOwner::known(LibraryFile::look(contentRoot));
} catch (const TidewellError&) {
  return {};
} catch (const fs::filesystem_error&) {
  return {};
}

}  // namespace

JIDs ArchiveOwner::known(const SQLiteDB& database) {
  JIDs jids;
  database.forEachRow("SELECT jid FROM owner",
                      [&](const SQLiteRowView& row) { jids.emplace(row.text(0).value_or("")); });
  return jids;
}

bool ArchiveOwner::enter(const SQLiteDB& database, const JIDs& own) {
  const JIDs before = known(database);
  const SQLiteStatement write(database, "INSERT INTO owner (jid) VALUES (?)");
  bool isNew = false;
  for (const std::string& jid : own) {
    if (jid.empty() || before.contains(jid)) continue;
    write.run({std::string_view(jid)});
    isNew = true;
  }
  return isNew;
}

void ArchiveOwner::requireSame(const SQLiteDB& database, const ChatStorageSnapshot& snapshot) {
  ::requireSame(known(database), snapshot.ownJIDs());
}

void ArchiveOwner::requireSame(const fs::path& contentRoot, const ChatStorageSnapshot& snapshot) {
  ::requireSame(readable(contentRoot), snapshot.ownJIDs());
}
