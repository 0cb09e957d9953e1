#include "Tests/Fuzz/DatabaseTargets.h"

#include <string>

#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Backup/ManifestStore.h"
#include "TidewellCore/Backup/StoredFileLocation.h"
#include "TidewellCore/ChatData/CallHistoryReader.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/ChatData/ContactsReader.h"
#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/ChatData/LinkedIdentities.h"
#include "TidewellCore/Platform/Precondition.h"
#include "TidewellCore/Platform/Text.h"
#include "TidewellCore/TidewellError.h"

namespace {

namespace fs = std::filesystem;

// Calls `read` with the input as a file. A database that cannot be read says so in one way only.
template <typename Read>
void withFile(ByteView input, const char* name, Read read) {
  static const Fixture::TemporaryDirectory folder;
  const fs::path file = folder / name;
  Fixture::writeFile(file, input);
  try {
    read(file);
  } catch (const TidewellError&) {
  }
}

void checkText(const std::optional<std::string_view>& text) {
  precondition(!text || Text::isValid(*text), "text of a database is UTF-8");
}

}  // namespace

void DatabaseTargets::chatDatabase(ByteView input) {
  withFile(input, "ChatStorage.sqlite", [](const fs::path& file) {
    const ChatStorageSnapshot snapshot(ChatStorageReader::load(file));
    for (const auto& [pk, chat] : snapshot.records()) {
      checkText(chat.jid);
      checkText(snapshot.chatTitle(chat.jid));
    }
    for (const MessageRecord& message : snapshot.messages()) {
      checkText(message.text);
      checkText(message.mediaLocalPath);
      checkText(snapshot.senderName(message, {}));
    }
  });
}

void DatabaseTargets::contacts(ByteView input) {
  withFile(input, "ContactsV2.sqlite", [](const fs::path& file) {
    std::vector<AddressBookContact> contacts;
    ContactsReader::load(file, contacts);
    for (const AddressBookContact& contact : contacts) checkText(contact.bestName());
    ContactsReader::directory(contacts, {});
  });
}

void DatabaseTargets::callHistory(ByteView input) {
  withFile(input, "CallHistory.sqlite", [](const fs::path& file) {
    std::vector<PastCall> calls;
    CallHistoryReader::load(file, calls);
    for (const PastCall& call : calls) {
      checkText(call.id);
      precondition(call.call.seconds.value_or(1) > 0, "a call that was taken has a length");
    }
  });
}

void DatabaseTargets::linkedIdentities(ByteView input) {
  withFile(input, "LID.sqlite", [](const fs::path& file) {
    std::vector<LinkedIdentity> identities;
    LinkedIdentities::load(file, identities);
    for (const LinkedIdentity& identity : identities) {
      checkText(identity.name);
      precondition(JID::isLID(identity.lid), "an identity is one");
      precondition(identity.phoneJID != identity.lid, "nobody stands behind himself");
    }
  });
}

void DatabaseTargets::manifestDatabase(ByteView input) {
  withFile(input, "Manifest.db", [](const fs::path& file) {
    const fs::path backup = file.parent_path();
    for (const ManifestFile& entry : ManifestStore::load(backup, file, true).files) {
      checkText(entry.relativePath);
      const auto stored = storedFileLocation(backup, entry.fileID);
      if (stored) precondition(stored->parent_path().parent_path() == backup, "a stored file stands in its backup");
    }
  });
}
