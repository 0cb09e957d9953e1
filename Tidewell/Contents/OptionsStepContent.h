#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include "Tidewell/Contents/ChatChoiceContent.h"
#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// One kind of media with its check box.
struct MediaKindContent {
  Q_GADGET
  Q_PROPERTY(QString rawValue MEMBER rawValue)
  Q_PROPERTY(QString title MEMBER title)
  Q_PROPERTY(QString count MEMBER count)
  Q_PROPERTY(QString size MEMBER size)
  Q_PROPERTY(QString accessibleName MEMBER accessibleName)
  Q_PROPERTY(bool included MEMBER included)

 public:
  QString rawValue;
  QString title;
  QString count;
  QString size;
  QString accessibleName;  // the whole row for those who hear it: "Photos, 87 files, 127.0 kB"
  bool included = false;

  bool operator==(const MediaKindContent&) const = default;
};

// Where the export goes, and whether it fits.
struct DestinationContent {
  Q_GADGET
  Q_PROPERTY(bool isChosen MEMBER isChosen)
  Q_PROPERTY(QString path MEMBER path)
  Q_PROPERTY(QString willCopy MEMBER willCopy)
  Q_PROPERTY(QString freeSpace MEMBER freeSpace)
  Q_PROPERTY(QString status MEMBER status)
  Q_PROPERTY(bool isEnough MEMBER isEnough)

 public:
  bool isChosen = false;
  QString path;  // empty when none is chosen
  QString willCopy;
  QString freeSpace;  // empty when it is not known
  QString status;     // empty when it is not known whether the export fits
  bool isEnough = true;

  static DestinationContent of(const ExportState& state, const L10n& texts);

  bool operator==(const DestinationContent&) const = default;
};

// The second step: what the backup holds and what of it is wanted.
struct OptionsStepContent {
  Q_GADGET
  Q_PROPERTY(QString device MEMBER device)
  Q_PROPERTY(QString backedUp MEMBER backedUp)
  Q_PROPERTY(QString chats MEMBER chats)
  Q_PROPERTY(QString media MEMBER media)
  Q_PROPERTY(bool isEmpty MEMBER isEmpty)
  Q_PROPERTY(QStringList warnings MEMBER warnings)
  Q_PROPERTY(QList<MediaKindContent> kinds MEMBER kinds)
  Q_PROPERTY(bool exportTranscripts MEMBER exportTranscripts)
  Q_PROPERTY(bool exportMessageFiles MEMBER exportMessageFiles)
  Q_PROPERTY(ChatChoiceContent chatChoice MEMBER chatChoice)
  Q_PROPERTY(DestinationContent destination MEMBER destination)

 public:
  QString device;
  QString backedUp;
  QString chats;
  QString media;
  bool isEmpty = false;  // the scan found nothing
  QStringList warnings;  // what the scan may have missed
  QList<MediaKindContent> kinds;
  bool exportTranscripts = true;
  bool exportMessageFiles = false;  // asked for only together with transcripts
  ChatChoiceContent chatChoice;
  DestinationContent destination;

  static OptionsStepContent of(const ExportState& state, const L10n& texts);

  bool operator==(const OptionsStepContent&) const = default;
};
