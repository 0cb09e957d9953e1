#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// One chat of the list, with its check box.
struct ChatRowContent {
  Q_GADGET
  Q_PROPERTY(QString id MEMBER id)
  Q_PROPERTY(QString name MEMBER name)
  Q_PROPERTY(QString size MEMBER size)
  Q_PROPERTY(QString accessibleName MEMBER accessibleName)
  Q_PROPERTY(bool included MEMBER included)

 public:
  QString id;              // the JID
  QString name;            // as the folder of the export will be called
  QString size;            // "1,204 messages · 3.4 MB"
  QString accessibleName;  // the whole row for those who hear it
  bool included = false;

  // Those that the search leaves, in the scan's order; none while the list is not shown.
  static QList<ChatRowContent> listOf(const ExportState& state, const L10n& texts);

  bool operator==(const ChatRowContent&) const = default;
};

// Which chats and days are wanted.
struct ChatChoiceContent {
  Q_GADGET
  Q_PROPERTY(QString chats MEMBER chats)
  Q_PROPERTY(QString size MEMBER size)
  Q_PROPERTY(QString fault MEMBER fault)
  Q_PROPERTY(QString firstDay MEMBER firstDay)
  Q_PROPERTY(QString lastDay MEMBER lastDay)
  Q_PROPERTY(bool canChoose MEMBER canChoose)
  Q_PROPERTY(bool isListShown MEMBER isListShown)
  Q_PROPERTY(bool foundNone MEMBER foundNone)

 public:
  QString chats;     // "All 214", "3 of 214"; empty when there are none
  QString size;      // of the media in the chosen chats that are of a chosen kind
  QString fault;     // of the days; empty when they are right
  QString firstDay;  // as it was typed
  QString lastDay;
  bool canChoose = false;  // there are chats
  bool isListShown = false;
  bool foundNone = false;  // the search fits no chat

  static ChatChoiceContent of(const ExportState& state, const L10n& texts);

  bool operator==(const ChatChoiceContent&) const = default;
};
