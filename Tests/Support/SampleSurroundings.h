#pragma once

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// Adds what lies around the chats: the app's other files, other apps' files, folders and a link.
void addSurroundings(BackupContents& contents, SeededRandom& random);

}  // namespace Fixture
