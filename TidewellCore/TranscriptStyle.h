#pragma once

#include <string>

#include "TidewellCore/Platform/DateText.h"

// The words and the language of what people read in an export.
struct TranscriptStyle {
  std::string youLabel;            // stands for the owner of the phone
  std::string unknownSenderLabel;  // stands for a sender without any name
  std::string languageCode;        // BCP 47, for the `lang` attribute of pages

  static TranscriptStyle english();
  static TranscriptStyle portuguese();
  // Portuguese for every locale of that language, else English.
  static TranscriptStyle matching(const Locale& locale);

  bool operator==(const TranscriptStyle&) const = default;
};
