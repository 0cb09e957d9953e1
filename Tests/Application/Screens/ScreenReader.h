#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

// The window as a screen reader has it: over the accessibility bus, from the registry down.
// Needs that bus, and the event loop runs while it asks.
namespace WindowTest {

// What a progress bar, for one, stands at.
struct SpokenValue {
  double current = 0;
  double minimum = 0;
  double maximum = 0;
};

// One part of the window, with all that can be had of it.
struct Spoken {
  QString role;  // as the bus names it: "push button"
  QString name;
  QString description;
  QString text;                      // of its text interface; empty without one
  std::optional<SpokenValue> value;  // of its value interface
  bool isShowing = false;
  std::vector<Spoken> children;

  // The first part that shows and has this role, and this name unless that is empty; null without one.
  const Spoken* find(const QString& wantedRole, const QString& wantedName = {}) const;
  // Every name, description and text in it, one a line.
  QString everything() const;
};

class ScreenReader : public QObject {
  Q_OBJECT

 public:
  // Asks to be told of what shows and of values that change.
  ScreenReader();
  ~ScreenReader() override;

  // Whether this program's window has come to the bus.
  bool hasWindow();
  Spoken read();

  // Whatever was said without being asked, one event a line.
  QString heard;
  // The names of the notices that have come up, in order.
  QStringList notices;
  // How often a value has changed.
  int changedValues = 0;

 private slots:
  void hearState(const QDBusMessage& event);
  void hear(const QDBusMessage& event);

 private:
  struct Place;
  QDBusMessage ask(const Place& place, const char* interface, const char* method, const QVariantList& arguments = {});
  QVariant property(const Place& place, const char* interface, const char* name);
  std::vector<Place> children(const Place& place);
  Spoken read(const Place& place, int depth);

  QDBusConnection bus_;
};

}  // namespace WindowTest
