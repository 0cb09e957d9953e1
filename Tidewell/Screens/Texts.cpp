#include "Tidewell/Screens/Texts.h"

#include "Tidewell/Screens/WizardEngine.h"

Texts* Texts::create(QQmlEngine* engine, QJSEngine*) { return WizardEngine::of(engine).texts(); }
