#include "Tidewell/Contents/OptionsStepContent.h"

#include <gtest/gtest.h>

#include "Tests/Application/Contents/ContentTestTexts.h"

namespace {

const L10n texts = americanTexts();

ExportState scanned() {
  ExportState state;
  state.step = WizardStep::options;
  state.backupInfo = BackupInfo{.url = "/b", .deviceName = "Ana's iPhone", .backupDate = someDate};
  state.scanResult = ScanResult{.chatCount = 1'234,
                                .mediaFileCount = 12'345,
                                .totalBytes = 2'500'000'000,
                                .statsByKind = {{MediaKind::photos, {.count = 12'000, .byteCount = 2'000'000'000}},
                                                {MediaKind::videos, {.count = 345, .byteCount = 500'000'000}}}};
  return state;
}

TEST(OptionsStepContent, SumsTheBackupUp) {
  const auto content = OptionsStepContent::of(scanned(), texts);
  EXPECT_EQ(content.device, "Ana's iPhone");
  EXPECT_EQ(content.backedUp, someDateText);
  EXPECT_EQ(content.chats, "1,234");
  EXPECT_EQ(content.media, "12,345 · 2.5 GB");
  EXPECT_FALSE(content.isEmpty);
  EXPECT_TRUE(content.exportTranscripts);
  EXPECT_FALSE(content.exportMessageFiles);
}

TEST(OptionsStepContent, OffersFilesForProgramsWithTranscriptsOnly) {
  ExportState state = scanned();
  state.exportMessageFiles = true;
  EXPECT_TRUE(OptionsStepContent::of(state, texts).exportMessageFiles);
  state.exportTranscripts = false;
  EXPECT_FALSE(OptionsStepContent::of(state, texts).exportMessageFiles);
}

TEST(OptionsStepContent, SaysSoWhenItDoesNotKnow) {
  ExportState state = scanned();
  state.backupInfo = BackupInfo{.url = "/b"};
  const auto content = OptionsStepContent::of(state, texts);
  EXPECT_EQ(content.device, "iPhone");
  EXPECT_EQ(content.backedUp, "Unknown");
}

TEST(OptionsStepContent, LeavesNamesAsTheyAre) {
  ExportState state = scanned();
  for (const QString& name : unusualNames) {
    state.backupInfo->deviceName = name.toStdString();
    EXPECT_EQ(OptionsStepContent::of(state, texts).device, name);
  }
}

TEST(OptionsStepContent, SaysThatNothingWasFound) {
  ExportState state = scanned();
  state.scanResult = ScanResult{};
  EXPECT_TRUE(OptionsStepContent::of(state, texts).isEmpty);
  EXPECT_EQ(OptionsStepContent::of(state, texts).media, "0 · 0 bytes");
  state.scanResult->chatCount = 1;
  EXPECT_FALSE(OptionsStepContent::of(state, texts).isEmpty);
  state.scanResult = ScanResult{.mediaFileCount = 1};
  EXPECT_FALSE(OptionsStepContent::of(state, texts).isEmpty);
  state.scanResult.reset();
  EXPECT_FALSE(OptionsStepContent::of(state, texts).isEmpty) << "nothing was looked for yet";
}

TEST(OptionsStepContent, TellsWhatTheScanMayHaveMissed) {
  EXPECT_TRUE(OptionsStepContent::of(scanned(), texts).warnings.isEmpty());
  ExportState state = scanned();
  state.scanResult->warnings = {"Some messages may be missing.", "unknown"};
  const L10n other(StringTable({{"Some messages may be missing.", "Podem faltar mensagens."}}), {.identifier = "pt_BR"},
                   {.identifier = "UTC"});
  EXPECT_EQ(OptionsStepContent::of(state, other).warnings, QStringList({"Podem faltar mensagens.", "unknown"}));
}

TEST(OptionsStepContent, HasARowForEachKind) {
  struct Row {
    const char* rawValue;
    const char* title;
    const char* count;
    const char* size;
    const char* accessibleName;
    bool included;
  };
  const std::vector<Row> rows{{"photos", "Photos", "12,000", "2.0 GB", "Photos, 12,000 files, 2.0 GB", true},
                              {"videos", "Videos", "345", "500.0 MB", "Videos, 345 files, 500.0 MB", false},
                              {"voiceNotes", "Voice notes", "1", "1 byte", "Voice notes, 1 file, 1 byte", true},
                              {"stickers", "Stickers", "0", "0 bytes", "Stickers, 0 files, 0 bytes", true},
                              {"documents", "Documents", "0", "0 bytes", "Documents, 0 files, 0 bytes", true}};
  ExportState state = scanned();
  state.includedKinds.erase(MediaKind::videos);
  state.scanResult->statsByKind[MediaKind::voiceNotes] = {.count = 1, .byteCount = 1};
  const auto kinds = OptionsStepContent::of(state, texts).kinds;
  ASSERT_EQ(kinds.size(), static_cast<qsizetype>(rows.size()));
  for (qsizetype i = 0; i < kinds.size(); ++i) {
    const Row& row = rows[static_cast<std::size_t>(i)];
    const MediaKindContent expected{.rawValue = row.rawValue,
                                    .title = row.title,
                                    .count = row.count,
                                    .size = row.size,
                                    .accessibleName = row.accessibleName,
                                    .included = row.included};
    EXPECT_EQ(kinds[i], expected) << row.rawValue;
  }
}

TEST(OptionsStepContent, SpeaksTheUsersLanguage) {
  const L10n other(StringTable({{"Photos", "Fotos"}, {"Unknown", "Desconhecida"}}), {.identifier = "pt_BR"},
                   {.identifier = "UTC"});
  ExportState state = scanned();
  state.backupInfo->backupDate.reset();
  const auto content = OptionsStepContent::of(state, other);
  EXPECT_EQ(content.backedUp, "Desconhecida");
  EXPECT_EQ(content.kinds[0].title, "Fotos");
  EXPECT_EQ(content.media, "12.345 · 2,5 GB");
}

TEST(DestinationContent, TellsWhetherTheExportFits) {
  struct Case {
    std::optional<std::int64_t> available;
    const char* freeSpace;
    const char* status;
    bool isEnough;
  };
  const std::vector<Case> cases{{{}, "", "", true},
                                {64'000'000'000, "64.0 GB", "Enough", true},
                                {2'574'999'999, "2.6 GB", "Not enough — choose another disk", false},
                                {2'575'000'000, "2.6 GB", "Enough", true},
                                {0, "0 bytes", "Not enough — choose another disk", false}};
  for (const Case& c : cases) {
    ExportState state = scanned();
    state.destinationURL = "/home/ana/Desktop";
    state.availableBytes = c.available;
    const DestinationContent expected{.isChosen = true,
                                      .path = "/home/ana/Desktop",
                                      .willCopy = "2.5 GB",
                                      .freeSpace = c.freeSpace,
                                      .status = c.status,
                                      .isEnough = c.isEnough};
    EXPECT_EQ(DestinationContent::of(state, texts), expected) << c.freeSpace << ", " << c.status;
  }
}

TEST(DestinationContent, IsEmptyBeforeOneIsChosen) {
  const auto content = DestinationContent::of(scanned(), texts);
  EXPECT_FALSE(content.isChosen);
  EXPECT_EQ(content.path, "");
  EXPECT_EQ(content.status, "");
}

TEST(DestinationContent, CountsTheChosenKinds) {
  ExportState state = scanned();
  state.includedKinds = {MediaKind::videos};
  EXPECT_EQ(DestinationContent::of(state, texts).willCopy, "500.0 MB");
  state.includedKinds.clear();
  EXPECT_EQ(DestinationContent::of(state, texts).willCopy, "0 bytes");
}

TEST(DestinationContent, LeavesPathsAsTheyAre) {
  ExportState state = scanned();
  for (const QString& name : unusualNames) {
    state.destinationURL = "/" + name.toStdString();
    EXPECT_EQ(DestinationContent::of(state, texts).path, "/" + name);
  }
  state.destinationURL = "/no text \xff";
  EXPECT_EQ(DestinationContent::of(state, texts).path, QStringLiteral("/no text \uFFFD"));
}

}  // namespace
