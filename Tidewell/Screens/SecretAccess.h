#pragma once

// What assistive technology learns of a field for a secret. Qt's own answers leave out such a
// field's name, and give its text away while it is shown to the eye.
namespace SecretAccess {

// From here on every item with a text property `secretName` answers as a password field of
// that name, of whose text only the length can be had. Does nothing when called again.
void install();

}  // namespace SecretAccess
