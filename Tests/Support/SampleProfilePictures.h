#pragma once

#include <span>
#include <vector>

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// The pictures of most chats, in two sizes each, drawn or as a cheap pattern. Some have none, one has
// only the small size, one an older version too, one is WebP under a JPEG's name, one is found under
// the phone number of a chat known by its LID.
std::vector<BackupFile> sampleProfilePictures(std::span<const Chat> chats, bool drawn, SeededRandom& random);

}  // namespace Fixture
