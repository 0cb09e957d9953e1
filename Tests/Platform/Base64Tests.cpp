#include "TidewellCore/Platform/Base64.h"

#include <gtest/gtest.h>

namespace {

std::optional<std::string> decoded(std::string_view text) {
  const auto bytes = Base64::decode(text);
  if (!bytes) return std::nullopt;
  return std::string(textOf(*bytes));
}

TEST(Base64, DecodesTheVectorsOfRFC4648Section10) {
  EXPECT_EQ(decoded(""), "");
  EXPECT_EQ(decoded("Zg=="), "f");
  EXPECT_EQ(decoded("Zm8="), "fo");
  EXPECT_EQ(decoded("Zm9v"), "foo");
  EXPECT_EQ(decoded("Zm9vYg=="), "foob");
  EXPECT_EQ(decoded("Zm9vYmE="), "fooba");
  EXPECT_EQ(decoded("Zm9vYmFy"), "foobar");
}

TEST(Base64, EncodesTheVectorsOfRFC4648Section10) {
  const auto encoded = [](std::string_view text) { return Base64::encode(bytesOf(text)); };
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==");
  EXPECT_EQ(encoded("fo"), "Zm8=");
  EXPECT_EQ(encoded("foo"), "Zm9v");
  EXPECT_EQ(encoded("foob"), "Zm9vYg==");
  EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
}

TEST(Base64, EncodesEveryByte) {
  EXPECT_EQ(Base64::encode(Bytes{0x00, 0xFF, 0x80, 0xFF}), "AP+A/w==");
  Bytes all;
  for (unsigned byte = 0; byte < 256; ++byte) {
    all.push_back(static_cast<std::uint8_t>(byte));
    EXPECT_EQ(Base64::decode(Base64::encode(all)), all);
  }
}

TEST(Base64, DecodesEveryByte) {
  EXPECT_EQ(Base64::decode("AP+A/w=="), (Bytes{0x00, 0xFF, 0x80, 0xFF}));
  EXPECT_EQ(Base64::decode("+/+/"), (Bytes{0xFB, 0xFF, 0xBF}));
}

TEST(Base64, IgnoresWhiteSpaceAnywhere) { EXPECT_EQ(decoded(" Zm\r\n\t9vYg = = \n"), "foob"); }

TEST(Base64, RefusesOtherCharacters) {
  for (const char* text : {"Zm9v!", "Zm-v", "Zm_v", "Zm9v\xFF", "Zm9v.", "<"})
    EXPECT_EQ(decoded(text), std::nullopt) << text;
  EXPECT_EQ(decoded(std::string_view("Zm9v\0", 5)), std::nullopt);
}

TEST(Base64, RefusesDataBehindItsPadding) { EXPECT_EQ(decoded("Zg==Zg=="), std::nullopt); }

}  // namespace
