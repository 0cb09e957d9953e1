#include "Tests/Application/Session/ManyMessages.h"

#include <algorithm>
#include <string>

#include "Tests/Support/Bytes.h"

namespace WizardTest {

namespace {

constexpr int chatCount = 1000;

std::string numbersTo(int last) {
  return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(last) + ") ";
}

Fixture::MediaFile photo(int number) {
  std::string name = std::to_string(number);
  name.insert(0, 8 - std::min<std::size_t>(name.size(), 8), '0');
  const std::string jid = std::to_string(5511900000000 + number % chatCount) + "@s.whatsapp.net";
  return {.localPath = Fixture::mediaPath(jid, name, "jpg"), .content = Fixture::bytesOf("photo " + name)};
}

}  // namespace

Fixture::BackupContents manyMessages(int messageCount, int photoCount) {
  Fixture::BackupContents contents;
  Fixture::WhatsAppContents& app = contents.whatsApp;
  app.journal = Fixture::Journal::rollback;
  app.chatStorageSQL = numbersTo(chatCount) +
                       "INSERT INTO ZWACHATSESSION (Z_PK, ZCONTACTJID, ZPARTNERNAME) "
                       "SELECT i, (5511900000000 + i) || '@s.whatsapp.net', 'Chat ' || i FROM n;" +
                       numbersTo(messageCount) +
                       "INSERT INTO ZWAMESSAGE (Z_PK, ZCHATSESSION, ZISFROMME, ZMESSAGEDATE, ZFROMJID, ZTEXT) "
                       "SELECT i, 1 + i % 1000, i % 2, 600000000 + i * 60, "
                       "(5511900000000 + i % 1000) || '@s.whatsapp.net', "
                       "substr('The quick brown fox jumps over the lazy dog and then it goes home to sleep "
                       "until the morning comes', 1, 10 + i % 81) FROM n;";
  for (int i = 0; i < photoCount; ++i) app.mediaFiles.push_back(photo(i));
  return contents;
}

}  // namespace WizardTest
