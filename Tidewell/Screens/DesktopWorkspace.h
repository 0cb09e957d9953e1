#pragma once

#include "Tidewell/Services/PlatformServices.h"

// The desktop that the application runs on, reached without waiting for it. On
// Linux, org.freedesktop.FileManager1 shows folders; without it they are opened.
namespace DesktopWorkspace {

Workspace make();

}  // namespace DesktopWorkspace
