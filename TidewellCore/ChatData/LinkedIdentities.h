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

// Appends what a working copy of LID.sqlite knows, in the older table and in the newer; an
// identity of which neither number nor name is known is left out. Returns false when both
// tables are missing, or a column of one that is there.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase; the
// identities that were read by then stay.
bool load(const std::filesystem::path& copiedDatabase, std::vector<LinkedIdentity>& identities);

}  // namespace LinkedIdentities
