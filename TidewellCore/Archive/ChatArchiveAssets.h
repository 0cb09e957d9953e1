#pragma once

#include <string>
#include <string_view>

#include "TidewellCore/Archive/ChatArchiveStrings.h"

// The viewer: the page, style sheet and script that show a Chat Archive.
namespace ChatArchiveAssets {

// `assetPrefix` leads from the page to the viewer's folder and ends in "_viewer/".
std::string indexHTML(const ChatArchiveStrings& strings, std::string_view assetPrefix);
std::string_view styleSheet();
std::string_view script();

// Stands in every page that `indexHTML` makes, and made in earlier versions.
inline constexpr std::string_view pageMark = "window.ARCHIVE_BASE";

}  // namespace ChatArchiveAssets
