#pragma once

#include <array>
#include <string_view>

#include "Tidewell/Services/PlatformServices.h"

namespace FinderSupport {

// The settings pane that grants Full Disk Access, by its names in older and newer systems.
inline constexpr std::array<std::string_view, 2> fullDiskAccessPanes{
    "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles",
    "x-apple.systempreferences:com.apple.settings.PrivacySecurity.extension?Privacy_AllFiles"};

// Whether this system has such panes: macOS alone.
#ifdef __APPLE__
inline constexpr bool hasFullDiskAccessSettings = true;
#else
inline constexpr bool hasFullDiskAccessSettings = false;
#endif

// Opens the first of the panes that opens.
void openFirstPane(const Workspace& workspace);
// The same where there are such panes; does nothing elsewhere.
void openFullDiskAccessSettings(const Workspace& workspace);

}  // namespace FinderSupport
