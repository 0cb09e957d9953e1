#pragma once

#include "TidewellCore/MediaKind.h"
#include "TidewellCore/MessageFormat.h"

// What the user wants of an export.
struct ExportOptions {
  MediaKinds includedKinds;        // files of other kinds are left out entirely
  bool exportTranscripts = false;  // readable transcripts and the Chat Archive
  MessageFormats formats = {};     // each chat's messages for programs, too; only together with transcripts

  // All kinds, with transcripts.
  static ExportOptions defaultOptions() {
    return {.includedKinds = {MediaKind::allCases.begin(), MediaKind::allCases.end()}, .exportTranscripts = true};
  }

  bool operator==(const ExportOptions&) const = default;
};
