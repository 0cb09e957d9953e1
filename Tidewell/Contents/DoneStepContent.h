#pragma once

#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// The summary of a finished export.
struct DoneStepContent {
  Q_GADGET
  Q_PROPERTY(QString destination MEMBER destination)
  Q_PROPERTY(QString summary MEMBER summary)
  Q_PROPERTY(bool hasFailures MEMBER hasFailures)

 public:
  QString destination;
  QString summary;
  bool hasFailures = false;

  static DoneStepContent of(const ExportState& state, const L10n& texts);

  bool operator==(const DoneStepContent&) const = default;
};
