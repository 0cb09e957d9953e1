#include "TidewellCore/TranscriptStyle.h"

#include <gtest/gtest.h>

namespace {

TEST(TranscriptStyle, EnglishHasItsWords) {
  EXPECT_EQ(TranscriptStyle::english(),
            (TranscriptStyle{.youLabel = "You", .unknownSenderLabel = "Unknown", .languageCode = "en"}));
}

TEST(TranscriptStyle, PortugueseHasItsWords) {
  EXPECT_EQ(TranscriptStyle::portuguese(),
            (TranscriptStyle{.youLabel = "Você", .unknownSenderLabel = "Desconhecido", .languageCode = "pt-BR"}));
}

TEST(TranscriptStyle, IsPortugueseForEveryRegionOfTheLanguage) {
  for (const char* identifier : {"pt", "pt_BR", "pt_PT", "pt-BR", "PT_br", "pt_AO", "pt_Latn_BR"}) {
    EXPECT_EQ(TranscriptStyle::matching({.identifier = identifier}), TranscriptStyle::portuguese()) << identifier;
  }
}

TEST(TranscriptStyle, IsEnglishForEveryOtherLanguage) {
  for (const char* identifier : {"en_US", "de_DE", "es_BR", "en_PT", "pa_IN", ""}) {
    EXPECT_EQ(TranscriptStyle::matching({.identifier = identifier}), TranscriptStyle::english()) << identifier;
  }
}

}  // namespace
