#include "Tests/Application/Screens/ScreenReader.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEventLoop>
#include <stdexcept>

namespace WindowTest {

namespace {

constexpr char accessible[] = "org.a11y.atspi.Accessible";
constexpr char registry[] = "org.a11y.atspi.Registry";
constexpr char events[] = "org.a11y.atspi.Event.Object";
constexpr char connectionName[] = "a screen reader";
// Of the bus's lists of states and roles.
constexpr int showingState = 25;
constexpr uint passwordRole = 40;
constexpr int deepest = 40;

// The bus has an address of its own, which the session's bus knows.
QString addressOfBus() {
  QDBusMessage question = QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
  const QDBusMessage answer = QDBusConnection::sessionBus().call(question);
  if (answer.type() != QDBusMessage::ReplyMessage) throw std::runtime_error("There is no accessibility bus.");
  return answer.arguments().at(0).toString();
}

}  // namespace

struct ScreenReader::Place {
  QString service;
  QString path;
};

const Spoken* Spoken::find(const QString& wantedRole, const QString& wantedName) const {
  if (isShowing && role == wantedRole && (wantedName.isEmpty() || name == wantedName)) return this;
  for (const Spoken& child : children) {
    if (const Spoken* found = child.find(wantedRole, wantedName)) return found;
  }
  return nullptr;
}

QString Spoken::everything() const {
  QString all = role + ": " + name + "\n" + description + "\n" + text + "\n";
  for (const Spoken& child : children) all += child.everything();
  return all;
}

ScreenReader::ScreenReader() : bus_(QDBusConnection::connectToBus(addressOfBus(), connectionName)) {
  const Place listeners{registry, "/org/a11y/atspi/registry"};
  for (const char* event : {"object:", "focus:", "window:"})
    ask(listeners, registry, "RegisterEvent", {QString(event)});
  bus_.connect({}, {}, events, "StateChanged", this, SLOT(hearState(QDBusMessage)));
  for (const char* event : {"PropertyChange", "TextChanged", "TextCaretMoved", "ChildrenChanged"}) {
    bus_.connect({}, {}, events, event, this, SLOT(hear(QDBusMessage)));
  }
}

ScreenReader::~ScreenReader() { QDBusConnection::disconnectFromBus(connectionName); }

// The window is in this very program, so its event loop must run on.
QDBusMessage ScreenReader::ask(const Place& place, const char* interface, const char* method,
                               const QVariantList& arguments) {
  QDBusMessage question = QDBusMessage::createMethodCall(place.service, place.path, interface, method);
  question.setArguments(arguments);
  QDBusPendingCallWatcher answer(bus_.asyncCall(question, 5'000));
  QEventLoop loop;
  connect(&answer, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
  if (!answer.isFinished()) loop.exec();
  return answer.reply();
}

QVariant ScreenReader::property(const Place& place, const char* interface, const char* name) {
  const QDBusMessage answer = ask(place, "org.freedesktop.DBus.Properties", "Get", {QString(interface), QString(name)});
  if (answer.type() != QDBusMessage::ReplyMessage) return {};
  return answer.arguments().at(0).value<QDBusVariant>().variant();
}

std::vector<ScreenReader::Place> ScreenReader::children(const Place& place) {
  std::vector<Place> places;
  const QDBusMessage answer = ask(place, accessible, "GetChildren");
  if (answer.type() != QDBusMessage::ReplyMessage) return places;
  const auto list = answer.arguments().at(0).value<QDBusArgument>();
  list.beginArray();
  while (!list.atEnd()) {
    Place child;
    QDBusObjectPath path;
    list.beginStructure();
    list >> child.service >> path;
    list.endStructure();
    child.path = path.path();
    places.push_back(child);
  }
  list.endArray();
  return places;
}

Spoken ScreenReader::read(const Place& place, int depth) {
  if (depth > deepest) throw std::runtime_error("The window has no end.");
  Spoken spoken{.role = ask(place, accessible, "GetRoleName").arguments().value(0).toString(),
                .name = property(place, accessible, "Name").toString(),
                .description = property(place, accessible, "Description").toString()};
  const auto states = qdbus_cast<QList<uint>>(ask(place, accessible, "GetState").arguments().value(0));
  spoken.isShowing = !states.isEmpty() && (states[0] & (1U << showingState)) != 0;
  // Qt names the role of a password field as that of any text.
  const uint role = ask(place, accessible, "GetRole").arguments().value(0).toUInt();
  if (role == passwordRole) spoken.role = "password text";
  const auto interfaces = qdbus_cast<QStringList>(ask(place, accessible, "GetInterfaces").arguments().value(0));
  if (interfaces.contains("org.a11y.atspi.Text")) {
    spoken.text = ask(place, "org.a11y.atspi.Text", "GetText", {0, -1}).arguments().value(0).toString();
  }
  if (constexpr char value[] = "org.a11y.atspi.Value"; interfaces.contains(value)) {
    spoken.value = {.current = property(place, value, "CurrentValue").toDouble(),
                    .minimum = property(place, value, "MinimumValue").toDouble(),
                    .maximum = property(place, value, "MaximumValue").toDouble()};
  }
  for (const Place& child : children(place)) spoken.children.push_back(read(child, depth + 1));
  return spoken;
}

bool ScreenReader::hasWindow() {
  const std::vector<Place> programs = children({registry, "/org/a11y/atspi/accessible/root"});
  return !programs.empty() && !children(programs.front()).empty();
}

Spoken ScreenReader::read() {
  const std::vector<Place> programs = children({registry, "/org/a11y/atspi/accessible/root"});
  if (programs.size() != 1) throw std::runtime_error("Other programs are on the bus.");
  return read(programs.front(), 0);
}

void ScreenReader::hearState(const QDBusMessage& event) {
  const QVariantList what = event.arguments();
  if (what.value(0).toString() != "showing" || what.value(1).toInt() != 1) return;
  const Place place{event.service(), event.path()};
  if (ask(place, accessible, "GetRoleName").arguments().value(0).toString() != "notification") return;
  notices.append(property(place, accessible, "Name").toString());
}

void ScreenReader::hear(const QDBusMessage& event) {
  const QVariantList what = event.arguments();
  if (what.value(0).toString() == "accessible-value") ++changedValues;
  heard += event.member() + ' ' + what.value(0).toString() + ' ' +
           what.value(3).value<QDBusVariant>().variant().toString() + '\n';
}

}  // namespace WindowTest
