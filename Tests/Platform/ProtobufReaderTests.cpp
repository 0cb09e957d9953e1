#include "TidewellCore/Platform/ProtobufReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "Tests/Support/ProtobufWriter.h"

namespace Fixture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Reads one level to its end, and counts its fields.
int count(ByteView message) {
  int fields = 0;
  for (ProtobufReader reader(message); reader.next();) ++fields;
  return fields;
}

ProtobufReader first(const Bytes& message) {
  ProtobufReader reader(message);
  EXPECT_TRUE(reader.next());
  return reader;
}

TEST(ProtobufReader, ReadsFieldsOfEveryTypeInTheirOrder) {
  const Bytes message = Protobuf().text(5, "Zoë").integer(1, -1).real(2, -0.5).fixed32(536'870'911, 7).bytes();
  ProtobufReader fields(message);
  ASSERT_TRUE(fields.next());
  EXPECT_EQ(fields.number(), 5U);
  EXPECT_EQ(fields.text(), "Zoë");
  ASSERT_TRUE(fields.next());
  EXPECT_EQ(fields.number(), 1U);
  EXPECT_EQ(fields.integer(), -1);
  ASSERT_TRUE(fields.next());
  EXPECT_EQ(fields.real(), -0.5);
  ASSERT_TRUE(fields.next());
  EXPECT_EQ(fields.number(), 536'870'911U);
  EXPECT_FALSE(fields.next());
  EXPECT_FALSE(fields.next()) << "the end stays the end";
}

TEST(ProtobufReader, NoBytesAreAMessageWithoutFields) { EXPECT_EQ(count({}), 0); }

TEST(ProtobufReader, AFieldOfAnotherTypeHoldsNothing) {
  const std::vector<Bytes> fields = {Protobuf().integer(1, 5).bytes(), Protobuf().real(1, 1).bytes(),
                                     Protobuf().text(1, "a").bytes(), Protobuf().fixed32(1, 5).bytes()};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const ProtobufReader field = first(fields[i]);
    EXPECT_EQ(field.integer().has_value(), i == 0);
    EXPECT_EQ(field.real().has_value(), i == 1);
    EXPECT_EQ(field.text().has_value(), i == 2);
    EXPECT_EQ(field.bytes().empty(), i != 2);
    if (i != 2) {
      EXPECT_FALSE(field.message().next());
    }
  }
}

TEST(ProtobufReader, OfARepeatedFieldTheLastThatHoldsAValueCounts) {
  const Bytes message =
      Protobuf().integer(1, 5).integer(1, 6).text(1, "x").text(2, "a").text(2, "b").integer(2, 9).bytes();
  std::optional<std::int64_t> number;
  std::optional<std::string> text;
  for (ProtobufReader fields(message); fields.next();) {
    if (fields.number() == 1) fields.read(number);
    if (fields.number() == 2) fields.read(text);
  }
  EXPECT_EQ(number, 6);
  EXPECT_EQ(text, "b");
}

TEST(ProtobufReader, TextIsUTF8AndANumberIsFinite) {
  EXPECT_EQ(first(Protobuf().text(1, "a\xFF").bytes()).text(), std::nullopt);
  EXPECT_EQ(first(Protobuf().text(1, "").bytes()).text(), "");
  for (const double number : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(first(Protobuf().real(1, number).bytes()).real(), std::nullopt);
  }
}

TEST(ProtobufReader, NumbersStandAloneOrPacked) {
  const Bytes message = Protobuf().integer(1, 3).packed(1, {0, -1, 300}).fixed32(1, 8).integer(1, 4).bytes();
  std::vector<std::int64_t> numbers;
  for (ProtobufReader fields(message); fields.next();) fields.append(numbers);
  EXPECT_THAT(numbers, ElementsAre(3, 0, -1, 300, 4));
}

TEST(ProtobufReader, PackedNumbersThatAreDamagedOrTooManyAreAnError) {
  std::vector<std::int64_t> numbers;
  const Bytes cut = Protobuf().text(1, "\x01\x80").bytes();
  EXPECT_THROW(first(cut).append(numbers), ProtobufError);
  const Bytes many = Protobuf().text(1, std::string(4'097, '\x01')).bytes();
  EXPECT_THROW(first(many).append(numbers), ProtobufError);
}

TEST(ProtobufReader, AMessageStandsInAMessage) {
  const Bytes message = Protobuf().message(24, Protobuf().message(1, Protobuf().text(2, "Title"))).bytes();
  ProtobufReader outer(message);
  ASSERT_TRUE(outer.next());
  ProtobufReader middle = outer.message();
  ASSERT_TRUE(middle.next());
  ProtobufReader inner = middle.message();
  ASSERT_TRUE(inner.next());
  EXPECT_EQ(inner.text(), "Title");
  EXPECT_FALSE(outer.next());
}

TEST(ProtobufReader, WhatIsNoWholeFieldIsAnError) {
  const std::vector<Bytes> messages = {
      {0x08},             // no value
      {0x08, 0x80},       // a value without an end
      {0x80},             // a key without an end
      {0x12},             // no length
      {0x12, 0x80},       // a length without an end
      {0x12, 0x02, 'A'},  // a length beyond the rest
      {0x09, 1, 2, 3},    // 3 of 8 bytes
      {0x0D, 1, 2, 3},    // 3 of 4 bytes
      {0x00, 0x00},       // field 0
      {0x0B, 0x0C},       // a group
      {0x0E, 0x00},       // wire types that there are not
      {0x0F, 0x00},
      {0x80, 0x80, 0x80, 0x80, 0x10, 0x05},                                      // field 2^29
      {0x88, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 0x05},        // field 2^60 + 1
      {0x08, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00},  // eleven bytes
      {0x08, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x02},        // 2^64
      {0x12, 0x81, 0x80, 0x80, 0x80, 0x10, 'A'},                                 // a length of 2^32 + 1
      {0x12, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01, 'A'},   // of 2^63
      {0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01, 'A'},   // of 2^64 - 1
  };
  for (const Bytes& message : messages) {
    EXPECT_THROW(count(message), ProtobufError) << testing::PrintToString(message);
    Bytes behind = Protobuf().text(3, "whole").integer(4, 1).bytes();
    append(behind, message);
    EXPECT_THROW(count(behind), ProtobufError) << testing::PrintToString(message);
  }
}

TEST(ProtobufReader, TheLargestNumberIsOne) {
  const Bytes largest = {0x08, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01};
  EXPECT_EQ(first(largest).integer(), -1);
}

TEST(ProtobufReader, AMessageHasAMebibyteAtMost) {
  Bytes message = Protobuf().text(1, std::string(ProtobufLimits::bytes - 4, 'a')).bytes();
  ASSERT_EQ(message.size(), ProtobufLimits::bytes);
  EXPECT_EQ(count(message), 1);
  append(message, Protobuf().integer(1, 1).bytes());
  EXPECT_THROW(count(message), ProtobufError);
}

TEST(ProtobufReader, ALevelHas4096FieldsAtMost) {
  Bytes message;
  for (int i = 0; i < 4'096; ++i) append(message, Bytes{0x08, 0x01});
  EXPECT_EQ(count(message), 4'096);
  append(message, Bytes{0x08, 0x01});
  EXPECT_THROW(count(message), ProtobufError);
}

// Every message within that of field 1; a field of one byte in the last.
int depth(ProtobufReader reader) { return reader.next() ? 1 + depth(reader.message()) : 0; }

Protobuf nested(int levels) {
  Protobuf message;
  for (int i = 0; i < levels; ++i) message = Protobuf().message(1, message);
  return message;
}

TEST(ProtobufReader, MessagesAreEightLevelsDeepAtMost) {
  const Bytes eight = nested(7).bytes();
  EXPECT_EQ(depth(ProtobufReader(eight)), 7);
  const Bytes nine = nested(8).bytes();
  EXPECT_THROW(depth(ProtobufReader(nine)), ProtobufError);
  const Bytes endless = nested(10'000).bytes();
  EXPECT_EQ(count(endless), 1) << "what is not asked for is not looked into";
}

TEST(ProtobufReader, AMessageCutAnywhereIsAnErrorOrEndsWithAField) {
  const Bytes message = Protobuf().integer(1, 300).text(2, "text").real(3, 1).fixed32(4, 1).bytes();
  std::vector<std::size_t> whole;
  for (std::size_t size = 0; size <= message.size(); ++size) {
    try {
      count(ByteView(message).first(size));
      whole.push_back(size);
    } catch (const ProtobufError&) {
    }
  }
  EXPECT_THAT(whole, ElementsAre(0, 3, 9, 18, 23));
}

}  // namespace
}  // namespace Fixture
