#include "TidewellCore/TranscriptStyle.h"

TranscriptStyle TranscriptStyle::english() {
  return {.youLabel = "You", .unknownSenderLabel = "Unknown", .languageCode = "en"};
}

TranscriptStyle TranscriptStyle::portuguese() {
  return {.youLabel = "Você", .unknownSenderLabel = "Desconhecido", .languageCode = "pt-BR"};
}

TranscriptStyle TranscriptStyle::matching(const Locale& locale) {
  return locale.languageCode() == "pt" ? portuguese() : english();
}
