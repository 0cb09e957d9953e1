#include "TidewellCore/Platform/BinaryPropertyList.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <plist/plist.h>

#include <chrono>
#include <cmath>

#include "Tests/Support/Hex.h"
#include "Tests/Support/PlistWriter.h"

namespace {

using Fixture::PlistArray;
using Fixture::PlistDate;
using Fixture::PlistDictionary;
using Fixture::PlistUID;

// Writes files by hand, so that they can be wrong in any place.
struct HandMade {
  std::vector<std::string> objects;  // hexadecimal digits; the first is the root
  std::size_t offsetSize = 2;
  std::size_t referenceSize = 1;
  std::optional<std::uint64_t> objectCount, rootIndex, tableOffset;
  std::vector<std::uint64_t> offsets;  // in place of the true ones

  Bytes bytes() const {
    Bytes file = Fixture::bytesOf("bplist00");
    std::vector<std::uint64_t> places;
    for (const std::string& object : objects) {
      places.push_back(file.size());
      Fixture::append(file, Fixture::fromHex(object));
    }
    const std::uint64_t table = file.size();
    for (const std::uint64_t place : offsets.empty() ? places : offsets) append(file, place, offsetSize);
    file.insert(file.end(), 6, 0);
    append(file, offsetSize, 1);
    append(file, referenceSize, 1);
    append(file, objectCount.value_or(objects.size()), 8);
    append(file, rootIndex.value_or(0), 8);
    append(file, tableOffset.value_or(table), 8);
    return file;
  }

  static void append(Bytes& file, std::uint64_t number, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) {
      const std::uint64_t byte = i < 8 ? number >> (8 * i) : 0;
      file.push_back(static_cast<std::uint8_t>(byte & 0xFF));
    }
  }
};

PropertyList parsed(const HandMade& file) { return parseBinaryPropertyList(file.bytes()); }
PropertyList object(const std::string& hex) { return parsed({.objects = {hex}}); }
void expectRefused(const HandMade& file, const char* why) { EXPECT_THROW(parsed(file), PropertyListError) << why; }
void expectRefused(const std::string& hex) { expectRefused({.objects = {hex}}, hex.c_str()); }
PropertyList rewritten(const Fixture::PlistValue& value) { return parsePropertyList(Fixture::binaryPlist(value)); }

// The lowest byte of a number as two digits.
std::string hexByte(std::size_t number) { return fmt::format("{:02X}", number & 0xFF); }

TEST(BinaryPropertyList, ReadsWhatAnIndependentWriterWrites) {
  const PropertyList list = rewritten(PlistDictionary{{"text", "plain"},
                                                      {"unicode", "Zoë 日本 🎉"},
                                                      {"empty", ""},
                                                      {"number", 42},
                                                      {"negative", -5},
                                                      {"large", UINT64_MAX},
                                                      {"real", 0.25},
                                                      {"yes", true},
                                                      {"no", false},
                                                      {"data", Fixture::Bytes{0, 255}},
                                                      {"date", PlistDate{700000000.5}},
                                                      {"uid", PlistUID{300}},
                                                      {"list", PlistArray{1, "x", PlistArray{}}}});
  const auto& dictionary = *list.as<PropertyListDictionary>();
  EXPECT_EQ(*entry(dictionary, "text")->as<std::string>(), "plain");
  EXPECT_EQ(*entry(dictionary, "unicode")->as<std::string>(), "Zoë 日本 🎉");
  EXPECT_EQ(*entry(dictionary, "empty")->as<std::string>(), "");
  EXPECT_EQ(*entry(dictionary, "number")->as<std::int64_t>(), 42);
  EXPECT_EQ(*entry(dictionary, "negative")->as<std::int64_t>(), -5);
  EXPECT_EQ(*entry(dictionary, "large")->as<std::uint64_t>(), UINT64_MAX);
  EXPECT_EQ(*entry(dictionary, "real")->as<double>(), 0.25);
  EXPECT_EQ(*entry(dictionary, "yes")->as<bool>(), true);
  EXPECT_EQ(*entry(dictionary, "no")->as<bool>(), false);
  EXPECT_EQ(*entry(dictionary, "data")->as<Bytes>(), Bytes({0, 255}));
  EXPECT_EQ(*entry(dictionary, "date")->as<Date>(), dateFromAppleTime(700000000.5));
  EXPECT_EQ(entry(dictionary, "uid")->as<PropertyListUID>()->index, 300u);
  EXPECT_EQ(entry(dictionary, "list")->as<PropertyListArray>()->size(), 3u);
}

TEST(BinaryPropertyList, ReadsIntegersOfEveryWidth) {
  for (const std::int64_t number : {std::int64_t{0}, std::int64_t{255}, std::int64_t{256}, std::int64_t{65536},
                                    std::int64_t{1} << 32, INT64_MAX, INT64_MIN, std::int64_t{-1}}) {
    EXPECT_EQ(*rewritten(number).as<std::int64_t>(), number);
  }
  EXPECT_EQ(*rewritten(std::uint64_t{1} << 63).as<std::uint64_t>(), std::uint64_t{1} << 63);
}

TEST(BinaryPropertyList, NarrowIntegersAreUnsigned) {
  EXPECT_EQ(*object("10 FF").as<std::int64_t>(), 255);
  EXPECT_EQ(*object("11 FFFF").as<std::int64_t>(), 65535);
  EXPECT_EQ(*object("12 FFFFFFFF").as<std::int64_t>(), 4294967295);
  EXPECT_EQ(*object("13 FFFFFFFFFFFFFFFF").as<std::int64_t>(), -1);
}

TEST(BinaryPropertyList, ReadsIntegersOf16Bytes) {
  EXPECT_EQ(*object("14 0000000000000000 0000000000000007").as<std::int64_t>(), 7);
  EXPECT_EQ(*object("14 0000000000000000 FFFFFFFFFFFFFFFF").as<std::uint64_t>(), UINT64_MAX);
  EXPECT_EQ(*object("14 FFFFFFFFFFFFFFFF FFFFFFFFFFFFFFFE").as<std::int64_t>(), -2);
  expectRefused("14 0000000000000001 0000000000000000");
  expectRefused("15 " + std::string(64, '0'));
}

TEST(BinaryPropertyList, RefusesNegativeNumbersThatNeedMoreThan64Bits) {
  expectRefused("14 FFFFFFFFFFFFFFFF 0000000000000000");  // -2^64
}

TEST(BinaryPropertyList, ReadsRealNumbers) {
  EXPECT_EQ(*object("22 3FC00000").as<double>(), 1.5);
  EXPECT_EQ(*object("23 BFF8000000000000").as<double>(), -1.5);
  EXPECT_TRUE(std::isnan(*object("23 7FF8000000000000").as<double>()));
  expectRefused("20 00");
  expectRefused("24 " + std::string(32, '0'));
}

TEST(BinaryPropertyList, ReadsDates) {
  EXPECT_EQ(*object("33 0000000000000000").as<Date>(), dateFromUnixTime(978307200));
  EXPECT_EQ(*rewritten(PlistDate{-1.5}).as<Date>(), dateFromAppleTime(-1.5));
}

TEST(BinaryPropertyList, RefusesDatesThatAreNoNumbers) {
  expectRefused("33 7FF8000000000000");  // not a number
  expectRefused("33 7FF0000000000000");  // infinite
  expectRefused("33 FFF0000000000000");
}

TEST(BinaryPropertyList, ReadsTheDistantPastAndFuture) {
  EXPECT_EQ(iso8601(*object("33 C22D63C8C5000000").as<Date>()), "0000-12-30T00:00:00Z");
  EXPECT_EQ(iso8601(*object("33 422D63C37F000000").as<Date>()), "4001-01-01T00:00:00Z");
}

TEST(BinaryPropertyList, KeepsANULInText) {
  EXPECT_EQ(*object("53 610062").as<std::string>(), std::string("a\0b", 3));
  EXPECT_EQ(*object("63 006100000062").as<std::string>(), std::string("a\0b", 3));
}

TEST(BinaryPropertyList, ReadsUTF16WithSurrogates) {
  EXPECT_EQ(*object("63 0061D83CDF89").as<std::string>(), "a🎉");
  EXPECT_EQ(*object("61 D83C").as<std::string>(), "\uFFFD") << "half a pair at the end";
  EXPECT_EQ(*object("62 D83C0061").as<std::string>(), "\uFFFDa") << "half a pair before a letter";
  EXPECT_EQ(*object("62 DF89D83C").as<std::string>(), "\uFFFD\uFFFD") << "a pair in the wrong order";
}

TEST(BinaryPropertyList, RepairsTextThatIsNoASCII) { EXPECT_EQ(*object("52 61FF").as<std::string>(), "a\uFFFD"); }

TEST(BinaryPropertyList, ReadsLongCounts) {
  EXPECT_EQ(*object("5F 1003 616263").as<std::string>(), "abc");
  EXPECT_EQ(*object("4F 13 0000000000000002 0102").as<Bytes>(), Bytes({1, 2}));
  EXPECT_EQ(rewritten(std::string(100'000, 'x')).as<std::string>()->size(), 100'000u);
  expectRefused("5F 2203 616263");                               // a count that is a real number
  expectRefused("5F 14 " + std::string(30, '0') + "03 616263");  // a count of 16 bytes
}

TEST(BinaryPropertyList, ReadsReferencesOfKeyedArchives) {
  EXPECT_EQ(object("80 05").as<PropertyListUID>()->index, 5u);
  EXPECT_EQ(object("83 00010000").as<PropertyListUID>()->index, 65536u);
  expectRefused("88 " + std::string(18, '0'));
}

TEST(BinaryPropertyList, ReadsSetsAsLists) {
  EXPECT_EQ(parsed({.objects = {"C2 01 02", "08", "09"}}).as<PropertyListArray>()->size(), 2u);
}

TEST(BinaryPropertyList, ReadsNullAsNothing) { EXPECT_NE(object("00").as<std::monostate>(), nullptr); }

TEST(BinaryPropertyList, RefusesUnknownTypes) {
  for (const char* hex : {"01", "0F", "70", "90", "B0", "E0", "F0", "FF 1000"}) expectRefused(hex);
}

TEST(BinaryPropertyList, TheRootMayStandAnywhere) {
  EXPECT_EQ(*parsed({.objects = {"08", "10 07"}, .rootIndex = 1}).as<std::int64_t>(), 7);
}

TEST(BinaryPropertyList, ReadsWideOffsetsAndReferences) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{3}, std::size_t{8}}) {
    const std::string zeros(2 * (size - 1), '0');
    const PropertyList list =
        parsed({.objects = {"A1" + zeros + "01", "10 07"}, .offsetSize = size, .referenceSize = size});
    EXPECT_EQ(*(*list.as<PropertyListArray>())[0].as<std::int64_t>(), 7) << size;
  }
  expectRefused({.objects = {"09"}, .offsetSize = 0}, "offsets of no bytes");
  expectRefused({.objects = {"09"}, .offsetSize = 9}, "offsets of 9 bytes");
  expectRefused({.objects = {"09"}, .referenceSize = 0}, "references of no bytes");
  expectRefused({.objects = {"09"}, .referenceSize = 9}, "references of 9 bytes");
}

TEST(BinaryPropertyList, RefusesKeysThatAreNoText) {
  expectRefused({.objects = {"D1 01 01", "10 07"}}, "a number as key");
}

TEST(BinaryPropertyList, TheLastOfTwoEqualKeysWins) {
  const PropertyList list = parsed({.objects = {"D2 01 01 02 03", "51 61", "08", "09"}});
  EXPECT_EQ(*entry(*list.as<PropertyListDictionary>(), "a")->as<bool>(), true);
}

TEST(BinaryPropertyList, EveryTruncationIsRefused) {
  const Bytes whole = Fixture::binaryPlist(PlistDictionary{{"a", PlistArray{1, "text", Fixture::Bytes{1, 2, 3}}}});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THROW(parseBinaryPropertyList(ByteView(whole).first(size)), PropertyListError) << size;
  }
}

TEST(BinaryPropertyList, RefusesOffsetsOutsideTheFile) {
  for (const std::uint64_t offset : {std::uint64_t{0xFFFF}, std::uint64_t{60}}) {
    expectRefused({.objects = {"09"}, .offsets = {offset}}, "an object outside");
  }
  expectRefused({.objects = {"09"}, .offsetSize = 8, .offsets = {UINT64_MAX}}, "the greatest offset");
  expectRefused({.objects = {"09"}, .tableOffset = UINT64_MAX}, "the greatest table offset");
  expectRefused({.objects = {"09"}, .tableOffset = 5}, "a table inside the header");
}

TEST(BinaryPropertyList, RefusesFalseCounts) {
  expectRefused({.objects = {"09"}, .objectCount = 2}, "one object too many");
  expectRefused({.objects = {"09"}, .objectCount = UINT64_MAX}, "the greatest count");
  expectRefused({.objects = {"09"}, .objectCount = UINT64_MAX / 2 + 2}, "a count that overflows");
  expectRefused({.objects = {"09"}, .objectCount = 0}, "no object");
  expectRefused({.objects = {"09"}, .rootIndex = 1}, "a root that is not there");
  expectRefused("AF 13 FFFFFFFFFFFFFFFF");
  expectRefused("DF 13 8000000000000001 00");
  expectRefused("6F 13 8000000000000001 0061");
  expectRefused("5F 13 7FFFFFFFFFFFFFFF 61");
}

TEST(BinaryPropertyList, RefusesReferencesThatLeadNowhere) {
  expectRefused("A1 01");
  expectRefused("A1 FF");
}

TEST(BinaryPropertyList, RefusesCircles) {
  expectRefused("A1 00");
  expectRefused({.objects = {"A1 01", "A1 00"}}, "a circle of two");
  expectRefused({.objects = {"D1 01 00", "51 61"}}, "a dictionary inside itself");
  expectRefused({.objects = {"D1 00 01", "51 61"}}, "a dictionary as its own key");
}

TEST(BinaryPropertyList, SharedObjectsAreReadOnceAndStayShared) {
  const PropertyList list = parsed({.objects = {"A2 01 01", "A1 02", "51 61"}});
  const auto& items = *list.as<PropertyListArray>();
  EXPECT_EQ(items[0].as<PropertyListArray>(), items[1].as<PropertyListArray>()) << "one object in memory";
}

TEST(BinaryPropertyList, ExponentialSharingStaysCheap) {
  // 200 lists that each hold the next one twice: 2^200 values for a reader that expands them.
  HandMade file;
  for (std::size_t i = 1; i <= 200; ++i) file.objects.push_back("A2" + hexByte(i) + hexByte(i));
  file.objects.push_back("51 61");
  const auto begin = std::chrono::steady_clock::now();
  PropertyList list = parsed(file);
  for (int depth = 0; depth < 200; ++depth) {
    const PropertyList next = (*list.as<PropertyListArray>())[1];
    list = next;
  }
  EXPECT_EQ(*list.as<std::string>(), "a");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

HandMade nested(std::size_t depth) {
  HandMade file{.offsetSize = 4, .referenceSize = 4};
  for (std::size_t i = 1; i < depth; ++i) {
    file.objects.push_back("A1" + hexByte(i >> 24) + hexByte(i >> 16) + hexByte(i >> 8) + hexByte(i));
  }
  file.objects.push_back("A0");
  return file;
}

TEST(BinaryPropertyList, RefusesDeepNesting) {
  EXPECT_NO_THROW(parsed(nested(PropertyListLimits::depth)));
  expectRefused(nested(PropertyListLimits::depth + 1), "one level too many");
  expectRefused(nested(300'000), "as deep as no stack is");
}

TEST(BinaryPropertyList, RefusesDepthThatGrowsBySharing) {
  // The root names a list, then one that holds it, then one that holds that: no reader stands deep in
  // it while reading, but each list is one level deeper than the last.
  const auto staircase = [](std::size_t steps) {
    const auto reference = [](std::size_t i) {
      return hexByte(i >> 24) + hexByte(i >> 16) + hexByte(i >> 8) + hexByte(i);
    };
    HandMade file{.objects = {"AF12" + reference(steps)}, .offsetSize = 4, .referenceSize = 4};
    for (std::size_t i = 1; i <= steps; ++i) {
      file.objects[0] += reference(i);
      file.objects.push_back(i == 1 ? "A0" : "A1" + reference(i - 1));
    }
    return file;
  };
  EXPECT_NO_THROW(parsed(staircase(PropertyListLimits::depth - 1)));
  expectRefused(staircase(PropertyListLimits::depth), "one level too many");
  expectRefused(staircase(200'000), "deeper than a stack unwinds");
}

TEST(BinaryPropertyList, RefusesObjectsThatOverlap) {
  // Many texts that all lie in the same bytes would cost the square of the file's size.
  const std::string text = "4F 12 00001000" + std::string(2 * 4096, '0');
  HandMade file{.objects = {"AF 11 0100", text}, .referenceSize = 2};
  for (int i = 0; i < 256; ++i) file.objects[0] += "00" + hexByte(1);
  EXPECT_NO_THROW(parsed(file)) << "one object, referred to often";
  HandMade overlapping{
      .objects = {"A3 01 02 03", "4A 0102030405060708090A"}, .objectCount = 4, .offsets = {8, 12, 12, 12}};
  EXPECT_NO_THROW(parsed(overlapping)) << "small enough to be no threat";
  HandMade hostile{.objects = {"AF 10 C8", text}};
  for (std::size_t i = 1; i <= 200; ++i) hostile.objects[0] += hexByte(i);
  hostile.objectCount = 201;
  hostile.offsets = {8};
  hostile.offsets.resize(201, 8 + 3 + 200);
  expectRefused(hostile, "200 objects of 4 KiB in 4 KiB");
}

TEST(BinaryPropertyList, ObjectsThatNobodyRefersToTakeNoMemoryOfTheirOwn) {
  // A reader keeps a null in the place of each until it is read, and a file may claim millions.
  EXPECT_EQ(PropertyList().as<std::monostate>(), PropertyList().as<std::monostate>());
}

TEST(BinaryPropertyList, RefusesOtherVersions) {
  Bytes file = HandMade{.objects = {"09"}}.bytes();
  file[6] = '1';
  EXPECT_THROW(parseBinaryPropertyList(file), PropertyListError);
}

// What libplist reads of a file must be what this reader reads of it.
void expectSame(plist_t node, const PropertyList& list) {
  switch (plist_get_node_type(node)) {
    case PLIST_STRING: {
      std::uint64_t length = 0;
      const char* text = plist_get_string_ptr(node, &length);
      ASSERT_NE(list.as<std::string>(), nullptr);
      EXPECT_EQ(*list.as<std::string>(), std::string_view(text, length));
      break;
    }
    case PLIST_ARRAY: {
      ASSERT_NE(list.as<PropertyListArray>(), nullptr);
      const auto& items = *list.as<PropertyListArray>();
      ASSERT_EQ(items.size(), plist_array_get_size(node));
      for (std::uint32_t i = 0; i < items.size(); ++i) expectSame(plist_array_get_item(node, i), items[i]);
      break;
    }
    case PLIST_DICT: {
      ASSERT_NE(list.as<PropertyListDictionary>(), nullptr);
      const auto& entries = *list.as<PropertyListDictionary>();
      ASSERT_EQ(entries.size(), plist_dict_get_size(node));
      for (const auto& [key, item] : entries) expectSame(plist_dict_get_item(node, key.c_str()), item);
      break;
    }
    default:
      ADD_FAILURE() << "a node that the test does not write";
  }
}

TEST(BinaryPropertyList, ReadsLargeTreesAsLibplistDoes) {
  PlistArray list;
  for (int i = 0; i < 2000; ++i) {
    const std::string number = std::to_string(i);
    list.push_back(PlistDictionary{{"name-" + number, "Zoë " + number}, {"list", PlistArray{number, number}}});
  }
  const Bytes file = Fixture::binaryPlist(list);
  plist_t node = nullptr;
  plist_from_bin(reinterpret_cast<const char*>(file.data()), static_cast<std::uint32_t>(file.size()), &node);
  ASSERT_NE(node, nullptr);
  expectSame(node, parseBinaryPropertyList(file));
  plist_free(node);
}

}  // namespace
