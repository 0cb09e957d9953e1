#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QStringListModel>
#include <filesystem>
#include <optional>

#include "Tidewell/Contents/FolderChooserContent.h"
#include "Tidewell/Screens/PortalFolderChooser.h"
#include "Tidewell/Services/PlatformServices.h"

// The question for a folder and the way back of its answer: asked by the desktop's own
// dialog where there is one, else by ours within the window. Only one is open at a time: a
// new one cancels the one before.
class FolderPrompt : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")
  Q_PROPERTY(bool isInWindow READ isInWindow NOTIFY changed)
  Q_PROPERTY(bool isOnDesktop READ isOnDesktop NOTIFY changed)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString message READ message NOTIFY changed)
  Q_PROPERTY(QString confirmButton READ confirmButton NOTIFY changed)
  Q_PROPERTY(bool canCreateFolders READ canCreateFolders NOTIFY changed)
  Q_PROPERTY(FolderChooserContent content READ content NOTIFY changed)
  // The folders and the places of `content` for views, told of only when they are others.
  Q_PROPERTY(QAbstractItemModel* folderRows READ folderRows CONSTANT)
  Q_PROPERTY(QAbstractItemModel* placeRows READ placeRows CONSTANT)

 public:
  struct Parts {
    BackgroundWork& work;
    const L10n& texts;
    std::filesystem::path home;
    bool asksDesktop = false;
  };
  // `work` and `texts` must outlive it.
  explicit FolderPrompt(const Parts& parts);

  void ask(const FolderRequest& request, FolderAnswer answer);
  // The chooser in the window with that state, for pictures of it; nobody is answered.
  void show(const FolderRequest& request, const FolderBrowserState& state);

  bool isOpen() const { return answer_ != nullptr; }
  bool isInWindow() const { return isOpen() && place_ == Place::window; }
  bool isOnDesktop() const { return isOpen() && place_ == Place::desktop; }
  QString title() const { return QString::fromStdString(request_.title); }
  QString message() const { return QString::fromStdString(request_.message); }
  QString confirmButton() const { return QString::fromStdString(request_.confirmButton); }
  bool canCreateFolders() const { return request_.canCreateFolders; }
  FolderChooserContent content() const { return content_; }
  QAbstractItemModel* folderRows() { return &folderRows_; }
  QAbstractItemModel* placeRows() { return &placeRows_; }

  // What the chooser in the window does; see FolderBrowser.
  Q_INVOKABLE void enter(int row) { browser_.enter(static_cast<std::size_t>(row)); }
  Q_INVOKABLE void goUp() { browser_.goUp(); }
  Q_INVOKABLE void goToPlace(int place) { browser_.goToPlace(static_cast<std::size_t>(place)); }
  Q_INVOKABLE void goTo(const QString& path);
  Q_INVOKABLE void create(const QString& name);
  Q_INVOKABLE void forgetNameFault() { browser_.forgetNameFault(); }
  Q_INVOKABLE void choose() { browser_.choose(); }
  Q_INVOKABLE void cancel() { answer(std::nullopt); }
  // The row that those letters mean when they are typed at `current`; -1 without one.
  Q_INVOKABLE int rowNamed(const QString& typed, int current) const;

 signals:
  void changed();

 private:
  enum class Place { nowhere, window, desktop };

  void askDesktop();
  void open(Place place);
  void answer(const std::optional<std::filesystem::path>& folder);
  void update(const FolderBrowserState& state);

  BackgroundWork& work_;
  const L10n& texts_;
  const bool asksDesktop_;
  FolderBrowser browser_;
  PortalFolderChooser portal_;
  FolderRequest request_;
  FolderAnswer answer_;
  int question_ = 0;  // counts them
  Place place_ = Place::nowhere;
  FolderChooserContent content_;
  QStringListModel folderRows_;
  QStringListModel placeRows_;
};
