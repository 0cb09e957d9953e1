#pragma once

#include <string>
#include <vector>

#include "Tests/Support/ChatDatabase.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ChatStorageSnapshot.h"
#include "TidewellCore/ChatData/ContactsReader.h"

// What the readers make of databases that are written for one test and gone after it.
namespace Fixture {

inline void writeDatabase(const DatabaseFiles& files, const std::filesystem::path& database) {
  writeFile(database, files.main);
  if (files.wal) writeFile(database.string() + "-wal", *files.wal);
  if (files.shm) writeFile(database.string() + "-shm", *files.shm);
}

inline ChatTables readTables(const WhatsAppContents& app, const ChatStorageReader::Setting& setting = {}) {
  const TemporaryDirectory folder;
  writeDatabase(writeChatStorage(app), folder / "ChatStorage.sqlite");
  return ChatStorageReader::load(folder / "ChatStorage.sqlite", setting);
}

inline ChatStorageSnapshot readChats(const WhatsAppContents& app) { return ChatStorageSnapshot(readTables(app)); }

inline std::vector<AddressBookContact> readContacts(const WhatsAppContents& app) {
  const TemporaryDirectory folder;
  writeDatabase(writeContacts(app), folder / "ContactsV2.sqlite");
  std::vector<AddressBookContact> contacts;
  ContactsReader::load(folder / "ContactsV2.sqlite", contacts);
  return contacts;
}

// Both together, as a scan has them.
inline ChatStorageSnapshot readApp(const WhatsAppContents& app) {
  ChatTables tables = readTables(app);
  tables.directory = ContactsReader::directory(readContacts(app), std::move(tables.directory));
  return ChatStorageSnapshot(std::move(tables));
}

// The messages of the record with that key, in their chat's order. They live as long as the snapshot.
inline std::vector<MessageRecord> messagesOf(const ChatStorageSnapshot& snapshot, std::int64_t chatPK) {
  std::vector<MessageRecord> messages;
  for (const MessageRecord& message : snapshot.messages()) {
    if (message.chatPK == chatPK) messages.push_back(message);
  }
  return messages;
}

// A chat database of that very schema and content.
inline ChatStorageSnapshot readChatSQL(const std::string& sql) {
  const TemporaryDirectory folder;
  DatabaseWriter writer(Journal::rollback);
  writer.execute(sql);
  writeDatabase(writer.finish(), folder / "ChatStorage.sqlite");
  return ChatStorageSnapshot(ChatStorageReader::load(folder / "ChatStorage.sqlite"));
}

}  // namespace Fixture
