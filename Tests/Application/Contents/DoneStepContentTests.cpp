#include "Tidewell/Contents/DoneStepContent.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

const L10n texts = americanTexts();

DoneStepContent contentOf(const ExportSummary& summary) {
  ExportState state;
  state.step = WizardStep::done;
  state.summary = summary;
  return DoneStepContent::of(state, texts);
}

TEST(DoneStepContent, SumsTheExportUp) {
  struct Case {
    ExportSummary summary;
    const char* expected;
  };
  const std::vector<Case> cases{
      {{}, "0 copied · 0 already present · 0 transcripts · 0 failed"},
      {{.copiedCount = 12, .skippedExistingCount = 3, .transcriptCount = 4, .failedCount = 0},
       "12 copied · 3 already present · 4 transcripts · 0 failed"},
      {{.copiedCount = 1'234'567, .failedCount = 1, .unresolvedArchiveLinkCount = 1'000},
       "1,234,567 copied · 0 already present · 0 transcripts · 1 failed · 1,000 archive links missing files"},
      {{.unresolvedArchiveLinkCount = 1},
       "0 copied · 0 already present · 0 transcripts · 0 failed · 1 archive links missing files"},
      {{.copiedCount = std::numeric_limits<std::int64_t>::max()},
       "9,223,372,036,854,775,807 copied · 0 already present · 0 transcripts · 0 failed"},
  };
  for (const Case& c : cases) EXPECT_EQ(contentOf(c.summary).summary.toStdString(), c.expected);
}

TEST(DoneStepContent, TellsOfFailures) {
  EXPECT_FALSE(contentOf({.copiedCount = 1}).hasFailures);
  EXPECT_TRUE(contentOf({.failedCount = 1}).hasFailures);
}

TEST(DoneStepContent, NamesWhatFailedAndWhy) {
  const DoneStepContent content = contentOf({.failedCount = 3,
                                             .failures = {{"a.jpg", "Ana", FailureReason::missing},
                                                          {"b\nb.pdf", "Fam\tily", FailureReason::tooLarge},
                                                          {"c.mp4", "Ana", FailureReason::missing}}});
  EXPECT_EQ(content.headline, "2 files are missing from the backup");
  ASSERT_EQ(content.failures.size(), 3);
  EXPECT_EQ(content.failures[0], (FailureContent{"a.jpg", "Ana", "It is missing from the backup."}));
  EXPECT_EQ(content.failures[1], (FailureContent{"b b.pdf", "Fam ily", "It is too large for the drive."}));
  EXPECT_EQ(content.moreFailures, "");
  EXPECT_EQ(content.failureList.toStdString(),
            "a.jpg\tAna\tIt is missing from the backup.\n"
            "b b.pdf\tFam ily\tIt is too large for the drive.\n"
            "c.mp4\tAna\tIt is missing from the backup.");
}

TEST(DoneStepContent, SaysOneFileInTheSingular) {
  const ExportSummary summary{.failedCount = 1, .failures = {{"a.jpg", "Ana", FailureReason::cutShort}}};
  EXPECT_EQ(contentOf(summary).headline, "1 file is cut short in the backup");
}

TEST(DoneStepContent, ShowsAThousandFailuresAndHowManyMore) {
  ExportSummary summary{.failedCount = 3'130};
  for (int i = 0; i < 3'130; ++i) summary.failures.push_back({"file", "chat", FailureReason::missing});
  const DoneStepContent content = contentOf(summary);
  EXPECT_EQ(content.headline, "3,130 files are missing from the backup");
  EXPECT_EQ(content.failures.size(), 1'000);
  EXPECT_EQ(content.moreFailures, "and 2,130 more");
  EXPECT_EQ(content.failureList.count('\n'), 1'000);
  EXPECT_TRUE(content.failureList.endsWith("and 2,130 more"));
}

TEST(DoneStepContent, ProposesNoArchiveWhereThereIsNone) {
  EXPECT_FALSE(contentOf({.copiedCount = 1}).hasArchive);
  EXPECT_TRUE(contentOf({.archiveIndexURL = "/kept/index.html"}).hasArchive);
}

TEST(DoneStepContent, PassesOnWarnings) {
  EXPECT_EQ(contentOf({.warnings = {"Something to know."}}).warnings, QStringList{"Something to know."});
}

DoneStepContent contentOf(const VerifySummary& verification) {
  ExportState state;
  state.step = WizardStep::done;
  state.summary = ExportSummary();
  state.verification = verification;
  return DoneStepContent::of(state, texts);
}

TEST(DoneStepContent, SaysThatNothingIsWrong) {
  EXPECT_EQ(contentOf(ExportSummary()).verdict, "");
  const DoneStepContent content = contentOf({.mediaCount = 20, .chatCount = 6, .messageCount = 1'850});
  EXPECT_EQ(content.verdict, u"Nothing is wrong: 20 media files · 6 chats · 1,850 messages"_qs);
  EXPECT_TRUE(content.findings.isEmpty());
  EXPECT_EQ(content.findingList, "");
  EXPECT_EQ(contentOf({.mediaCount = 1, .chatCount = 1, .messageCount = 1}).verdict,
            u"Nothing is wrong: 1 media file · 1 chat · 1 message"_qs);
}

TEST(DoneStepContent, ListsWhatAVerificationFound) {
  const DoneStepContent content =
      contentOf({.mediaCount = 20,
                 .findings = {{.message = "“a\n.jpg” is missing. Export again."}, {.message = "Another thing."}}});
  EXPECT_EQ(content.verdict, "2 problems were found");
  EXPECT_EQ(content.findings, QStringList({u"“a .jpg” is missing. Export again."_qs, "Another thing."}));
  EXPECT_EQ(content.findingList, u"“a .jpg” is missing. Export again.\nAnother thing."_qs);
  EXPECT_EQ(content.moreFindings, "");
  VerifySummary many;
  many.findings.assign(1'002, {.message = "Something is missing."});
  EXPECT_EQ(contentOf(many).verdict, "1,002 problems were found");
  EXPECT_EQ(contentOf(many).findings.size(), 1'000);
  EXPECT_EQ(contentOf(many).moreFindings, "and 2 more");
  EXPECT_TRUE(contentOf(many).findingList.endsWith("Something is missing.\nand 2 more"));
  many.findings.resize(1);
  EXPECT_EQ(contentOf(many).verdict, "1 problem was found");
}

TEST(DoneStepContent, NamesWhereTheExportWent) {
  ExportState state;
  state.destinationURL = "/chosen since";
  for (const QString& name : unusualNames) {
    state.summary = ExportSummary{.destination = "/" + name.toStdString()};
    EXPECT_EQ(DoneStepContent::of(state, texts).destination, "/" + name);
  }
}

TEST(DoneStepContent, IsEmptyBeforeAnExport) { EXPECT_EQ(DoneStepContent::of({}, texts), DoneStepContent()); }

TEST(DoneStepContent, FillsATranslationByPlace) {
  const L10n other(StringTable({{"%lld copied · %lld already present · %lld transcripts · %lld failed",
                                 "%4$lld com erro, %1$lld copiados, %2$lld presentes, %3$lld conversas"}}),
                   {.identifier = "pt_BR"}, {.identifier = "UTC"});
  ExportState state;
  state.summary =
      ExportSummary{.copiedCount = 1'000, .skippedExistingCount = 2, .transcriptCount = 3, .failedCount = 4};
  EXPECT_EQ(DoneStepContent::of(state, other).summary, "4 com erro, 1.000 copiados, 2 presentes, 3 conversas");
}

TEST(DoneStepContent, WhatIsCopiedHoldsNoIsolates) {
  const L10n arabic(StringTable({}, "ar"), {.identifier = "ar_EG"}, {.identifier = "UTC"});
  ExportState state;
  state.summary = ExportSummary{.failedCount = 1'001};
  state.summary->failures.assign(1'001, {.name = "a.jpg", .chat = "ليلى", .reason = FailureReason::missing});
  const auto content = DoneStepContent::of(state, arabic);
  EXPECT_TRUE(content.moreFailures.contains(QChar(0x2068)));
  for (const char16_t isolate : {u'\u2066', u'\u2067', u'\u2068', u'\u2069'}) {
    EXPECT_FALSE(content.failureList.contains(QChar(isolate)));
  }
}

}  // namespace
