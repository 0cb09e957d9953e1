#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QUrl>

#include "Tidewell/Services/PlatformServices.h"

// The question for a folder that the window is to ask, and the way back of its
// answer. Only one is open at a time: a new one cancels the one before.
class FolderPrompt : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString message READ message NOTIFY changed)
  Q_PROPERTY(QString confirmButton READ confirmButton NOTIFY changed)
  Q_PROPERTY(QUrl initialFolder READ initialFolder NOTIFY changed)
  Q_PROPERTY(bool canCreateFolders READ canCreateFolders NOTIFY changed)

 public:
  void ask(const FolderRequest& request, FolderAnswer answer);

  bool isOpen() const { return answer_ != nullptr; }
  QString title() const { return QString::fromStdString(request_.title); }
  QString message() const { return QString::fromStdString(request_.message); }
  QString confirmButton() const { return QString::fromStdString(request_.confirmButton); }
  // The nearest folder that exists, since dialogs go astray in one that does not.
  QUrl initialFolder() const;
  bool canCreateFolders() const { return request_.canCreateFolders; }

  Q_INVOKABLE void choose(const QUrl& folder);
  Q_INVOKABLE void cancel();

 signals:
  void changed();

 private:
  void answer(const std::optional<std::filesystem::path>& folder);

  FolderRequest request_;
  FolderAnswer answer_;
};
