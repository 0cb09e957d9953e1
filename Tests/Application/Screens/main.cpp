#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>

// The window needs a platform; without another wish it is one that draws into memory.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QUICK_BACKEND", "software");
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(argc, argv);
  // As if a screen reader were there.
  QAccessible::setActive(true);
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Lorewick"));
  return RUN_ALL_TESTS();
}
