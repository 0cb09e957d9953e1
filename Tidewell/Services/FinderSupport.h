#pragma once

#include <array>
#include <string_view>

#include "Tidewell/Services/PlatformServices.h"

namespace FinderSupport {

// The settings pane that grants Full Disk Access, by its names in older and newer systems.
inline constexpr std::array<std::string_view, 2> fullDiskAccessPanes{
    "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles",
    "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AllFiles"};

// Opens the first of the panes that opens.
void openFirstPane(const Workspace& workspace);
// The same on macOS; does nothing elsewhere, where there are no such panes.
void openFullDiskAccessSettings(const Workspace& workspace);

}  // namespace FinderSupport
