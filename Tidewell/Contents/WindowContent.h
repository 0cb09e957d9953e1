#pragma once

#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// What stands around the steps: the header, the footer, the sheet and the alert.
struct WindowContent {
  Q_GADGET
  Q_PROPERTY(int step MEMBER step)
  Q_PROPERTY(QString stepCaption MEMBER stepCaption)
  Q_PROPERTY(QString busyText MEMBER busyText)
  Q_PROPERTY(QString hint MEMBER hint)
  Q_PROPERTY(QString continueHint MEMBER continueHint)
  Q_PROPERTY(bool hintOpensFolderPicker MEMBER hintOpensFolderPicker)
  Q_PROPERTY(bool canContinue MEMBER canContinue)
  Q_PROPERTY(bool canExport MEMBER canExport)
  Q_PROPERTY(bool isUnlocking MEMBER isUnlocking)
  Q_PROPERTY(bool isCancellingUnlock MEMBER isCancellingUnlock)
  Q_PROPERTY(bool dropTargeted MEMBER dropTargeted)
  Q_PROPERTY(bool canOpenArchive MEMBER canOpenArchive)
  Q_PROPERTY(bool hasError MEMBER hasError)
  Q_PROPERTY(QString errorText MEMBER errorText)
  Q_PROPERTY(bool offersSamePerson MEMBER offersSamePerson)
  Q_PROPERTY(bool asksToStop MEMBER asksToStop)
  Q_PROPERTY(QString unopenedPath MEMBER unopenedPath)

 public:
  int step = 1;  // the raw value of WizardStep
  QString stepCaption;
  QString busyText;      // empty when nothing is being read
  QString hint;          // why the export cannot start; empty without one
  QString continueHint;  // why the first step cannot be left; empty when it can
  bool hintOpensFolderPicker = false;
  bool canContinue = false;
  bool canExport = false;
  bool isUnlocking = false;
  bool isCancellingUnlock = false;
  bool dropTargeted = false;
  bool canOpenArchive = false;
  bool hasError = false;
  QString errorText;              // the message and, after an empty line, what to do about it
  bool offersSamePerson = false;  // whether the error may be none: the archive's owner has another number now
  bool asksToStop = false;        // whether the running export is to be ended
  QString unopenedPath;           // what the desktop could not open; empty without one

  static WindowContent of(const ExportState& state, const L10n& texts);

  bool operator==(const WindowContent&) const = default;
};
