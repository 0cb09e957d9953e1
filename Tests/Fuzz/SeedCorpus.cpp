#include "Tests/Fuzz/SeedCorpus.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "Tests/Fuzz/MessageSeeds.h"
#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/CallSchema.h"
#include "Tests/Support/ChatDatabase.h"
#include "Tests/Support/Hex.h"
#include "Tests/Support/KeyBagBuilder.h"
#include "Tests/Support/MBFileRecord.h"
#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::Bytes;
using Seeds = std::vector<Bytes>;

Fixture::PlistDictionary everyType() {
  return {{"text", "Zoë"},
          {"ascii", "plain"},
          {"number", -5},
          {"real", 0.25},
          {"flag", true},
          {"data", Bytes{0, 255}},
          {"large", UINT64_MAX},
          {"list", Fixture::PlistArray{1, "x", Fixture::PlistArray{}}},
          {"date", Fixture::PlistDate{700000000}}};
}

Seeds records() {
  return {Fixture::archive({.relativePath = "a.jpg", .size = 7}),
          Fixture::archive({.relativePath = "b", .size = 7, .encryptionKey = Bytes(44, 3)})};
}

Seeds keyBags() {
  Fixture::SeededRandom random(1);
  return {Fixture::buildKeyBag({.password = "x"}, random).blob,
          Fixture::buildKeyBag({.password = "x", .doubleIterations = {}, .wideIterations = true}, random).blob};
}

// Small pages, so that a changed byte meets something.
constexpr const char* smallPages = "COMMIT; PRAGMA page_size = 512; VACUUM; BEGIN;";

Fixture::WhatsAppContents whatsApp() {
  return {.chats = {{.jid = "5511900001111@s.whatsapp.net", .name = "Ana"}, {.jid = "1-2@g.us", .name = "Us"}},
          .messages = {{.chat = 1, .date = 700000000, .text = "Zoë"},
                       {.chat = 2, .date = 700000060, .text = "hi", .isFromMe = 1, .member = 1}},
          .members = {{.chat = 2, .jid = "12345@lid", .contactName = "Bo"}},
          .pushNames = {{.jid = "12345@lid", .name = "Bo B"}},
          .mediaItems = {{.message = 1, .localPath = "Media/a@s/a/b/ab.jpg", .title = "a"}},
          .lidPairs = std::vector<Fixture::LidPair>{{.lid = "12345", .phoneNumber = "5511900002222"}},
          .contacts = {{.fullName = "Ana", .whatsAppID = "5511900001111@s.whatsapp.net", .lid = "1@lid"}},
          .journal = Fixture::Journal::rollback,
          .chatStorageSQL = smallPages,
          .contactsSQL = smallPages};
}

Seeds manifestDatabases() {
  const Fixture::TemporaryDirectory folder;
  const Fixture::BackupContents contents{.whatsApp = whatsApp(), .manifestSQL = smallPages};
  return {Fixture::writeBackup(contents, folder / "device").manifestDatabase};
}

// A database of one schema, its pages small.
Seeds database(std::string_view schema, std::string_view rows) {
  Fixture::DatabaseWriter writer(Fixture::Journal::rollback);
  writer.execute(std::string(schema) + std::string(rows));
  writer.execute(smallPages);
  return {writer.finish().main};
}

Seeds callHistories() {
  return database(Fixture::callHistorySchema,
                  "INSERT INTO ZWAAGGREGATECALLEVENT (Z_PK, ZINCOMING, ZMISSED, ZVIDEO) VALUES (1, 1, 0, 1);"
                  "INSERT INTO ZWACDCALLEVENT (Z_PK, Z1CALLEVENTS, ZDATE, ZDURATION, ZOUTCOME, ZCALLIDSTRING)"
                  " VALUES (1, 1, 7e8, 95.5, 0, 'A1'), (2, 2, 'x', 'y', 1, NULL);"
                  "INSERT INTO ZWACDCALLEVENTPARTICIPANT (Z1PARTICIPANTS, ZJIDSTRING) VALUES (1, '1@lid');");
}

Seeds linkedIdentities() {
  return database(Fixture::linkedIdentitySchema,
                  "INSERT INTO ZWAPHONENUMBERLIDPAIR (ZLID, ZPHONENUMBER) VALUES ('1', '2'), ('3@lid', '1@lid');"
                  "INSERT INTO ZWAZACCOUNT (ZIDENTIFIER, ZPHONENUMBER, ZDISPLAYNAME) VALUES ('4@lid', '5', 'Ana');");
}

Seeds madeByCode(std::string_view target) {
  if (target == "BinaryPropertyList") return {Fixture::binaryPlist(everyType()), records()[1]};
  if (target == "XMLPropertyList") return {Fixture::bytesOf(Fixture::xmlPlist(everyType()))};
  if (target == "BackupKeyBag") return keyBags();
  if (target == "MBFileArchive") return records();
  if (target == "ChatDatabase") return {Fixture::writeChatStorage(whatsApp()).main};
  if (target == "Contacts") return {Fixture::writeContacts(whatsApp()).main};
  if (target == "ManifestDatabase") return manifestDatabases();
  if (target == "CallHistory") return callHistories();
  if (target == "LinkedIdentities") return linkedIdentities();
  if (target == "MessageBlobs") return MessageSeeds::messageBlobs();
  if (target == "GroupEvent") return MessageSeeds::groupEvents();
  return {};
}

Bytes content(const fs::path& file) {
  const Bytes bytes = Fixture::readFile(file);
  if (file.extension() != ".hex") return bytes;
  return Fixture::fromHex({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::vector<Bytes> seedCorpus(std::string_view target) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(fs::path(TIDEWELL_FUZZ_CORPUS) / target)) files.push_back(entry);
  if (files.empty()) throw std::runtime_error("The corpus of " + std::string(target) + " has no files.");
  std::ranges::sort(files);
  Seeds seeds = madeByCode(target);
  for (const fs::path& file : files) seeds.push_back(content(file));
  return seeds;
}
