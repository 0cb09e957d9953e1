#pragma once

#include <QObject>
#include <QString>

#include "Tidewell/Services/L10n.h"
#include "Tidewell/Session/ExportState.h"

// The third step: how far the export has come.
struct ProgressStepContent {
  Q_GADGET
  Q_PROPERTY(QString title MEMBER title)
  Q_PROPERTY(bool isIndeterminate MEMBER isIndeterminate)
  Q_PROPERTY(double fraction MEMBER fraction)
  Q_PROPERTY(QString count MEMBER count)
  Q_PROPERTY(QString fileName MEMBER fileName)
  Q_PROPERTY(QString remaining MEMBER remaining)
  Q_PROPERTY(QString announcement MEMBER announcement)

 public:
  QString title;
  bool isIndeterminate = true;
  double fraction = 0;  // 0 to 1
  QString count;        // "12 of 340"; empty while the amount of work is not known
  QString fileName;
  QString remaining;  // the time left; empty while it cannot be told
  // For those who hear it: "Copying media, 25%" from each full quarter of a phase on; empty before the first.
  QString announcement;

  static ProgressStepContent of(const ExportState& state, const L10n& texts, Date now);

  bool operator==(const ProgressStepContent&) const = default;
};
