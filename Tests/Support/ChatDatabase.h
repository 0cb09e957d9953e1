#pragma once

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/DatabaseWriter.h"

namespace Fixture {

// ChatStorage.sqlite. Of every table the last quarter of the rows, at least one, is pending.
DatabaseFiles writeChatStorage(const WhatsAppContents& app);

// ContactsV2.sqlite, in the same way.
DatabaseFiles writeContacts(const WhatsAppContents& app);

}  // namespace Fixture
