#pragma once

// What assistive technology learns of a progress bar. Qt's own answers leave out its value.
namespace ProgressAccess {

// From here on every progress bar with the text properties `caption` and `count` answers with
// them and with how far it is. Does nothing when called again.
void install();

}  // namespace ProgressAccess
