#include "TidewellCore/Crypto/MBFileArchive.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Tests/Support/Hex.h"
#include "Tests/Support/MBFileRecord.h"
#include "Tests/Support/PlistWriter.h"

namespace {

using Fixture::PlistArray;
using Fixture::PlistDictionary;
using Fixture::PlistUID;
using Fixture::PlistValue;

const Bytes key(44, 0x42);

// An archive whose root object is `root`, with further objects from index 2.
Bytes archive(PlistDictionary root, PlistArray others = {}, PlistValue reference = PlistUID{1}) {
  PlistArray objects{"$null", std::move(root)};
  objects.insert(objects.end(), others.begin(), others.end());
  return Fixture::binaryPlist(PlistDictionary{{"$archiver", "NSKeyedArchiver"},
                                              {"$top", PlistDictionary{{"root", std::move(reference)}}},
                                              {"$objects", std::move(objects)}});
}

std::optional<std::int64_t> sizeOf(PlistValue value) {
  return MBFileArchive::metadata(archive({{"Size", std::move(value)}})).size;
}

TEST(MBFileArchive, ReadsTheRecordOfAnEncryptedFile) {
  const Bytes record =
      Fixture::archive({.relativePath = "a/b.jpg", .size = 123456, .protectionClass = 4, .encryptionKey = key});
  EXPECT_EQ(MBFileArchive::metadata(record),
            (MBFileArchive::Metadata{.encryptionKey = key, .protectionClass = 4, .size = 123456}));
}

TEST(MBFileArchive, ReadsSizeAndClassOfAPlainFile) {
  const auto metadata =
      MBFileArchive::metadata(Fixture::archive({.relativePath = "a", .size = 7, .protectionClass = 3}));
  EXPECT_EQ(metadata.size, 7);
  EXPECT_EQ(metadata.protectionClass, 3u);
}

TEST(MBFileArchive, FindsTheKeyInEachOfItsPlaces) {
  const auto keyOf = [](PlistValue object) {
    return MBFileArchive::metadata(archive({{"EncryptionKey", PlistUID{2}}}, {std::move(object)})).encryptionKey;
  };
  EXPECT_EQ(keyOf(key), key) << "raw bytes";
  EXPECT_EQ(keyOf(PlistDictionary{{"NS.data", key}}), key);
  EXPECT_EQ(keyOf(PlistDictionary{{"NS.bytes", key}}), key);
  EXPECT_EQ(keyOf(PlistDictionary{{"NS.bytes", Bytes(44, 1)}, {"NS.data", key}}), key) << "NS.data first";
  EXPECT_EQ(keyOf(PlistDictionary{{"NS.data", "text"}, {"NS.bytes", key}}), key);
  EXPECT_EQ(MBFileArchive::metadata(archive({{"EncryptionKey", key}})).encryptionKey, key) << "without a reference";
}

TEST(MBFileArchive, AReferenceMayBeADictionaryOrANumber) {
  const PlistDictionary root{{"Size", 7}};
  EXPECT_EQ(MBFileArchive::metadata(archive(root, {}, PlistDictionary{{"CF$UID", 1}})).size, 7);
  EXPECT_EQ(MBFileArchive::metadata(archive(root, {}, 1)).size, 7);
  EXPECT_EQ(MBFileArchive::metadata(archive(root, {}, 1.0)).size, 7);
}

TEST(MBFileArchive, ReadsArchivesInXML) {
  const std::string xml = Fixture::xmlPlist(PlistDictionary{
      {"$top", PlistDictionary{{"root", PlistDictionary{{"CF$UID", 1}}}}},
      {"$objects",
       PlistArray{"$null", PlistDictionary{{"Size", 7}, {"EncryptionKey", PlistDictionary{{"CF$UID", 2}}}}, key}}});
  EXPECT_EQ(MBFileArchive::metadata(bytesOf(xml)), (MBFileArchive::Metadata{.encryptionKey = key, .size = 7}));
}

TEST(MBFileArchive, AReferenceThatLeadsNowhereLeavesItsFieldAbsent) {
  for (const PlistValue& reference : {PlistValue(99), PlistValue(-1), PlistValue(PlistUID{99}), PlistValue("x")}) {
    EXPECT_EQ(MBFileArchive::metadata(archive({{"Size", 7}}, {}, reference)).size, std::nullopt);
  }
}

TEST(MBFileArchive, NumbersComeInSeveralForms) {
  EXPECT_EQ(sizeOf(0), 0);
  EXPECT_EQ(sizeOf(-5), -5);
  EXPECT_EQ(sizeOf(INT64_MAX), INT64_MAX);
  EXPECT_EQ(sizeOf(7.0), 7);
  EXPECT_EQ(sizeOf("7"), std::nullopt);
  EXPECT_EQ(sizeOf(UINT64_MAX), std::nullopt);
  EXPECT_EQ(sizeOf(1e300), std::nullopt);
  EXPECT_EQ(sizeOf(std::nan("")), std::nullopt);
}

TEST(MBFileArchive, TakesTheNamesInLowerCaseToo) {
  const auto metadata = MBFileArchive::metadata(archive({{"size", 7}, {"protectionClass", 3}}));
  EXPECT_EQ(metadata.size, 7);
  EXPECT_EQ(metadata.protectionClass, 3u);
  EXPECT_EQ(MBFileArchive::metadata(archive({{"Size", 8}, {"size", 7}})).size, 8);
}

TEST(MBFileArchive, AProtectionClassHas32Bits) {
  const auto classOf = [](PlistValue value) {
    return MBFileArchive::metadata(archive({{"ProtectionClass", std::move(value)}})).protectionClass;
  };
  EXPECT_EQ(classOf(4294967295), 4294967295u);
  EXPECT_EQ(classOf(4294967296), std::nullopt);
  EXPECT_EQ(classOf(-1), std::nullopt);
}

TEST(MBFileArchive, AKeyOfSevenBytesIsNone) {
  const auto keyOf = [](std::size_t size) {
    // Filled with 0xFF, so that the search for something like a key finds nothing in it.
    return MBFileArchive::metadata(archive({{"EncryptionKey", PlistUID{2}}}, {Bytes(size, 0xFF)})).encryptionKey;
  };
  EXPECT_EQ(keyOf(8), Bytes(8, 0xFF));
  EXPECT_NE(keyOf(7), Bytes(7, 0xFF));
}

TEST(MBFileArchive, SearchesOtherBytesForAKey) {
  Bytes record(60, 0xFF);
  record[3] = 12;
  const auto metadata = MBFileArchive::metadata(record);
  EXPECT_EQ(metadata.encryptionKey, Bytes(record.begin() + 3, record.begin() + 47));
  EXPECT_EQ(metadata.size, std::nullopt);
  EXPECT_EQ(metadata.protectionClass, std::nullopt);
}

TEST(MBFileArchive, TheFirstPlausibleClassCounts) {
  Bytes record(100, 0);
  record[10] = 13;
  record[20] = 1;
  record[30] = 2;
  EXPECT_EQ(MBFileArchive::metadata(record).encryptionKey, Bytes(record.begin() + 20, record.begin() + 64));
}

TEST(MBFileArchive, AKeyMustFitIntoTheRecord) {
  Bytes record(43, 0xFF);
  record[0] = 3;
  EXPECT_EQ(MBFileArchive::metadata(record).encryptionKey, std::nullopt);
  record.push_back(0xFF);
  EXPECT_EQ(MBFileArchive::metadata(record).encryptionKey, record);
  record[0] = 0xFF;
  record[1] = 3;
  EXPECT_EQ(MBFileArchive::metadata(record).encryptionKey, std::nullopt) << "one byte too late";
}

TEST(MBFileArchive, NeverThrows) {
  const Bytes whole = Fixture::archive({.relativePath = "a", .size = 7, .encryptionKey = key});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NO_THROW(MBFileArchive::metadata(ByteView(whole).first(size)));
  }
  for (std::size_t i = 0; i < whole.size(); ++i) {
    Bytes changed = whole;
    changed[i] ^= 0xFF;
    EXPECT_NO_THROW(MBFileArchive::metadata(changed));
  }
}

TEST(MBFileArchive, ARecordOfAnotherShapeHasNoFields) {
  for (const PlistValue& value : {PlistValue(PlistArray{}), PlistValue("text"), PlistValue(PlistDictionary{}),
                                  PlistValue(PlistDictionary{{"$top", 1}, {"$objects", 2}}),
                                  PlistValue(PlistDictionary{{"$top", PlistDictionary{{"root", PlistUID{0}}}}}),
                                  PlistValue(PlistDictionary{{"$top", PlistDictionary{{"root", PlistUID{0}}}},
                                                             {"$objects", PlistArray{"$null"}}})}) {
    const auto metadata = MBFileArchive::metadata(Fixture::binaryPlist(value));
    EXPECT_EQ(metadata.size, std::nullopt);
    EXPECT_EQ(metadata.protectionClass, std::nullopt);
  }
}

}  // namespace
