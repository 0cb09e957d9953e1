#include "Tests/Application/Screens/Console.h"

#include <QString>
#include <QtGlobal>
#include <mutex>

namespace {

std::mutex lock;
std::vector<std::string> heard;
QtMessageHandler before = nullptr;

void listen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type == QtDebugMsg || type == QtInfoMsg) return before(type, context, message);
  const std::lock_guard guard(lock);
  heard.push_back(message.toStdString());
}

}  // namespace

Console::Console() {
  heard.clear();
  before = qInstallMessageHandler(listen);
}

Console::~Console() { qInstallMessageHandler(before); }

const std::vector<std::string>& Console::messages() const { return heard; }
