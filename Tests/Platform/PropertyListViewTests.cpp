#include "TidewellCore/Platform/PropertyListView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "Tests/Support/PlistWriter.h"

namespace {

using Fixture::PlistArray;
using Fixture::PlistDictionary;
using Fixture::PlistValue;

const PlistValue sample = PlistDictionary{
    {"text", "Ana"},
    {"more", "Zoë 🦊"},
    {"Größe", 7},
    {"number", -5},
    {"large", 1234567890123},
    {"real", 1.5},
    {"flag", true},
    {"bytes", Bytes(300, 0x42)},
    {"list", PlistArray{"first", PlistDictionary{{"inner", 2}}, PlistArray{}}},
};

// What stands at every place of a value, in words.
void describe(const PropertyListView& view, const std::string& place, std::vector<std::string>& out) {
  const PropertyListValue leaf = view.leaf();
  std::string words = place + ": " + std::to_string(leaf.content.index());
  if (const auto* text = std::get_if<std::string>(&leaf.content)) words += " " + *text;
  if (const auto* number = std::get_if<std::int64_t>(&leaf.content)) words += " " + std::to_string(*number);
  if (const auto* real = std::get_if<double>(&leaf.content)) words += " " + std::to_string(*real);
  if (const auto* bytes = std::get_if<Bytes>(&leaf.content)) words += " " + std::to_string(bytes->size());
  out.push_back(words + (view.isDictionary() ? " dictionary" : ""));
  for (const char* key :
       {"text", "more", "Größe", "number", "large", "real", "flag", "bytes", "list", "inner", "missing"}) {
    if (const auto entry = view.entry(key)) describe(*entry, place + "." + key, out);
  }
  for (std::size_t i = 0; i < 4; ++i) {
    if (const auto element = view.element(i)) describe(*element, place + "[" + std::to_string(i) + "]", out);
  }
}

std::vector<std::string> described(const PropertyListView& view) {
  std::vector<std::string> out;
  describe(view, "", out);
  return out;
}

TEST(PropertyListView, TellsTheSameOfAListInPlaceAndOfOneThatIsBuilt) {
  const Bytes binary = Fixture::binaryPlist(sample);
  const BinaryPropertyListFile file(binary);
  const std::vector<std::string> inPlace = described(PropertyListView(file, file.root()));
  EXPECT_EQ(inPlace.size(), 14u);
  EXPECT_EQ(inPlace, described(PropertyListView(parsePropertyList(binary))));
  EXPECT_EQ(inPlace, described(PropertyListView(parsePropertyList(bytesOf(Fixture::xmlPlist(sample))))));
}

TEST(PropertyListView, DamageElsewhereGoesUnnoticed) {
  Bytes binary = Fixture::binaryPlist(sample);
  const auto damaged = std::ranges::search(binary, bytesOf("inner"));
  ASSERT_FALSE(damaged.empty());
  *(damaged.begin() - 1) = 0x70;  // an object of no known kind
  EXPECT_THROW(parsePropertyList(binary), PropertyListError);
  const BinaryPropertyListFile file(binary);
  const PropertyListView view(file, file.root());
  EXPECT_EQ(std::get<std::string>(view.entry("text")->leaf().content), "Ana");
  EXPECT_THROW(view.entry("list")->element(1)->entry("inner"), PropertyListError);
}

// All of its keys are one text that is nobody's key.
TEST(PropertyListView, ADictionaryOfLongKeysIsLookedThroughAtOnce) {
  constexpr std::size_t entries = 0x20000;
  constexpr std::size_t letters = 0x20000;
  const ByteView header = bytesOf("bplist00");
  Bytes binary(header.begin(), header.end());
  const auto add = [&](std::initializer_list<std::uint8_t> bytes) { binary.insert(binary.end(), bytes); };
  add({0xDF, 0x12, 0x00, 0x02, 0x00, 0x00});
  binary.insert(binary.end(), entries * 2, 1);
  const std::size_t text = binary.size();
  add({0x6F, 0x12, 0x00, 0x02, 0x00, 0x00});
  binary.insert(binary.end(), letters * 2, 0x42);
  const std::size_t table = binary.size();
  for (const std::size_t number : {std::size_t{8}, text}) {
    for (int shift = 24; shift >= 0; shift -= 8) binary.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  add({0, 0, 0, 0, 0, 0, 4, 1});
  for (const std::size_t number : {std::size_t{2}, std::size_t{0}, table}) {
    for (int shift = 56; shift >= 0; shift -= 8) binary.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  const BinaryPropertyListFile file(binary);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(PropertyListView(file, file.root()).entry("Size"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
