#include "TidewellCore/Platform/XMLPropertyList.h"

#include <gmock/gmock.h>

#include <cmath>

#include "Tests/Support/PlistWriter.h"

namespace {

constexpr const char* appleDoctype =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n";

PropertyList parsed(const std::string& text) { return parsePropertyList(bytesOf(text)); }
PropertyList value(const std::string& element) { return parsed("<plist version=\"1.0\">" + element + "</plist>"); }

void expectRefused(const std::string& element) {
  EXPECT_THROW(value(element), PropertyListError) << element.substr(0, 100);
}

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(XMLPropertyList, ReadsEveryTypeOfValue) {
  EXPECT_EQ(*value("<string>Zoë &amp; &#x1F389;</string>").as<std::string>(), "Zoë & 🎉");
  EXPECT_EQ(*value("<string/>").as<std::string>(), "");
  EXPECT_EQ(*value("<string> kept </string>").as<std::string>(), " kept ");
  EXPECT_EQ(*value("<true/>").as<bool>(), true);
  EXPECT_EQ(*value("<false/>").as<bool>(), false);
  EXPECT_EQ(*value("<real>1.5</real>").as<double>(), 1.5);
  EXPECT_EQ(*value("<real> -1e-3 </real>").as<double>(), -0.001);
  EXPECT_EQ(*value("<date>2024-05-01T12:00:00Z</date>").as<Date>(), dateFromUnixTime(1714564800));
  EXPECT_EQ(*value("<data>\n\tZm9v\n\tYmFy\n</data>").as<Bytes>(), Bytes({'f', 'o', 'o', 'b', 'a', 'r'}));
  EXPECT_EQ(*value("<data/>").as<Bytes>(), Bytes());
}

TEST(XMLPropertyList, ReadsIntegers) {
  EXPECT_EQ(*value("<integer>42</integer>").as<std::int64_t>(), 42);
  EXPECT_EQ(*value("<integer> -7 </integer>").as<std::int64_t>(), -7);
  EXPECT_EQ(*value("<integer>+7</integer>").as<std::int64_t>(), 7);
  EXPECT_EQ(*value("<integer>0x1F</integer>").as<std::int64_t>(), 31);
  EXPECT_EQ(*value("<integer>-9223372036854775808</integer>").as<std::int64_t>(), INT64_MIN);
  EXPECT_EQ(*value("<integer>9223372036854775807</integer>").as<std::int64_t>(), INT64_MAX);
  EXPECT_EQ(*value("<integer>18446744073709551615</integer>").as<std::uint64_t>(), UINT64_MAX);
}

TEST(XMLPropertyList, RefusesWhatIsNoInteger) {
  for (const char* text :
       {"", "-", "+", "12a", "1.5", "18446744073709551616", "-9223372036854775809", "0x", "+-7", "0x-7", "1 2"}) {
    expectRefused(std::string("<integer>") + text + "</integer>");
  }
}

TEST(XMLPropertyList, RefusesWhatIsNoRealDateOrData) {
  for (const char* text : {"", "x", "1,5", "1.5.5"}) expectRefused(std::string("<real>") + text + "</real>");
  for (const char* text : {"", "yesterday", "2024-05-01", "2024-13-01T00:00:00Z"}) {
    expectRefused(std::string("<date>") + text + "</date>");
  }
  expectRefused("<data>Zm9v!</data>");
}

TEST(XMLPropertyList, ReadsTheDistantPastAndFuture) {
  EXPECT_EQ(*value("<date>0000-12-30T00:00:00Z</date>").as<Date>(), dateFromAppleTime(-63114076800));
  EXPECT_EQ(*value("<date>4001-01-01T00:00:00Z</date>").as<Date>(), dateFromAppleTime(63113904000));
}

TEST(XMLPropertyList, ReadsContainers) {
  const PropertyList list = value("<dict><key>a</key><array><integer>1</integer><dict/></array><key/><true/></dict>");
  const auto& dictionary = *list.as<PropertyListDictionary>();
  ASSERT_EQ(dictionary.size(), 2u);
  const auto& array = *entry(dictionary, "a")->as<PropertyListArray>();
  ASSERT_EQ(array.size(), 2u);
  EXPECT_EQ(*array[0].as<std::int64_t>(), 1);
  EXPECT_TRUE(array[1].as<PropertyListDictionary>()->empty());
  EXPECT_EQ(*entry(dictionary, "")->as<bool>(), true);
}

TEST(XMLPropertyList, TheLastOfTwoEqualKeysWins) {
  const PropertyList list = value("<dict><key>a</key><true/><key>a</key><false/></dict>");
  EXPECT_EQ(*entry(*list.as<PropertyListDictionary>(), "a")->as<bool>(), false);
}

TEST(XMLPropertyList, ReadsWhatAnIndependentWriterWrites) {
  const std::string xml = Fixture::xmlPlist(Fixture::PlistDictionary{{"text", "a<b&c"},
                                                                     {"number", -5},
                                                                     {"large", UINT64_MAX},
                                                                     {"real", 0.25},
                                                                     {"flag", true},
                                                                     {"data", Fixture::Bytes{0, 255}},
                                                                     {"list", Fixture::PlistArray{1, "x"}},
                                                                     {"date", Fixture::PlistDate{700000000}}});
  const PropertyList list = parsed(xml);
  const auto& dictionary = *list.as<PropertyListDictionary>();
  EXPECT_EQ(*entry(dictionary, "text")->as<std::string>(), "a<b&c");
  EXPECT_EQ(*entry(dictionary, "number")->as<std::int64_t>(), -5);
  EXPECT_EQ(*entry(dictionary, "large")->as<std::uint64_t>(), UINT64_MAX);
  EXPECT_EQ(*entry(dictionary, "real")->as<double>(), 0.25);
  EXPECT_EQ(*entry(dictionary, "flag")->as<bool>(), true);
  EXPECT_EQ(*entry(dictionary, "data")->as<Bytes>(), Bytes({0, 255}));
  EXPECT_EQ(entry(dictionary, "list")->as<PropertyListArray>()->size(), 2u);
  EXPECT_EQ(*entry(dictionary, "date")->as<Date>(), dateFromAppleTime(700000000));
}

TEST(XMLPropertyList, ReadsOtherEncodings) {
  EXPECT_EQ(*parsed("\xEF\xBB\xBF<plist><string>é</string></plist>").as<std::string>(), "é");
  EXPECT_EQ(
      *parsed("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>\xE9</string></plist>").as<std::string>(),
      "é");
  std::string utf16 = "\xFF\xFE";
  for (const char c : std::string("<plist><string>a</string></plist>")) utf16 += {c, '\0'};
  EXPECT_EQ(*parsed(utf16).as<std::string>(), "a");
}

TEST(XMLPropertyList, AcceptsApplesDocumentType) {
  EXPECT_EQ(*parsed(std::string(appleDoctype) + "<plist version=\"1.0\"><true/></plist>").as<bool>(), true);
}

TEST(XMLPropertyList, RefusesEntityDeclarations) {
  const std::string tail = "]><plist><string>&a;</string></plist>";
  for (const char* declaration : {"<!ENTITY a \"x\">", "<!ENTITY a SYSTEM \"file:///etc/passwd\">",
                                  "<!ENTITY % a \"x\">", "<!ENTITY a \"&b;&b;\"><!ENTITY b \"&c;&c;\">"}) {
    EXPECT_THROW(parsed("<!DOCTYPE plist [" + std::string(declaration) + tail), PropertyListError) << declaration;
  }
}

TEST(XMLPropertyList, RefusesUndeclaredEntities) {
  EXPECT_THROW(value("<string>a&b;c</string>"), PropertyListError);
  EXPECT_THROW(parsed(std::string(appleDoctype) + "<plist><string>a&b;c</string></plist>"), PropertyListError)
      << "a document type elsewhere could declare it, yet it is never fetched";
}

TEST(XMLPropertyList, RefusesMisplacedElements) {
  for (const char* element :
       {"<dict><string>x</string></dict>", "<dict><key>a</key></dict>", "<dict><key>a</key><key>b</key></dict>",
        "<array><key>a</key></array>", "<key>a</key>", "<string><true/></string>", "<string>a<key>b</key></string>",
        "<true/><false/>", "<set/>", "<plist><true/></plist>", "<array><plist/></array>", ""}) {
    expectRefused(element);
  }
}

TEST(XMLPropertyList, RefusesWhatIsNoPropertyList) {
  for (const char* text : {"", "   ", "<html/>", "<dict/>", "<plist>", "<plist></dict>", "text", "<plist/><plist/>",
                           "<plist><string>\xFF</string></plist>", "<plist><string>a\x01</string></plist>"}) {
    EXPECT_THROW(parsed(text), PropertyListError) << text;
  }
}

TEST(XMLPropertyList, RefusesDeepNesting) {
  const auto nested = [](std::size_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); };
  EXPECT_NO_THROW(value(nested(PropertyListLimits::depth - 1)));
  expectRefused(nested(PropertyListLimits::depth));
  expectRefused(nested(1'000'000));
}

TEST(XMLPropertyList, ReadsBeyondOneSliceOfInput) {
  const std::string text = repeated("0123456789abcdé", 200'000);  // 3 MB
  EXPECT_EQ(*value("<string>" + text + "</string>").as<std::string>(), text);
}

TEST(XMLPropertyList, TellsTheLineOfAFault) {
  EXPECT_THAT([] { parsed("<plist>\n<array>\n</plist>"); },
              testing::ThrowsMessage<PropertyListError>(testing::HasSubstr("line 3")));
}

}  // namespace
