#pragma once

#include <memory>
#include <variant>

#include "Tidewell/Session/CancellationToken.h"

// Ends a scan, an export or a verification. Whose answer is late is told by it, too: an answer
// counts only while its run is the one that the wizard is busy with.
using Run = std::shared_ptr<CancellationToken>;

struct Idle {
  bool operator==(const Idle&) const = default;
};

// Looks into the chosen folder, and whether its password is kept.
struct Inspecting {
  bool operator==(const Inspecting&) const = default;
};

// Reads the chats of the chosen backup.
struct Scanning {
  Run run;
  bool isUnlocking = false;   // an encrypted backup
  bool isCancelling = false;  // the user asked to stop, and the scan has not returned yet

  bool operator==(const Scanning&) const = default;
};

struct Exporting {
  Run run;

  bool operator==(const Exporting&) const = default;
};

// Looks whether what was exported is whole.
struct Verifying {
  Run run;

  bool operator==(const Verifying&) const = default;
};

// What the wizard is busy with: one thing at a time.
using WizardWork = std::variant<Idle, Inspecting, Scanning, Exporting, Verifying>;
