#include "Tests/Application/Gallery/ScreenStates.h"

#include <array>
#include <string_view>

#include "TidewellCore/Backup/DatabaseCheck.h"

namespace {

constexpr double noon = 1'790'000'000;

BackupInfo device(const std::string& name, bool isEncrypted = false) {
  return {.url = "/Users/mara/Library/Application Support/MobileSync/Backup/" + name,
          .deviceName = name,
          .productType = "iPhone15,2",
          .iosVersion = "18.6.2",
          .backupDate = dateFromUnixTime(noon - 90'000),
          .isEncrypted = isEncrypted,
          .uniqueIdentifier = std::nullopt};
}

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

ExportState looking() { return {.library = {.access = BackupAccess::readable}, .isRefreshingLibrary = true}; }

ExportState denied() { return {.library = {.access = BackupAccess::denied}}; }

ExportState choosing(std::vector<DiscoveredBackup> backups) {
  return {.library = {.access = BackupAccess::readable, .backups = std::move(backups)}};
}

ExportState choosing() {
  return choosing({{.info = device("Mara’s iPhone"), .byteCount = 48'213'000'000},
                   {.info = device("iPhone 15 Pro", true), .byteCount = 12'700'000'000},
                   {.info = {.url = "/nameless"}, .byteCount = std::nullopt}});
}

ExportState chosen(ExportState state, const BackupInfo& info) {
  state.backupInfo = info;
  state.backupURL = info.url;
  state.selectedBackupID = info.url.native();
  return state;
}

ExportState chosen(std::size_t index) {
  ExportState state = choosing();
  return chosen(state, state.library.backups[index].info);
}

ExportState deniedWithChosen() { return chosen(denied(), device("Copied backup")); }

ExportState oddNames() {
  const std::string longName = repeated("An iPhone with a name beyond all measure ", 5);
  ExportState state =
      choosing({{.info = device(longName, true), .byteCount = 1},
                {.info = device("هاتف مريم المحمول"), .byteCount = 4'000'000},
                {.info = device("📱🏝️👩‍👩‍👧‍👦 <b>Ünïcødé</b>"), .byteCount = 0}});
  return chosen(state, state.library.backups[0].info);
}

ExportState manyBackups() {
  std::vector<DiscoveredBackup> backups;
  for (int i = 1; i <= 14; ++i) backups.push_back({.info = device("iPhone " + std::to_string(i), i == 9)});
  ExportState state = choosing(std::move(backups));
  return chosen(state, state.library.backups[8].info);
}

ExportState withStoredPassword() {
  ExportState state = chosen(1);
  state.hasStoredPassword = true;
  state.rememberBackupPassword = true;
  state.storedPassword = SecretBytes{'x'};
  return state;
}

ExportState inspecting() {
  ExportState state = choosing();
  state.work = Inspecting();
  return state;
}

ExportState unlockingWith(bool isCancelling) {
  ExportState state = withStoredPassword();
  state.work = Scanning{.isUnlocking = true, .isCancelling = isCancelling};
  return state;
}

ExportState failed(const std::string& message, const std::string& suggestion) {
  ExportState state = chosen(1);
  state.errorMessage = message;
  state.recoverySuggestion = suggestion;
  state.focusBackupPassword = true;
  return state;
}

std::string nameOfChat(std::int64_t number) {
  static const std::array<std::string, 4> names{
      "Ana Souza", "Família 👨‍👩‍👧",
      "A group with a name that is longer than any line of a list can hold, " + repeated("whatever its width, ", 8),
      "مريم"};
  const std::string& name = names[static_cast<std::size_t>(number - 1) / 9 % names.size()];
  const std::int64_t copy = (number - 1) % 9 + 1;
  return name + (copy == 1 ? "" : " " + std::to_string(copy));
}

// The media of all chats shared out among them, the first having the most.
void addChats(ScanResult& result) {
  for (std::int64_t number = 1; number <= result.chatCount; ++number) {
    const auto share = [&](std::int64_t whole) {
      return whole * 2 * (result.chatCount - number + 1) / (result.chatCount * (result.chatCount + 1));
    };
    ScanChat chat{
        .jid = std::to_string(number) + "@s.whatsapp.net", .name = nameOfChat(number), .messageCount = 20'011 / number};
    for (const auto& [kind, stats] : result.statsByKind) {
      const MediaTypeStats own{.count = share(stats.count), .byteCount = share(stats.byteCount)};
      chat.statsByKind.emplace(kind, own);
      chat.mediaFileCount += own.count;
      chat.mediaBytes += own.byteCount;
    }
    result.chats.push_back(std::move(chat));
  }
}

ScanResult scan() {
  ScanResult result{.chatCount = 214,
                    .mediaFileCount = 18'345,
                    .totalBytes = 31'400'000'000,
                    .statsByKind = {{MediaKind::photos, {.count = 12'204, .byteCount = 8'900'000'000}},
                                    {MediaKind::videos, {.count = 1'893, .byteCount = 20'100'000'000}},
                                    {MediaKind::voiceNotes, {.count = 3'020, .byteCount = 640'000'000}},
                                    {MediaKind::stickers, {.count = 914, .byteCount = 58'000'000}},
                                    {MediaKind::documents, {.count = 314, .byteCount = 1'702'000'000}}}};
  addChats(result);
  return result;
}

ExportState options() {
  ExportState state = chosen(0);
  state.step = WizardStep::options;
  state.scanResult = scan();
  return state;
}

ExportState withDestination(const std::string& path, std::int64_t available) {
  ExportState state = options();
  state.destinationURL = path;
  state.availableBytes = available;
  return state;
}

ExportState choosingChats() {
  ExportState state = withDestination("/Users/mara/Documents", 250'000'000'000);
  state.chatChoice.leftOut = {"2@s.whatsapp.net", "3@s.whatsapp.net", "7@s.whatsapp.net"};
  return state;
}

ExportState listOfChats(const std::string& search) {
  ExportState state = choosingChats();
  state.chatChoice.isListShown = true;
  state.chatChoice.search = search;
  return state;
}

ExportState wrongDay() {
  ExportState state = choosingChats();
  state.chatChoice.since = "31.5.2024";
  return state;
}

ExportState nothingFound() {
  ExportState state = withDestination("/Users/mara/Documents", 250'000'000'000);
  state.scanResult = ScanResult{};
  return state;
}

ExportState noKinds() {
  ExportState state = withDestination("/Users/mara/Documents", 250'000'000'000);
  state.includedKinds = {};
  return state;
}

ExportState exporting(ExportProgress progress) {
  ExportState state = withDestination("/Users/mara/Documents/Chats", 250'000'000'000);
  state.step = WizardStep::exporting;
  state.work = Exporting();
  state.exportStartedAt = dateFromUnixTime(noon - 95);
  state.phaseClock.take(progress, std::chrono::duration<double>(noon - 95));
  state.progress = std::move(progress);
  return state;
}

ExportState done(std::int64_t failures, std::int64_t missingLinks) {
  ExportState state = withDestination("/Users/mara/Documents/Chats", 250'000'000'000);
  state.step = WizardStep::done;
  state.summary = ExportSummary{.copiedCount = 18'331,
                                .skippedExistingCount = 14,
                                .transcriptCount = 428,
                                .failedCount = failures,
                                .destination = *state.destinationURL,
                                .archiveIndexURL = *state.destinationURL / "index.html",
                                .unresolvedArchiveLinkCount = missingLinks};
  return state;
}

ExportState doneWithFailures(int count) {
  ExportState state = done(count, 12);
  constexpr std::array names{"2026-05-12_101500_IMG-20260512-WA0007.jpg", "2025-12-24_180000_Video.mp4",
                             "undated_a.pdf"};
  constexpr std::array chats{"Ana Souza", "Família 👨‍👩‍👧",
                             "A group with a name that is longer than any line of a list can hold, whatever its width"};
  for (int i = 0; i < count; ++i) {
    state.summary->failures.push_back({.name = names[static_cast<std::size_t>(i) % names.size()],
                                       .chat = chats[static_cast<std::size_t>(i) % chats.size()],
                                       .reason = i % 4 == 3 ? FailureReason::tooLarge : FailureReason::missing});
  }
  return state;
}

ExportState damaged() {
  ExportState state = withDestination("/Users/mara/Documents/Chats", 250'000'000'000);
  state.scanResult->warnings = DatabaseCheck::warnings(BackupDatabase::chats, {DatabaseFault::journalDamaged});
  for (std::string& warning : DatabaseCheck::warnings(BackupDatabase::contacts, {DatabaseFault::damaged})) {
    state.scanResult->warnings.push_back(std::move(warning));
  }
  return state;
}

ExportState doneWithWarning() {
  ExportState state = doneWithFailures(2);
  state.summary->warnings = {
      "The names in this folder were written for the time zone Europe/Berlin. With Asia/Tokyo, files may be copied "
      "again."};
  return state;
}

ExportState unopened() {
  ExportState state = done(0, 0);
  state.unopenedPath = "/Users/mara/Documents/" + repeated("A long folder name/", 6) + "index.html";
  return state;
}

ExportState doneWithoutArchive() {
  ExportState state = done(0, 0);
  state.summary->archiveIndexURL = std::nullopt;
  state.summary->destination = "/Volumes/" + repeated("A very long folder name/", 12) + "Chats";
  return state;
}

ExportState verificationAt(ExportProgress progress) {
  ExportState state = done(0, 0);
  state.work = Verifying();
  state.phaseClock.take(progress, std::chrono::duration<double>(noon - 95));
  state.progress = std::move(progress);
  return state;
}

ExportState verified(int findings) {
  ExportState state = done(0, 0);
  state.verification = VerifySummary{.mediaCount = 18'345, .chatCount = 214, .messageCount = 391'207};
  const std::array<std::string, 3> messages{
      "“Ana Souza/2026-05-12_101500_IMG-20260512-WA0007.jpg” is missing. Export again: what the backup still has is "
      "brought back.",
      "3 messages of “Família 👨‍👩‍👧” are not in the archive. Export again.",
      "“" + repeated("0123456789", 14) +
          ".mp4” has other bytes than when it was written. Delete it, or move it out of "
          "the export, and export again."};
  for (int i = 0; i < findings; ++i) {
    state.verification->findings.push_back({.message = messages[static_cast<std::size_t>(i) % messages.size()]});
  }
  return state;
}

ExportState askingToStop() {
  ExportState state = exporting({.phase = ExportProgress::Phase::copyingMedia, .completed = 7'211, .total = 18'345});
  state.stopQuestion = StopQuestion::close;
  return state;
}

ExportState withUnreadableFolders() {
  ExportState state = choosing();
  state.library.unreadable = {{.name = "Old", .reason = "This folder isn't an iPhone backup."},
                              {.name = "Half", .reason = "This folder isn't an iPhone backup."}};
  return state;
}

ExportState withoutStore() {
  ExportState state = chosen(1);
  state.hasPasswordStore = false;
  return state;
}

ExportState dragging() {
  ExportState state = choosing();
  state.dropTargeted = true;
  return state;
}

std::vector<FolderPlace> places() {
  using Kind = FolderPlace::Kind;
  return {{.kind = Kind::home, .folder = "/home/mara"},
          {.kind = Kind::desktop, .folder = "/home/mara/Desktop"},
          {.kind = Kind::documents, .folder = "/home/mara/Documents"},
          {.kind = Kind::computer, .folder = "/"},
          {.kind = Kind::drive, .folder = "/media/mara/Photos", .label = "Photos"},
          {.kind = Kind::drive, .folder = "/media/mara/1", .label = "A stick with a name that nobody can read"}};
}

FolderBrowserState browsing(const std::string& folder, std::vector<std::filesystem::path> names = {}) {
  return {.listing = {.folder = folder, .names = std::move(names)}, .places = places()};
}

FolderBrowserState documents() {
  return browsing("/home/mara/Documents",
                  {"2024", "2025", "Ávila", "Chats", repeated("A folder with a name beyond all measure ", 5), "Garden",
                   "Letters 2", "Letters 10", "Music", "Old phones", "Recipes", "Taxes", "رسائل", "📱 <b>Phones</b>"});
}

FolderBrowserState unreadable() {
  FolderBrowserState state = browsing("/root");
  state.listing.isReadable = false;
  return state;
}

FolderBrowserState mistyped() {
  FolderBrowserState state = documents();
  state.pathFault = FolderFault::noSuchFolder;
  return state;
}

FolderBrowserState misnamed() {
  FolderBrowserState state = documents();
  state.nameFault = FolderFault::nameTaken;
  return state;
}

}  // namespace

std::vector<ChooserState> allChooserStates() {
  return {{.name = "folders", .state = documents()},
          {.name = "folders-long-path", .state = browsing(repeated("/A very long folder name", 12), {"Chats"})},
          {.name = "folders-empty", .state = browsing("/home/mara/Documents/Chats")},
          {.name = "folders-unreadable", .state = unreadable()},
          {.name = "folders-mistyped", .state = mistyped()},
          {.name = "folders-new", .state = misnamed(), .isNaming = true},
          {.name = "folders-before-any", .state = {.isReading = true}}};
}

Date screenStatesNow() { return dateFromUnixTime(noon); }

std::vector<ScreenState> allScreenStates() {
  using enum ExportProgress::Phase;
  return {
      {"backup-looking", looking()},
      {"backup-none", choosing({})},
      {"backup-denied", denied()},
      {"backup-denied-chosen", deniedWithChosen()},
      {"backup-list", choosing()},
      {"backup-chosen", chosen(0)},
      {"backup-encrypted", chosen(1)},
      {"backup-stored-password", withStoredPassword()},
      {"backup-many", manyBackups()},
      {"backup-odd-names", oddNames()},
      {"backup-inspecting", inspecting()},
      {"backup-dragging", dragging()},
      {"backup-unreadable", withUnreadableFolders()},
      {"backup-no-store", withoutStore()},
      {"unlock", unlockingWith(false)},
      {"unlock-stopping", unlockingWith(true)},
      {"error", failed("The backup password is not right.", "Enter the password that was set in Finder.")},
      {"error-long", failed(repeated("Something of many words went wrong. ", 60), "Try again.")},
      {"options-no-destination", options()},
      {"options-ready", withDestination("/Users/mara/Documents/Chats", 250'000'000'000)},
      {"options-no-space", withDestination("/Volumes/" + repeated("Stick/", 40), 4'000'000'000)},
      {"options-no-kinds", noKinds()},
      {"options-some-chats", choosingChats()},
      {"options-wrong-day", wrongDay()},
      {"options-chats", listOfChats("")},
      {"options-chats-none", listOfChats("Zacharias")},
      {"options-nothing-found", nothingFound()},
      {"options-warnings", damaged()},
      {"exporting-preparing", exporting({.phase = preparing, .total = 1})},
      {"exporting-reading", exporting({.phase = readingChats})},
      {"exporting-copying", exporting({.phase = copyingMedia,
                                       .currentFileName = "IMG_20260512_" + repeated("0123456789", 12) + ".jpg",
                                       .completed = 7'211,
                                       .total = 18'345})},
      {"exporting-transcripts", exporting({.phase = writingTranscripts, .completed = 120, .total = 214})},
      {"done", done(0, 0)},
      {"exporting-stop", askingToStop()},
      {"done-failures", doneWithFailures(3)},
      {"done-many-failures", doneWithFailures(3'130)},
      {"done-warning", doneWithWarning()},
      {"done-unopened", unopened()},
      {"done-no-archive", doneWithoutArchive()},
      {"verifying", verificationAt({.phase = ExportProgress::Phase::verifying,
                                    .currentFileName = "Ana Souza/IMG_20260512_" + repeated("0123456789", 12) + ".jpg",
                                    .completed = 7'211,
                                    .total = 18'345})},
      {"verifying-unlocking", verificationAt({.phase = ExportProgress::Phase::unlocking})},
      {"verified", verified(0)},
      {"verified-wrong", verified(2)},
      {"verified-very-wrong", verified(2'345)},
  };
}
