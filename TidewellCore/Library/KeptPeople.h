#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/ChatData/MessageContent.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// Whom the library knows: those who wrote messages, under the names that they are shown
// with, and those whom messages tell of, by their JIDs.
class KeptPeople {
 public:
  struct Sender {
    std::string jid;                  // empty where it is not known
    std::optional<std::string> name;  // absent for somebody whom nobody knows

    auto operator<=>(const Sender&) const = default;
  };
  // What is known of a JID.
  struct Known {
    std::optional<std::string> name;  // absent for the owner, and for whom nothing names
    bool isOwner = false;

    bool operator==(const Known&) const = default;
  };

  // Reads all of them.
  explicit KeptPeople(const SQLiteDB& database);

  // Null for a number that nobody has.
  const Sender* sender(std::int64_t number) const;
  // Null for a JID of which nothing is known.
  const Known* known(std::string_view jid) const;

  // The number of a sender, who is entered when they are new.
  std::int64_t enter(Sender sender);
  // Takes what a backup knows of a JID; what is known already stays where `isNewer` is false, and a
  // name always gives way to a name alone. Tells whether anything changed that was known before.
  bool tell(const std::string& jid, const Known& known, bool isNewer);

  // Writes what is new. Tells whether there was anything.
  bool save(const SQLiteDB& database);

 private:
  std::vector<Sender> senders_;  // by their numbers
  std::map<Sender, std::int64_t> numbers_;
  std::size_t savedSenders_ = 0;
  std::map<std::string, Known, std::less<>> people_;
  std::vector<std::string> unsavedPeople_;
};
