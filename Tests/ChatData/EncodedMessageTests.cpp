#include "TidewellCore/ChatData/EncodedMessage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"
#include "TidewellCore/Platform/Base64.h"

namespace Fixture {
namespace {

// Field 1, a varint: 1,679,774,950, a day of March 2023.
const Bytes time = {0x08, 0xE6, 0xA1, 0xFD, 0xA0, 0x06};

Bytes joined(Bytes first, const Bytes& second) {
  append(first, second);
  return first;
}

bool holdsTime(const Bytes& message) { return EncodedMessage::holdsTime(Base64::encode(message)); }

std::string withoutPadding(const std::string& text) { return text.substr(0, text.find('=')); }

TEST(EncodedMessage, IsFoundWithWhateverFieldsStandBesideTheTime) {
  const std::vector<Bytes> others = {{},
                                     {0x20, 0x00},
                                     {0x12, 0x03, 'A', 'n', 'a'},
                                     {0x12, 0x00},
                                     {0x19, 1, 2, 3, 4, 5, 6, 7, 8},
                                     {0x1D, 1, 2, 3, 4},
                                     {0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01},
                                     {0xF8, 0xFF, 0xFF, 0xFF, 0x0F, 0x05}};
  for (const Bytes& other : others) {
    EXPECT_TRUE(holdsTime(joined(time, other))) << testing::PrintToString(other);
    EXPECT_TRUE(holdsTime(joined(other, time))) << testing::PrintToString(other);
    EXPECT_TRUE(EncodedMessage::holdsTime(withoutPadding(Base64::encode(joined(time, other)))));
  }
}

TEST(EncodedMessage, WhatIsNoWholeFieldMakesItNone) {
  const std::vector<Bytes> others = {{0x10},             // no value
                                     {0x10, 0x80},       // a value without an end
                                     {0x12, 0x02, 'A'},  // a length beyond the rest
                                     {0x12},             // no length
                                     {0x19, 1, 2, 3},    // 4 of 8 bytes
                                     {0x1D, 1, 2, 3},    // 3 of 4 bytes
                                     {0x13, 0x14},       // a group
                                     {0x16, 0x00},
                                     {0x17, 0},                             // wire types that do not exist
                                     {0x00, 0x00},                          // field 0
                                     {0x80, 0x80, 0x80, 0x80, 0x10, 0x05},  // field 2^29
                                     {0x10, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00},
                                     {0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}};
  for (const Bytes& other : others) EXPECT_FALSE(holdsTime(joined(time, other))) << testing::PrintToString(other);
}

TEST(EncodedMessage, TheTimeLiesBetween2008And2103) {
  EXPECT_FALSE(holdsTime({0x08, 0xFF, 0x97, 0x9A, 0xBC, 0x04})) << "1,199,999,999";
  EXPECT_TRUE(holdsTime({0x08, 0x80, 0x98, 0x9A, 0xBC, 0x04})) << "1,200,000,000";
  EXPECT_TRUE(holdsTime({0x08, 0x80, 0xD4, 0xDB, 0xD2, 0x0F})) << "4,200,000,000";
  EXPECT_FALSE(holdsTime({0x08, 0x81, 0xD4, 0xDB, 0xD2, 0x0F})) << "4,200,000,001";
}

TEST(EncodedMessage, OnlyFieldOneIsTheTime) {
  EXPECT_FALSE(holdsTime({0x10, 0xE6, 0xA1, 0xFD, 0xA0, 0x06})) << "field 2";
  EXPECT_FALSE(holdsTime({0x0D, 0xE6, 0xA1, 0xFD, 0x60, 0x10, 0x00})) << "four bytes and no varint";
  EXPECT_FALSE(holdsTime(joined(time, {0x08, 0x01}))) << "the last counts";
}

TEST(EncodedMessage, PaddingIsRightOrAbsent) {
  EXPECT_TRUE(EncodedMessage::holdsTime("COah/ZEGIAA="));
  EXPECT_TRUE(EncodedMessage::holdsTime("COah/ZEGIAA"));
  EXPECT_TRUE(EncodedMessage::holdsTime("COah/ZEG"));
  for (const char* text : {"COah/ZEGIAA==", "COah/ZEGIAA=A", "=COah/ZEGIAA", "COah/ZEG=", "COah/ZEG====", "COah/ZEGI",
                           "COah_ZEGIAA=", "COah/ZEG IAA=", "COah/ZE", ""}) {
    EXPECT_FALSE(EncodedMessage::holdsTime(text)) << text;
  }
}

std::string letters(SeededRandom& random, char first, std::size_t count) {
  std::string text;
  while (text.size() < count) text += static_cast<char>(static_cast<std::size_t>(first) + random.below(26));
  return text;
}

// By how such a time is written, not by chance: see the header.
TEST(EncodedMessage, NoWordInOneCaseOrWithACapitalInFrontIsOne) {
  SeededRandom random(20);
  for (int i = 0; i < 200'000; ++i) {
    const std::size_t count = 7 + random.below(9);
    const std::string small = letters(random, 'a', count);
    const std::string capitals = "C" + letters(random, 'A', count);
    for (const std::string& word : {"C" + small, letters(random, 'A', 1) + small, "c" + small, capitals}) {
      ASSERT_FALSE(EncodedMessage::holdsTime(word)) << word;
    }
  }
}

}  // namespace
}  // namespace Fixture
