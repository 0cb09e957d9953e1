#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/ContactDirectory.h"

namespace ContactsReader {

// Appends what a working copy of ContactsV2.sqlite holds; nothing when its table is missing.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase; the
// contacts that were read by then stay.
void load(const std::filesystem::path& copiedDatabase, std::vector<AddressBookContact>& contacts);

// `base` with the contacts filed in it and their LIDs linked to their numbers.
ContactDirectory directory(const std::vector<AddressBookContact>& contacts, ContactDirectory base);

}  // namespace ContactsReader
