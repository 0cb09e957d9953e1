#pragma once

#include <optional>

// The screens that the wizard goes through.
enum class WizardStep { backup = 1, options = 2, exporting = 3, done = 4 };

// Absent when no step has that number.
constexpr std::optional<WizardStep> wizardStepFromRawValue(int raw) {
  if (raw < 1 || raw > 4) return std::nullopt;
  return static_cast<WizardStep>(raw);
}
