#pragma once

#include <filesystem>
#include <optional>

#include "TidewellCore/Export/RenderSummary.h"
#include "TidewellCore/ExportProgress.h"
#include "TidewellCore/MessageFormat.h"
#include "TidewellCore/Platform/DateText.h"

// Which pages are to be made again, and how they speak.
struct RenderJob {
  std::filesystem::path destination;
  std::optional<TimeZone> timeZone = {};  // of the dates in pages; absent for that of the last export
  std::optional<Locale> locale = {};      // of the dates, and by its language of the words; the same
  MessageFormats formats = {};            // beside those that stand
};

// Makes all pages of an export again from its library and its files, without a backup: transcripts, messages for
// programs, the Chat Archive and its viewer.
namespace Rerendering {

// Looks at every page and writes those that are missing or have other bytes, and what the library knows of pages;
// nothing else is changed, and nothing where all is right. What cannot be written of one chat is recorded and does
// not end the run. Throws TidewellError::ioFailure when there is no export with a sound library, another run works on
// it or the disk takes nothing more, TidewellError::destinationNotWritable, TidewellError::cancelled, and what the
// file system and the database report.
RenderSummary run(const RenderJob& job, const RunControl& control = {});

}  // namespace Rerendering
