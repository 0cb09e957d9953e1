#pragma once

#include <string>
#include <vector>

#include "Tests/Support/ChatDatabase.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/ChatData/ChatStorageReader.h"
#include "TidewellCore/ChatData/ContactsReader.h"

// What the readers make of databases that are written for one test and gone after it.
namespace Fixture {

inline void writeDatabase(const DatabaseFiles& files, const std::filesystem::path& database) {
  writeFile(database, files.main);
  if (files.wal) writeFile(database.string() + "-wal", *files.wal);
  if (files.shm) writeFile(database.string() + "-shm", *files.shm);
}

inline ChatStorageSnapshot readChats(const WhatsAppContents& app) {
  const TemporaryDirectory folder;
  writeDatabase(writeChatStorage(app), folder / "ChatStorage.sqlite");
  return ChatStorageReader::load(folder / "ChatStorage.sqlite");
}

inline std::vector<AddressBookContact> readContacts(const WhatsAppContents& app) {
  const TemporaryDirectory folder;
  writeDatabase(writeContacts(app), folder / "ContactsV2.sqlite");
  std::vector<AddressBookContact> contacts;
  ContactsReader::load(folder / "ContactsV2.sqlite", contacts);
  return contacts;
}

// Both together, as a scan has them.
inline ChatStorageSnapshot readApp(const WhatsAppContents& app) {
  ChatStorageSnapshot snapshot = readChats(app);
  snapshot.setDirectory(ContactsReader::directory(readContacts(app), std::move(snapshot.directory)));
  return snapshot;
}

// A chat database of that very schema and content.
inline ChatStorageSnapshot readChatSQL(const std::string& sql) {
  const TemporaryDirectory folder;
  DatabaseWriter writer(Journal::rollback);
  writer.execute(sql);
  writeDatabase(writer.finish(), folder / "ChatStorage.sqlite");
  return ChatStorageReader::load(folder / "ChatStorage.sqlite");
}

}  // namespace Fixture
