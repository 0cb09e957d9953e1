#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Who stands behind an anonymous identity.
struct LinkedIdentity {
  std::string lid;                      // a full JID
  std::optional<std::string> phoneJID;  // a full JID, never another identity
  std::optional<std::string> name;

  bool operator==(const LinkedIdentity&) const = default;
};

namespace LinkedIdentities {

// What a working copy of LID.sqlite knows, in the older table and in the newer; an
// identity of which neither number nor name is known is left out.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase.
std::vector<LinkedIdentity> load(const std::filesystem::path& copiedDatabase);

}  // namespace LinkedIdentities
