#pragma once

#include "Tests/Support/BackupContents.h"
#include "Tests/Support/DatabaseWriter.h"

// The databases beside those of chats and contacts. Of each the last call or account,
// and what follows, is pending.
namespace Fixture {

// LID.sqlite
DatabaseFiles writeLinkedAccounts(const WhatsAppContents& app);

// CallHistory.sqlite
DatabaseFiles writeCallHistory(const WhatsAppContents& app);

}  // namespace Fixture
