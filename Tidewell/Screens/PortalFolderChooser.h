#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <functional>

#include "Tidewell/Services/PlatformServices.h"

// The desktop's own folder dialog, by way of its portal (org.freedesktop.portal.FileChooser).
// Nothing here waits. One dialog at a time: a new question takes the one before away.
class PortalFolderChooser : public QObject {
  Q_OBJECT

 public:
  // What becomes of a question: `opened` and later `answered`, or `absent` alone, where no portal
  // takes it. None of it is called once it was cancelled.
  struct Outcome {
    std::function<void()> opened;
    FolderAnswer answered;
    std::function<void()> absent;
  };

  void ask(const FolderRequest& request, Outcome outcome);
  // Closes the dialog; nobody is told.
  void cancel();

 private slots:
  void take(unsigned response, const QVariantMap& results);

 private:
  void listen(const QString& dialog, bool listens);
  void takeDialog(const QString& dialog);
  void end();

  QString dialog_;  // the request's object on the bus; empty without a question
  Outcome outcome_;
};
