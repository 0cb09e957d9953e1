#include "TidewellCore/TranscriptStyle.h"

#include "TidewellCore/ExportTexts.h"

namespace {

TranscriptStyle inLanguage(const char* language) {
  const ExportTexts::Section& words = ExportTexts::section(language, "transcript");
  return {.youLabel = ExportTexts::text(words, "you"),
          .unknownSenderLabel = ExportTexts::text(words, "unknownSender"),
          .languageCode = language};
}

}  // namespace

TranscriptStyle TranscriptStyle::english() { return inLanguage("en"); }

TranscriptStyle TranscriptStyle::portuguese() { return inLanguage("pt-BR"); }

TranscriptStyle TranscriptStyle::matching(const Locale& locale) {
  return locale.languageCode() == "pt" ? portuguese() : english();
}
