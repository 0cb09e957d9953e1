#include <gtest/gtest.h>

#include <QAccessible>
#include <QGuiApplication>

#include "Tests/Application/Screens/MemoryPlatform.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const MemoryPlatform platform;
  QGuiApplication application(argc, argv);
  // As if a screen reader were there.
  QAccessible::setActive(true);
  QGuiApplication::setApplicationDisplayName(QStringLiteral("Lorewick"));
  return RUN_ALL_TESTS();
}
