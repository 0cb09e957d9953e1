#include "Tidewell/Services/L10n.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>

void PrintTo(const TranscriptStyle& style, std::ostream* stream) {
  *stream << style.youLabel << ", " << style.unknownSenderLabel << ", " << style.languageCode;
}

namespace {

L10n speaking(const char* locale, StringTable table = {}) {
  return L10n(std::move(table), {.identifier = locale}, {.identifier = "UTC"});
}

std::string filled(const char* text, const QStringList& values) {
  return speaking("en_US").format(text, values).toStdString();
}

std::string size(std::int64_t bytes, const char* locale = "en_US") {
  return speaking(locale).byteCount(bytes).toStdString();
}

TEST(L10n, LooksTextsUp) {
  const L10n texts = speaking("pt_BR", StringTable({{"Back", "Voltar"}}));
  EXPECT_EQ(texts.text("Back"), "Voltar");
  EXPECT_EQ(texts.text("Continue"), "Continue");
}

TEST(L10n, FillsPlaceholdersInTheirOrder) {
  EXPECT_EQ(filled("iOS %@", {"17.4"}), "iOS 17.4");
  EXPECT_EQ(filled("%lld copied · %lld failed", {"12", "0"}), "12 copied · 0 failed");
  EXPECT_EQ(filled("%@ and %lld", {"a", "2"}), "a and 2");
  EXPECT_EQ(filled("%@%@", {"a", "b"}), "ab");
  EXPECT_EQ(filled("none", {"a"}), "none");
  EXPECT_EQ(filled("", {}), "");
}

TEST(L10n, FillsPlaceholdersByTheirPlace) {
  EXPECT_EQ(filled("%2$@, %1$lld", {"a", "b"}), "b, a");
  EXPECT_EQ(filled("%1$@ %1$@", {"a"}), "a a");
  EXPECT_EQ(filled("%12$@", {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}), "12");
}

TEST(L10n, NeverFillsAValue) {
  EXPECT_EQ(filled("%@ · %@", {"%@", "b"}), "%@ · b");
  EXPECT_EQ(filled("%@ · %lld", {"%2$@ %lld", "b"}), "%2$@ %lld · b");
}

TEST(L10n, LeavesWhatHasNoValue) {
  EXPECT_EQ(filled("%@ · %@", {"a"}), "a · %@");
  EXPECT_EQ(filled("%3$@", {"a"}), "%3$@");
  EXPECT_EQ(filled("%0$@ %d %s 100 %", {"a"}), "%0$@ %d %s 100 %");
}

TEST(L10n, FillsTheTranslation) {
  const L10n texts = speaking("pt_BR", StringTable({{"%@ of %@", "%2$@, das quais %1$@"}}));
  EXPECT_EQ(texts.format("%@ of %@", {"3", "9"}), "9, das quais 3");
}

TEST(L10n, WritesNumbersAsTheRegionDoes) {
  EXPECT_EQ(speaking("en_US").number(1234567), "1,234,567");
  EXPECT_EQ(speaking("pt_BR").number(1234567), "1.234.567");
  EXPECT_EQ(speaking("en_US").number(0), "0");
  EXPECT_EQ(speaking("en_US").number(std::numeric_limits<std::int64_t>::max()), "9,223,372,036,854,775,807");
}

TEST(L10n, WritesSizesInDecimalUnits) {
  EXPECT_EQ(size(0), "0 bytes");
  EXPECT_EQ(size(1), "1 byte");
  EXPECT_EQ(size(2), "2 bytes");
  EXPECT_EQ(size(999), "999 bytes");
  EXPECT_EQ(size(1000), "1.0 kB");
  EXPECT_EQ(size(1'234'567'890), "1.2 GB");
  EXPECT_EQ(size(1'234'567'890, "de_DE"), "1,2 GB");
  EXPECT_EQ(size(64'000'000'000), "64.0 GB");
}

TEST(L10n, NeverWritesAThousandOfAUnit) {
  EXPECT_EQ(size(999'949), "999.9 kB");
  EXPECT_EQ(size(999'950), "1.0 MB");
  EXPECT_EQ(size(999'999'999), "1.0 GB");
  EXPECT_EQ(size(std::numeric_limits<std::int64_t>::max()), "9.2 EB");
}

TEST(L10n, TranslatesTheWordForBytes) {
  const L10n texts = speaking("fr_FR", StringTable({{"1 byte", "1 octet"}, {"%lld bytes", "%lld octets"}}));
  EXPECT_EQ(texts.byteCount(1), "1 octet");
  EXPECT_EQ(texts.byteCount(512), "512 octets");
}

TEST(L10n, ShortensDates) {
  const Date date = dateFromUnixTime(1678026120);
  EXPECT_EQ(speaking("en_US").dateAndTime(date), QStringLiteral("Mar 5, 2023, 2:22\u202FPM"));
  EXPECT_EQ(L10n({}, {.identifier = "pt_BR"}, {.identifier = "America/Sao_Paulo"}).dateAndTime(date),
            QStringLiteral("5 de mar. de 2023, 11:22"));
}

TEST(L10n, PortugueseTranscriptsAreWordedByThemselves) {
  const StringTable table({{"You", "Tu"}, {"Unknown", "Incógnito"}});
  for (const char* locale : {"pt", "pt_PT", "pt-BR", "pt_BR", "PT_br"}) {
    EXPECT_EQ(speaking(locale, table).transcriptStyle(), TranscriptStyle::portuguese()) << locale;
  }
}

TEST(L10n, OtherTranscriptsAreWordedByTheTable) {
  for (const char* locale : {"es", "en_US", "de_DE", "es_PT"}) {
    EXPECT_EQ(speaking(locale).transcriptStyle(), TranscriptStyle::english()) << locale;
  }
  const TranscriptStyle german =
      speaking("de_DE", StringTable({{"You", "Du"}, {"Unknown", "Unbekannt"}})).transcriptStyle();
  EXPECT_EQ(german, (TranscriptStyle{.youLabel = "Du", .unknownSenderLabel = "Unbekannt", .languageCode = "en"}));
}

// A first strong isolate, or one of a direction, and its end.
QString isolated(const QString& text) { return u'\u2068' + text + u'\u2069'; }
QString rightToLeft(const QString& text) { return u'\u2067' + text + u'\u2069'; }
QString leftToRight(const QString& text) { return u'\u2066' + text + u'\u2069'; }

TEST(L10n, LeavesTextsFromLeftToRightAsTheyAre) {
  for (const char* locale : {"en_US", "pt_BR", "ja_JP", "C"}) {
    const L10n texts = speaking(locale);
    EXPECT_EQ(texts.format("iOS %@", {"17"}), "iOS 17") << locale;
    EXPECT_EQ(texts.joined({"a", "ب"}, " · "), "a · ب") << locale;
    EXPECT_EQ(texts.path("/ب/a"), "/ب/a") << locale;
    EXPECT_FALSE(texts.speaksRightToLeft()) << locale;
  }
}

TEST(L10n, KeepsFiguresAndUnitsInOrderFromRightToLeft) {
  const L10n hebrew = speaking("he_IL", StringTable({{"%lld of %lld", "%lld מתוך %lld"}}, "he"));
  EXPECT_EQ(hebrew.byteCount(1'234'567'890), leftToRight("1.2 GB"));
  EXPECT_EQ(hebrew.format("%lld of %lld", {hebrew.number(12), hebrew.number(340)}),
            isolated("12") + " מתוך " + isolated("340"));
  EXPECT_EQ(hebrew.joined({"a", "ב"}, " · "), rightToLeft(isolated("a") + " · " + isolated("ב")));
  EXPECT_EQ(hebrew.path("/home/מרים/a"), leftToRight("/home/מרים/a"));
  const L10n arabic = speaking("ar_EG", StringTable({{"%lld bytes", "%lld بايت"}}, "ar"));
  EXPECT_EQ(arabic.byteCount(1'234'567'890), leftToRight("١٫٢ GB"));
  EXPECT_EQ(arabic.byteCount(12), isolated("١٢") + " بايت");
}

TEST(L10n, IsolatesNothing) { EXPECT_EQ(speaking("ar_EG").joined({"", "a"}, ","), "," + isolated("a")); }

// Dates and figures are in Arabic although the texts are not.
TEST(L10n, IsolatesWhereOnlyTheRegionWritesFromRightToLeft) {
  EXPECT_EQ(speaking("ar_EG").format("iOS %@", {"17"}), "iOS " + isolated("17"));
  EXPECT_FALSE(speaking("ar_EG").speaksRightToLeft()) << "its texts are English";
  EXPECT_TRUE(speaking("en_US", StringTable({}, "ar")).speaksRightToLeft());
}

TEST(L10n, TakesIsolatesOutOfWhatIsCopied) { EXPECT_EQ(L10n::withoutIsolates(isolated("a") + leftToRight("ب")), "aب"); }

}  // namespace
