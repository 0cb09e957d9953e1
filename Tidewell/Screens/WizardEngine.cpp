#include "Tidewell/Screens/WizardEngine.h"

#include <QFont>
#include <QFontInfo>
#include <QGuiApplication>
#include <QQuickStyle>
#include <QQuickWindow>

#include "Tidewell/Screens/Appearance.h"
#include "Tidewell/Screens/FolderPrompt.h"
#include "Tidewell/Screens/ProgressAccess.h"
#include "Tidewell/Screens/SecretAccess.h"
#include "Tidewell/Screens/SymbolProvider.h"
#include "Tidewell/Screens/WizardScreens.h"
#include "TidewellCore/Platform/Precondition.h"

// Generated. Naming it keeps the linker from leaving out the screens' types, which nothing else asks for.
void qml_register_types_Tidewell_Screens();

namespace {

// Where no desktop has chosen a font, Qt is left with one made for terminals of
// long ago; any of these reads better.
QFont readable(QFont font) {
  if (!QFontInfo(font).family().startsWith(QStringLiteral("DejaVu"))) return font;
  font.setFamilies({QStringLiteral("Inter"), QStringLiteral("Cantarell"), QStringLiteral("Noto Sans"),
                    QStringLiteral("Liberation Sans"), font.family()});
  return font;
}

// Holds for the whole process, and must be done before anything is loaded.
void chooseLooks(const L10n& texts) {
  // Once, since it cannot change any more when a window was open.
  [[maybe_unused]] static const bool isStyled = (QQuickStyle::setStyle(QStringLiteral("Basic")), true);
  QGuiApplication::setFont(readable(QGuiApplication::font()));
  QGuiApplication::setLayoutDirection(texts.speaksRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
}

}  // namespace

WizardEngine::WizardEngine(const Parts& parts) : texts_(parts.texts), appearance_(parts.appearance) {
  [[maybe_unused]] void (*const volatile keepTypes)() = &qml_register_types_Tidewell_Screens;
  chooseLooks(parts.texts);
  ProgressAccess::install();
  SecretAccess::install();
  // They live in this house, not on the engine's heap.
  setObjectOwnership(&texts_, CppOwnership);
  setObjectOwnership(&appearance_, CppOwnership);
  addImageProvider(QStringLiteral("symbol"), new SymbolProvider);
  addImportPath(QStringLiteral("qrc:/qt/qml"));
  setInitialProperties({{QStringLiteral("screens"), QVariant::fromValue(&parts.screens)},
                        {QStringLiteral("folders"), QVariant::fromValue(&parts.folders)}});
  load(QStringLiteral("qrc:/qt/qml/Tidewell/Screens/Main.qml"));
}

WizardEngine& WizardEngine::of(QQmlEngine* engine) {
  auto* wizard = qobject_cast<WizardEngine*>(engine);
  precondition(wizard != nullptr, "the screens run in a WizardEngine");
  return *wizard;
}

QQuickWindow* WizardEngine::window() const {
  return rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(rootObjects().first());
}
