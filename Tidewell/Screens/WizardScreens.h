#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>

#include "Tidewell/Contents/BackupStepContent.h"
#include "Tidewell/Contents/DoneStepContent.h"
#include "Tidewell/Contents/OptionsStepContent.h"
#include "Tidewell/Contents/ProgressStepContent.h"
#include "Tidewell/Contents/WindowContent.h"
#include "Tidewell/Screens/BackupRows.h"
#include "Tidewell/Screens/ChatRows.h"
#include "Tidewell/Session/ExportViewModel.h"

// What the screens show: the controller's state as texts. Each screen's content
// is made anew when the state changes, and told only when it differs.
class WizardScreens : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(ExportViewModel* controller READ controller CONSTANT)
  Q_PROPERTY(WindowContent window READ window NOTIFY windowChanged)
  Q_PROPERTY(BackupStepContent backupStep READ backupStep NOTIFY backupStepChanged)
  Q_PROPERTY(BackupRows* backupRows READ backupRows CONSTANT)
  Q_PROPERTY(ChatRows* chatRows READ chatRows CONSTANT)
  Q_PROPERTY(OptionsStepContent optionsStep READ optionsStep NOTIFY optionsStepChanged)
  Q_PROPERTY(ProgressStepContent progressStep READ progressStep NOTIFY progressStepChanged)
  Q_PROPERTY(DoneStepContent doneStep READ doneStep NOTIFY doneStepChanged)

 public:
  // Both must outlive it.
  WizardScreens(ExportViewModel& controller, const L10n& texts);

  ExportViewModel* controller() const { return &controller_; }
  const WindowContent& window() const { return window_; }
  const BackupStepContent& backupStep() const { return backupStep_; }
  // The rows of the backup step.
  BackupRows* backupRows() { return &backupRows_; }
  // Those of the options step's list.
  ChatRows* chatRows() { return &chatRows_; }
  const OptionsStepContent& optionsStep() const { return optionsStep_; }
  const ProgressStepContent& progressStep() const { return progressStep_; }
  const DoneStepContent& doneStep() const { return doneStep_; }

  // Takes up that state; every change of the controller's comes in here.
  void show(const ExportState& state, Date now);

 signals:
  void windowChanged();
  void backupStepChanged();
  void optionsStepChanged();
  void progressStepChanged();
  void doneStepChanged();

 private:
  template <typename Content>
  void replace(Content& shown, const Content& made, void (WizardScreens::*changed)());

  ExportViewModel& controller_;
  const L10n& texts_;
  WindowContent window_;
  BackupStepContent backupStep_;
  BackupRows backupRows_;
  ChatRows chatRows_;
  OptionsStepContent optionsStep_;
  ProgressStepContent progressStep_;
  DoneStepContent doneStep_;
};
