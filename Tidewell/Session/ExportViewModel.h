#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Services/PlatformServices.h"
#include "Tidewell/Services/ScopedAccess.h"
#include "Tidewell/Session/BackgroundWork.h"
#include "Tidewell/Session/CancellationToken.h"
#include "Tidewell/Session/ExportState.h"
#include "TidewellCore/Export/ExportPreferences.h"

// The wizard behind its screens: holds the one state that they show and performs
// every action of the user by calling the core. Lives on the interface thread;
// slow calls run elsewhere, and their results are taken up only while they still
// answer what the user chose last. It may be destroyed while calls are under way.
class ExportViewModel : public QObject {
  Q_OBJECT

 public:
  struct Setup {
    PlatformServices services;
    L10n texts;
    std::optional<std::filesystem::path> preferencesURL;  // absent: in the user's application-support folder
  };

  // `work` must outlive the controller.
  ExportViewModel(Setup setup, BackgroundWork& work);
  // Ends the run under way at its next check.
  ~ExportViewModel() override;

  const ExportState& state() const { return state_; }
  const PlatformServices& services() const { return services_; }

  // What the window does once, when it is first shown: looks for backups, then reopens what was used last;
  // with a folder, that one is the chosen backup.
  void startUp(const std::optional<std::filesystem::path>& backup = {});
  Q_INVOKABLE void refreshLibrary();
  Q_INVOKABLE void restoreRememberedLocations();

  void selectDiscovered(const DiscoveredBackup& backup);
  // The same for the listed backup of that identifier; does nothing when there is none.
  Q_INVOKABLE void selectBackup(const QString& id);
  Q_INVOKABLE void chooseBackup();
  void setBackup(const std::filesystem::path& url);
  // `knownInfo`: what the library knows of that folder; shown when it cannot be read any more.
  void setBackup(const std::filesystem::path& url, const std::optional<BackupInfo>& knownInfo);
  // A folder dropped on the window; what is no file changes nothing.
  Q_INVOKABLE void dropFolder(const QUrl& url);

  Q_INVOKABLE void continueToOptions();
  Q_INVOKABLE void cancelUnlock();
  Q_INVOKABLE void goBackToBackup();

  Q_INVOKABLE void chooseDestination();
  void setDestination(const std::filesystem::path& url);

  Q_INVOKABLE void startExport();
  Q_INVOKABLE void cancelExport();
  Q_INVOKABLE void exportAnother();
  Q_INVOKABLE void openArchive();
  Q_INVOKABLE void revealDestination();
  Q_INVOKABLE void openFullDiskAccessSettings();

  // What the controls write.
  Q_INVOKABLE void setBackupPassword(const QString& password);
  Q_INVOKABLE void setRememberBackupPassword(bool remember);
  Q_INVOKABLE void setKindIncluded(const QString& rawValue, bool included);
  Q_INVOKABLE void setExportTranscripts(bool wanted);
  Q_INVOKABLE void setDropTargeted(bool targeted);
  Q_INVOKABLE void setFocusBackupPassword(bool wanted);
  Q_INVOKABLE void dismissError();

 signals:
  // Some property of the state has a new value.
  void changed();

 private:
  using Then = std::function<void()>;
  // One for each backup that was chosen, cancelled when another one is: tells late answers from those for the
  // present one, and keeps questions that nobody asks any more from being put.
  using Choice = std::shared_ptr<CancellationToken>;

  template <typename Value>
  void set(Value ExportState::*property, std::type_identity_t<Value> value) {
    if (state_.*property == value) return;
    state_.*property = std::move(value);
    emit changed();
  }
  template <typename Work, typename Done>
  void inBackground(BackgroundWork::Lane lane, Work work, Done done) {
    work_.run(lane, this, std::move(work), std::move(done));
  }
  // For what is kept for later: passwords and preferences. Failures are ignored.
  void keepInOrder(std::function<void()> work);

  void refreshLibrary(const Then& then);
  void fillSizes(const Then& then);
  void chooseRememberedInLibrary(const Then& then);
  const DiscoveredBackup* listed(const std::optional<std::string>& path) const;

  void selectDiscovered(const DiscoveredBackup& backup, const Then& then);
  // A folder dropped or picked by hand, on whatever step the wizard is by then: becomes the chosen backup on the
  // first step. Does nothing during an unlock or an export.
  void startWith(const std::filesystem::path& folder);
  void setBackup(const std::filesystem::path& folder, const std::optional<BackupInfo>& knownInfo, const Then& then);
  void clearForNewBackup(const std::filesystem::path& url);
  void takeInspection(std::future<BackupInfo> info, const std::optional<BackupInfo>& knownInfo, const Choice& choice,
                      const Then& then);
  void loadStoredPassword(const Choice& choice, const Then& then);
  std::string passwordAccount() const;

  void takeScan(std::future<ScanResult> result, const CancellationToken& token,
                const std::optional<SecretBytes>& password);
  void keepOrForget(const SecretBytes& password);
  void refreshFreeSpace();
  void takeDestination(const std::filesystem::path& folder);
  void takeExport(std::future<ExportSummary> summary);

  void restoreBackup();
  void restoreDestination();
  void reopen(const std::filesystem::path& backup);
  std::optional<std::filesystem::path> resolved(const std::optional<Bytes>& bookmark) const;
  std::shared_ptr<ScopedAccess> accessWhileLooking(const std::optional<std::filesystem::path>& folder) const;
  void rememberBackup();
  void savePreferences();
  std::unique_ptr<ScopedAccess> startAccess(const std::filesystem::path& url) const;

  static CancellationCheck checkOf(std::shared_ptr<CancellationToken> token);
  FolderAnswer answering(void (ExportViewModel::*take)(const std::filesystem::path&));
  std::string translated(std::string_view english) const;
  void present(const std::exception& error);
  void clearError();

  PlatformServices services_;
  L10n texts_;
  BackgroundWork& work_;
  ExportState state_;
  Choice choice_ = std::make_shared<CancellationToken>();  // of the present backup
  std::unique_ptr<ScopedAccess> backupAccess_;
  std::unique_ptr<ScopedAccess> destinationAccess_;
  std::shared_ptr<CancellationToken> cancellation_;  // of the running scan or export
  std::shared_ptr<CancellationToken> lifetime_ = std::make_shared<CancellationToken>();
  std::filesystem::path preferencesURL_;
  ExportPreferences preferences_;
};
