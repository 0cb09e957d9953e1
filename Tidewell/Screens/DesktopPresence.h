#pragma once

#include "Tidewell/Services/PlatformServices.h"

// What the desktop does for an export that goes on while nobody looks, asked for
// without waiting. On Linux the machine is kept awake by the desktop's portal
// (org.freedesktop.portal.Inhibit), without it by logind; notices go to
// org.freedesktop.Notifications.
namespace DesktopPresence {

Presence make();

}  // namespace DesktopPresence
