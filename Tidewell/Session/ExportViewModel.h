#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <optional>

#include "Tidewell/Session/BackupChoice.h"
#include "Tidewell/Session/ChatScan.h"
#include "Tidewell/Session/DestinationChoice.h"
#include "Tidewell/Session/ExportRun.h"
#include "Tidewell/Session/ExportSession.h"
#include "Tidewell/Session/LibraryRefresh.h"
#include "Tidewell/Session/VerifyRun.h"

// The wizard behind its screens: holds the one state that they show and performs
// every action of the user by calling the core. Lives on the interface thread;
// slow calls run elsewhere, and their results are taken up only while they still
// answer what the user chose last. It may be destroyed while calls are under way.
class ExportViewModel : public QObject {
  Q_OBJECT

 public:
  using Setup = ExportSession::Setup;

  // `work` must outlive the controller.
  ExportViewModel(Setup setup, BackgroundWork& work);

  const ExportState& state() const { return session_.state(); }
  const PlatformServices& services() const { return session_.services(); }
  // The file in which the locations are remembered.
  const std::filesystem::path& preferencesURL() const { return session_.preferencesURL(); }

  // What the window does once, when it is first shown: looks for backups, then reopens what was used last;
  // with a folder, that one is the chosen backup.
  void startUp(const std::optional<std::filesystem::path>& backup = {});
  Q_INVOKABLE void refreshLibrary();
  // Somebody came back to the window: the list, or the space on the disk, may be another by now.
  Q_INVOKABLE void comeBack();
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
  // From the summary: exports once more, which copies what failed.
  Q_INVOKABLE void tryAgain();
  // From the refusal of another owner's archive: exports nevertheless, since that is the same person.
  Q_INVOKABLE void exportAsSamePerson();
  // From the summary: looks whether what was exported is whole.
  Q_INVOKABLE void verify();
  Q_INVOKABLE void cancelVerification();
  Q_INVOKABLE void exportAnother();
  Q_INVOKABLE void openArchive();
  Q_INVOKABLE void revealDestination();
  Q_INVOKABLE bool hasFullDiskAccessSettings() const;
  Q_INVOKABLE void openFullDiskAccessSettings();

  // Before a running export is ended by accident: the user is asked.
  Q_INVOKABLE void askToCancelExport();
  // Whether the window may close at once; otherwise the user is asked, and `closeConfirmed` may follow.
  Q_INVOKABLE bool mayClose();
  Q_INVOKABLE void keepExporting();
  Q_INVOKABLE void stopExporting();

  // What the controls write.
  Q_INVOKABLE void setBackupPassword(const QString& password);
  Q_INVOKABLE void setRememberBackupPassword(bool remember);
  Q_INVOKABLE void setKindIncluded(const QString& rawValue, bool included);
  Q_INVOKABLE void setExportTranscripts(bool wanted);
  Q_INVOKABLE void setExportMessageFiles(bool wanted);
  Q_INVOKABLE void setFirstDay(const QString& typed);
  Q_INVOKABLE void setLastDay(const QString& typed);
  // The list of chats, what is looked for in it, and its boxes; by a chat's JID, or all that the search leaves.
  Q_INVOKABLE void showChats(bool shown);
  Q_INVOKABLE void searchChats(const QString& typed);
  Q_INVOKABLE void setChatIncluded(const QString& jid, bool included);
  Q_INVOKABLE void setFoundChatsIncluded(bool included);
  Q_INVOKABLE void setDropTargeted(bool targeted);
  Q_INVOKABLE void setFocusBackupPassword(bool wanted);
  Q_INVOKABLE void dismissError();
  Q_INVOKABLE void dismissUnopenedPath();

 signals:
  // Some property of the state has a new value; several that changed together are told once.
  void changed();
  // The user wants the window closed, the export ended with it.
  void closeConfirmed();

 private:
  // A folder dropped or picked by hand, on whatever step the wizard is by then: becomes the chosen backup on the
  // first step. Does nothing during an unlock or an export.
  void startWith(const std::filesystem::path& folder);
  // The backup used last, when the list has it and none is chosen.
  void chooseRemembered(const std::function<void()>& then);
  void restoreBackup();
  void changeChats(const std::function<void(ChatChoice& choice)>& change);
  void open(const Workspace::Open& opener, const std::filesystem::path& place);

  ExportSession session_;
  LibraryRefresh library_{session_};
  BackupChoice backup_{session_};
  ChatScan scan_{session_};
  DestinationChoice destination_{session_};
  ExportRun export_{session_};
  VerifyRun verify_{session_};
};
