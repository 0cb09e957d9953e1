#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// A file that is not in the export although it was asked for.
struct FailureContent {
  Q_GADGET
  Q_PROPERTY(QString name MEMBER name)
  Q_PROPERTY(QString chat MEMBER chat)
  Q_PROPERTY(QString reason MEMBER reason)

 public:
  QString name;
  QString chat;
  QString reason;

  bool operator==(const FailureContent&) const = default;
};

// The summary of a finished export.
struct DoneStepContent {
  Q_GADGET
  Q_PROPERTY(QString destination MEMBER destination)
  Q_PROPERTY(QString summary MEMBER summary)
  Q_PROPERTY(bool hasFailures MEMBER hasFailures)
  Q_PROPERTY(bool hasArchive MEMBER hasArchive)
  Q_PROPERTY(bool canTryAgain MEMBER canTryAgain)
  Q_PROPERTY(QString headline MEMBER headline)
  Q_PROPERTY(QList<FailureContent> failures MEMBER failures)
  Q_PROPERTY(QString moreFailures MEMBER moreFailures)
  Q_PROPERTY(QString failureList MEMBER failureList)
  Q_PROPERTY(QStringList warnings MEMBER warnings)
  Q_PROPERTY(bool canVerify MEMBER canVerify)
  Q_PROPERTY(bool isVerifying MEMBER isVerifying)
  Q_PROPERTY(QString verdict MEMBER verdict)
  Q_PROPERTY(QStringList findings MEMBER findings)
  Q_PROPERTY(QString moreFindings MEMBER moreFindings)
  Q_PROPERTY(QString findingList MEMBER findingList)

 public:
  // Of the failures or findings that are shown; a list of more helps nobody.
  static constexpr qsizetype mostRows = 1000;

  QString destination;
  QString summary;
  bool hasFailures = false;
  bool hasArchive = false;   // there is a page to open
  bool canTryAgain = false;  // the same export once more
  QString headline;          // what went wrong most; empty when nothing did
  QList<FailureContent> failures;
  QString moreFailures;  // how many are not shown; empty when all are
  QString failureList;   // those that are shown, a line for each, to be copied
  QStringList warnings;
  bool canVerify = false;
  bool isVerifying = false;
  QString verdict;       // what the verification says in a sentence; empty before
  QStringList findings;  // sentences
  QString moreFindings;  // how many are not shown; empty when all are
  QString findingList;   // those that are shown, a line for each, to be copied

  static DoneStepContent of(const ExportState& state, const L10n& texts);

  bool operator==(const DoneStepContent&) const = default;
};
