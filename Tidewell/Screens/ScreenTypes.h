#pragma once

#include <QtQml/qqml.h>

#include "Tidewell/Contents/BackupStepContent.h"
#include "Tidewell/Contents/DoneStepContent.h"
#include "Tidewell/Contents/FolderChooserContent.h"
#include "Tidewell/Contents/OptionsStepContent.h"
#include "Tidewell/Contents/ProgressStepContent.h"
#include "Tidewell/Contents/WindowContent.h"
#include "Tidewell/Session/ExportViewModel.h"

// The names by which the screens know the controller and the contents, which
// themselves know nothing of Qt Quick.

struct ExportViewModelType {
  Q_GADGET
  QML_FOREIGN(ExportViewModel)
  QML_NAMED_ELEMENT(ExportViewModel)
  QML_UNCREATABLE("made by the application")
};

struct WindowContentType {
  Q_GADGET
  QML_FOREIGN(WindowContent)
  QML_VALUE_TYPE(windowContent)
};

struct BackupRowContentType {
  Q_GADGET
  QML_FOREIGN(BackupRowContent)
  QML_VALUE_TYPE(backupRowContent)
};

struct BackupStepContentType {
  Q_GADGET
  QML_FOREIGN(BackupStepContent)
  QML_VALUE_TYPE(backupStepContent)
};

struct ChatRowContentType {
  Q_GADGET
  QML_FOREIGN(ChatRowContent)
  QML_VALUE_TYPE(chatRowContent)
};

struct ChatChoiceContentType {
  Q_GADGET
  QML_FOREIGN(ChatChoiceContent)
  QML_VALUE_TYPE(chatChoiceContent)
};

struct MediaKindContentType {
  Q_GADGET
  QML_FOREIGN(MediaKindContent)
  QML_VALUE_TYPE(mediaKindContent)
};

struct DestinationContentType {
  Q_GADGET
  QML_FOREIGN(DestinationContent)
  QML_VALUE_TYPE(destinationContent)
};

struct FolderChooserContentType {
  Q_GADGET
  QML_FOREIGN(FolderChooserContent)
  QML_VALUE_TYPE(folderChooserContent)
};

struct OptionsStepContentType {
  Q_GADGET
  QML_FOREIGN(OptionsStepContent)
  QML_VALUE_TYPE(optionsStepContent)
};

struct ProgressStepContentType {
  Q_GADGET
  QML_FOREIGN(ProgressStepContent)
  QML_VALUE_TYPE(progressStepContent)
};

struct FailureContentType {
  Q_GADGET
  QML_FOREIGN(FailureContent)
  QML_VALUE_TYPE(failureContent)
};

struct DoneStepContentType {
  Q_GADGET
  QML_FOREIGN(DoneStepContent)
  QML_VALUE_TYPE(doneStepContent)
};
