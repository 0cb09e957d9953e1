#pragma once

#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <optional>

#include "Tidewell/Screens/Appearance.h"

// Keeps an appearance as the desktop's settings have it: those of its portal
// (org.freedesktop.portal.Settings) where there is one, else the colours that Qt
// was given. Asks without waiting; a desktop that does not answer changes nothing.
class DesktopAppearance : public QObject {
  Q_OBJECT

 public:
  // `appearance` must outlive it.
  explicit DesktopAppearance(Appearance& appearance);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private slots:
  void takeChange(const QDBusMessage& change);

 private:
  void takeSetting(const QString& group, const QString& key, const QDBusVariant& value);
  void ask(const QString& group, const QString& key);
  void update();

  Appearance& appearance_;
  std::optional<bool> prefersDark_;  // absent: the desktop has no preference
};
