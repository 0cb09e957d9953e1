#pragma once

#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"

// Backups that tell texts alone.
namespace LibraryTest {

struct Said {
  std::int64_t chat = 1;
  double at = 0;
  std::string text;
  std::string stanza;
};

// What a backup tells that has these chats and messages, those numbered from `first`.
inline ChatStorageSnapshot snapshotOf(const ExportTest::JIDPairs& chats, const std::vector<Said>& messages,
                                      std::int64_t first = 1, const ExportTest::JIDPairs& lids = {}) {
  ChatTables tables = ExportTest::tablesOf(chats, lids);
  for (const Said& said : messages) {
    MessageRecord record{.pk = first++, .chatPK = said.chat, .text = tables.texts.add(said.text)};
    record.date = dateFromUnixTime(said.at);
    if (!said.stanza.empty()) record.stanzaID = tables.texts.add(said.stanza);
    tables.messages.push_back(record);
  }
  return ChatStorageSnapshot(std::move(tables));
}

}  // namespace LibraryTest
