#include "Tidewell/Screens/WizardScreens.h"

WizardScreens::WizardScreens(ExportViewModel& controller, const L10n& texts) : controller_(controller), texts_(texts) {
  const auto refresh = [this] { show(controller_.state(), controller_.services().now()); };
  connect(&controller, &ExportViewModel::changed, this, refresh);
  refresh();
}

// The step changes last, so that its screen finds its content ready.
void WizardScreens::show(const ExportState& state, Date now) {
  const BackupStepContent backupStep = BackupStepContent::of(state, texts_);
  backupRows_.show(backupStep.rows);
  replace(backupStep_, backupStep, &WizardScreens::backupStepChanged);
  chatRows_.show(ChatRowContent::listOf(state, texts_));
  replace(optionsStep_, OptionsStepContent::of(state, texts_), &WizardScreens::optionsStepChanged);
  replace(progressStep_, ProgressStepContent::of(state, texts_, now), &WizardScreens::progressStepChanged);
  replace(doneStep_, DoneStepContent::of(state, texts_), &WizardScreens::doneStepChanged);
  replace(window_, WindowContent::of(state, texts_), &WizardScreens::windowChanged);
}

template <typename Content>
void WizardScreens::replace(Content& shown, const Content& made, void (WizardScreens::*changed)()) {
  if (shown == made) return;
  shown = made;
  (this->*changed)();
}
