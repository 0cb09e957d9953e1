#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/ContactDirectory.h"

namespace ContactsReader {

// Appends what a working copy of ContactsV2.sqlite holds. Returns false when its table is missing, or the
// columns by which every version knows and names a contact.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase; the
// contacts that were read by then stay.
bool load(const std::filesystem::path& copiedDatabase, std::vector<AddressBookContact>& contacts);

// `base` with the contacts filed in it and their LIDs linked to their numbers.
ContactDirectory directory(const std::vector<AddressBookContact>& contacts, ContactDirectory base);

}  // namespace ContactsReader
