#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/FolderBrowser.h"

// The own folder chooser: the folder shown and what is in it.
struct FolderChooserContent {
  Q_GADGET
  Q_PROPERTY(QString name MEMBER name)
  Q_PROPERTY(QString path MEMBER path)
  Q_PROPERTY(QStringList folders MEMBER folders)
  Q_PROPERTY(int current MEMBER current)
  Q_PROPERTY(QString note MEMBER note)
  Q_PROPERTY(QStringList places MEMBER places)
  Q_PROPERTY(QStringList placeSymbols MEMBER placeSymbols)
  Q_PROPERTY(int place MEMBER place)
  Q_PROPERTY(bool canGoUp MEMBER canGoUp)
  Q_PROPERTY(bool isReading MEMBER isReading)
  Q_PROPERTY(QString pathFault MEMBER pathFault)
  Q_PROPERTY(QString nameFault MEMBER nameFault)

 public:
  QString name;  // of the folder shown; empty until there is one
  QString path;
  QStringList folders;
  int current = 0;  // the row that keys go on from
  QString note;     // why there are no folders to see; empty when there are
  QStringList places;
  QStringList placeSymbols;  // one for each place
  int place = -1;            // the one that is shown; -1: none
  bool canGoUp = false;
  bool isReading = false;
  QString pathFault;
  QString nameFault;

  static FolderChooserContent of(const FolderBrowserState& state, const L10n& texts);

  bool operator==(const FolderChooserContent&) const = default;
};
