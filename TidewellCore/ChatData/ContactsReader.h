#pragma once

#include <filesystem>
#include <vector>

#include "TidewellCore/ChatData/ContactDirectory.h"

namespace ContactsReader {

// Reads a working copy of ContactsV2.sqlite. Empty when its table is missing.
// Throws TidewellError::databaseOpenFailed and TidewellError::invalidDatabase.
std::vector<AddressBookContact> load(const std::filesystem::path& copiedDatabase);

// `base` with the contacts filed in it and their LIDs linked to their numbers.
ContactDirectory directory(const std::vector<AddressBookContact>& contacts, ContactDirectory base);

}  // namespace ContactsReader
