#include "TidewellCore/Platform/PlistSupport.h"

#include <gmock/gmock.h>

#include "Tests/Support/Failures.h"
#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

template <typename T>
PropertyList plist(T value) {
  return PropertyList(PropertyListValue{std::move(value)});
}

bool booleanOf(const PropertyList& value) { return PlistSupport::boolean(&value); }

TEST(PlistSupport, TakesTextThatIsNotEmpty) {
  EXPECT_EQ(PlistSupport::string(nullptr), std::nullopt);
  const PropertyList text = plist(std::string("Ana's iPhone")), empty = plist(std::string()),
                     number = plist(std::int64_t{7});
  EXPECT_EQ(PlistSupport::string(&text), "Ana's iPhone");
  EXPECT_EQ(PlistSupport::string(&empty), std::nullopt);
  EXPECT_EQ(PlistSupport::string(&number), std::nullopt);
}

TEST(PlistSupport, TakesBooleansNumbersAndYesForTrue) {
  EXPECT_TRUE(booleanOf(plist(true)));
  EXPECT_TRUE(booleanOf(plist(std::int64_t{1})));
  EXPECT_TRUE(booleanOf(plist(std::int64_t{-3})));
  EXPECT_TRUE(booleanOf(plist(std::uint64_t{0xFFFFFFFFFFFFFFFF})));
  EXPECT_TRUE(booleanOf(plist(0.5)));
  for (const char* text : {"YES", "yes", "Yes", "1", "true", "TRUE"})
    EXPECT_TRUE(booleanOf(plist(std::string(text)))) << text;
}

TEST(PlistSupport, TakesEverythingElseForFalse) {
  EXPECT_FALSE(PlistSupport::boolean(nullptr));
  EXPECT_FALSE(booleanOf(plist(false)));
  EXPECT_FALSE(booleanOf(plist(std::int64_t{0})));
  EXPECT_FALSE(booleanOf(plist(0.0)));
  EXPECT_FALSE(booleanOf(plist(dateFromUnixTime(1))));
  EXPECT_FALSE(booleanOf(plist(Bytes{1})));
  EXPECT_FALSE(booleanOf(PropertyList()));
  for (const char* text : {"no", "0", "", "y", " yes", "2", "on"})
    EXPECT_FALSE(booleanOf(plist(std::string(text)))) << text;
}

TEST(PlistSupport, TakesDatesButNotDatesWrittenAsText) {
  const PropertyList date = plist(dateFromUnixTime(7)), text = plist(std::string("1970-01-01T00:00:07Z"));
  EXPECT_EQ(PlistSupport::date(&date), dateFromUnixTime(7));
  EXPECT_EQ(PlistSupport::date(&text), std::nullopt);
  EXPECT_EQ(PlistSupport::date(nullptr), std::nullopt);
}

TEST(PlistSupport, TakesRawBytes) {
  const PropertyList bytes = plist(Bytes{1, 2}), text = plist(std::string("x"));
  ASSERT_NE(PlistSupport::data(&bytes), nullptr);
  EXPECT_EQ(*PlistSupport::data(&bytes), (Bytes{1, 2}));
  EXPECT_EQ(PlistSupport::data(&text), nullptr);
  EXPECT_EQ(PlistSupport::data(nullptr), nullptr);
}

class PlistFileTest : public testing::Test {
 protected:
  const Fixture::TemporaryDirectory folder_;
  const std::filesystem::path file_ = folder_ / "Info.plist";
};

TEST_F(PlistFileTest, ReadsBothForms) {
  const Fixture::PlistDictionary info{{"Device Name", "Ana's iPhone"}, {"IsEncrypted", true}};
  Fixture::writeFile(file_, Fixture::xmlPlist(info));
  EXPECT_EQ(PlistSupport::string(entry(PlistSupport::dictionary(file_), "Device Name")), "Ana's iPhone");
  Fixture::writeFile(file_, Fixture::binaryPlist(info));
  EXPECT_EQ(PlistSupport::string(entry(PlistSupport::dictionary(file_), "Device Name")), "Ana's iPhone");
  EXPECT_TRUE(PlistSupport::boolean(entry(PlistSupport::dictionary(file_), "IsEncrypted")));
  EXPECT_EQ(entry(PlistSupport::dictionary(file_), "Missing"), nullptr);
}

TEST_F(PlistFileTest, NamesTheFileWhoseRootIsNoDictionary) {
  Fixture::writeFile(file_, Fixture::binaryPlist(Fixture::PlistArray{1, 2}));
  EXPECT_THAT([&] { PlistSupport::dictionary(file_); }, Fixture::failsWith("“Info.plist” is not a dictionary plist."));
  Fixture::writeFile(file_, Fixture::xmlPlist("text"));
  EXPECT_THAT([&] { PlistSupport::dictionary(file_); }, Fixture::failsWith("“Info.plist” is not a dictionary plist."));
}

TEST_F(PlistFileTest, PassesOnWhatTheParserAndTheFileSystemSay) {
  EXPECT_THROW(PlistSupport::dictionary(file_), std::filesystem::filesystem_error);
  Fixture::writeFile(file_, "no property list");
  EXPECT_THROW(PlistSupport::dictionary(file_), PropertyListError);
  Fixture::writeFile(file_, "bplist00 cut");
  EXPECT_THROW(PlistSupport::dictionary(file_), PropertyListError);
  Fixture::writeFile(file_, "");
  EXPECT_THROW(PlistSupport::dictionary(file_), PropertyListError);
}

}  // namespace
