#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// One backup of the list.
struct BackupRowContent {
  Q_GADGET
  Q_PROPERTY(QString id MEMBER id)
  Q_PROPERTY(QString name MEMBER name)
  Q_PROPERTY(QString detail MEMBER detail)
  Q_PROPERTY(QString note MEMBER note)
  Q_PROPERTY(bool selected MEMBER selected)
  Q_PROPERTY(bool asksPassword MEMBER asksPassword)

 public:
  QString id;
  QString name;
  QString detail;  // system, date and size, as far as they are known
  QString note;    // that it is encrypted; else empty
  bool selected = false;
  bool asksPassword = false;  // it is selected, was read, and is encrypted

  static BackupRowContent of(const DiscoveredBackup& backup, bool selected, const L10n& texts);

  bool operator==(const BackupRowContent&) const = default;
};

// The first step: which backups there are, and which one is chosen.
struct BackupStepContent {
  Q_GADGET
  Q_PROPERTY(bool isLooking MEMBER isLooking)
  Q_PROPERTY(bool isAccessDenied MEMBER isAccessDenied)
  Q_PROPERTY(bool listsBackups MEMBER listsBackups)
  Q_PROPERTY(bool showsHelp MEMBER showsHelp)
  Q_PROPERTY(int chosenRow MEMBER chosenRow)
  Q_PROPERTY(bool isInspecting MEMBER isInspecting)
  Q_PROPERTY(bool hasStoredPassword MEMBER hasStoredPassword)
  Q_PROPERTY(bool rememberPassword MEMBER rememberPassword)
  Q_PROPERTY(bool hasTypedPassword MEMBER hasTypedPassword)
  Q_PROPERTY(bool wantsPasswordFocus MEMBER wantsPasswordFocus)
  Q_PROPERTY(bool canRemember MEMBER canRemember)
  Q_PROPERTY(QString unreadable MEMBER unreadable)
  Q_PROPERTY(QString unreadableReasons MEMBER unreadableReasons)

 public:
  bool isLooking = false;  // for backups, with none to show meanwhile
  bool isAccessDenied = false;
  bool listsBackups = false;  // backups were found on this computer
  bool showsHelp = false;     // there is no backup to show at all
  // In the library's order; before them the chosen backup when it is not in the library.
  QList<BackupRowContent> rows;
  int chosenRow = -1;         // -1: none
  bool isInspecting = false;  // the chosen backup is being read
  bool hasStoredPassword = false;
  bool rememberPassword = false;
  bool hasTypedPassword = false;  // false: the field is to be empty
  bool wantsPasswordFocus = false;
  bool canRemember = true;    // there is a store for passwords
  QString unreadable;         // how many folders are no readable backup; empty when all are
  QString unreadableReasons;  // a line for each of them

  static BackupStepContent of(const ExportState& state, const L10n& texts);

  bool operator==(const BackupStepContent&) const = default;
};
