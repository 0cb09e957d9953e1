#pragma once

#include <string>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/Archive/TranscriptDates.h"
#include "TidewellCore/TranscriptStyle.h"

// A chat as a page that needs nothing but the media beside it.
namespace TranscriptPage {

// As TranscriptWriter has it. A second style sheet comes only where a message is
// more than a text or a file, or its lines quote or list.
std::string render(const ArchiveChat& chat, const TranscriptStyle& style, const TranscriptDates& dates);

}  // namespace TranscriptPage
