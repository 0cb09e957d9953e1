#pragma once

#include <functional>
#include <optional>
#include <string>

#include "TidewellCore/Destination/DestinationIndex.h"
#include "TidewellCore/Library/MediaLedger.h"

// Media that somebody gave another name, or put into another folder of the content root, since they were exported.
namespace MovedFiles {

// The SHA-256 in Base64 of a medium as a backup has it; absent when that does not have it, or in another size.
using DigestOfMedium = std::function<std::optional<std::string>(const KeptMedium& medium)>;

// Lets the ledger follow them: to a file that is nobody else's, with the medium's size and digest. A digest is asked
// for only where there is a file of the size. Throws TidewellError::cancelled.
void follow(MediaLedger& ledger, const DestinationIndex& index, const DigestOfMedium& digestOf,
            const CancellationCheck& isCancelled);

}  // namespace MovedFiles
