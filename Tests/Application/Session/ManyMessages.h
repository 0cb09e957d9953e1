#pragma once

#include "Tests/Support/BackupContents.h"

namespace WizardTest {

// A plain backup of so many messages in 1,000 chats, with texts of 10 to 90 characters, and so many small photos.
Fixture::BackupContents manyMessages(int messageCount, int photoCount);

}  // namespace WizardTest
