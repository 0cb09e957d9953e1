#pragma once

#include "TidewellCore/MediaKind.h"

// What the user wants of an export.
struct ExportOptions {
  MediaKinds includedKinds;        // files of other kinds are left out entirely
  bool exportTranscripts = false;  // readable transcripts and the Chat Archive

  // All kinds, with transcripts.
  static ExportOptions defaultOptions() {
    return {.includedKinds = {MediaKind::allCases.begin(), MediaKind::allCases.end()}, .exportTranscripts = true};
  }

  bool operator==(const ExportOptions&) const = default;
};
