#include "TidewellCore/Archive/ChatArchiveStrings.h"

#include "TidewellCore/ExportTexts.h"
#include "TidewellCore/Platform/Text.h"

namespace {

ChatArchiveStrings inLanguage(std::string_view language) {
  const ExportTexts::Section& page = ExportTexts::section(language, "page");
  ChatArchiveStrings strings;
  for (const auto& [name, text] : ChatArchiveStrings::fields()) strings.*text = ExportTexts::text(page, name);
  return strings;
}

}  // namespace

const ChatArchiveStrings& ChatArchiveStrings::english() {
  static const ChatArchiveStrings strings = inLanguage("en");
  return strings;
}

const ChatArchiveStrings& ChatArchiveStrings::brazilianPortuguese() {
  static const ChatArchiveStrings strings = inLanguage("pt-BR");
  return strings;
}

const ChatArchiveStrings& ChatArchiveStrings::forLanguageCode(std::string_view code) {
  const std::string lower = Text::lowercased(code);
  const std::string language = lower.substr(0, lower.find_first_of("-_"));
  return language == "pt" ? brazilianPortuguese() : english();
}

const ChatArchiveStrings& ChatArchiveStrings::forStyle(const TranscriptStyle& style) {
  return forLanguageCode(style.languageCode);
}

const std::string& ChatArchiveStrings::mediaLabel(MediaKind kind) const {
  switch (kind.value()) {
    case MediaKind::photos:
      return photo;
    case MediaKind::videos:
      return video;
    case MediaKind::voiceNotes:
      return voiceNote;
    case MediaKind::stickers:
      return sticker;
    case MediaKind::documents:
      return document;
  }
  return document;
}

const std::vector<ChatArchiveStrings::Field>& ChatArchiveStrings::fields() {
  static const std::vector<Field> all{
      {"language", &ChatArchiveStrings::language},
      {"title", &ChatArchiveStrings::title},
      {"chats", &ChatArchiveStrings::chats},
      {"messages", &ChatArchiveStrings::messages},
      {"search", &ChatArchiveStrings::search},
      {"filterChats", &ChatArchiveStrings::filterChats},
      {"searchMessages", &ChatArchiveStrings::searchMessages},
      {"searchHint", &ChatArchiveStrings::searchHint},
      {"searchMinChars", &ChatArchiveStrings::searchMinChars},
      {"searching", &ChatArchiveStrings::searching},
      {"noMessagesFound", &ChatArchiveStrings::noMessagesFound},
      {"searchFailed", &ChatArchiveStrings::searchFailed},
      {"back", &ChatArchiveStrings::back},
      {"close", &ChatArchiveStrings::close},
      {"selectChat", &ChatArchiveStrings::selectChat},
      {"group", &ChatArchiveStrings::group},
      {"groupCount", &ChatArchiveStrings::groupCount},
      {"messageCount", &ChatArchiveStrings::messageCount},
      {"noChatsMatch", &ChatArchiveStrings::noChatsMatch},
      {"noChats", &ChatArchiveStrings::noChats},
      {"noMessages", &ChatArchiveStrings::noMessages},
      {"couldNotOpen", &ChatArchiveStrings::couldNotOpen},
      {"couldNotLoad", &ChatArchiveStrings::couldNotLoad},
      {"photo", &ChatArchiveStrings::photo},
      {"video", &ChatArchiveStrings::video},
      {"voiceNote", &ChatArchiveStrings::voiceNote},
      {"sticker", &ChatArchiveStrings::sticker},
      {"document", &ChatArchiveStrings::document},
      {"downloadAudio", &ChatArchiveStrings::downloadAudio},
      {"photoNotExported", &ChatArchiveStrings::photoNotExported},
      {"videoNotExported", &ChatArchiveStrings::videoNotExported},
      {"stickerNotExported", &ChatArchiveStrings::stickerNotExported},
      {"voiceNoteNotExported", &ChatArchiveStrings::voiceNoteNotExported},
      {"documentNotExported", &ChatArchiveStrings::documentNotExported},
      {"missingImage", &ChatArchiveStrings::missingImage},
      {"missingVideo", &ChatArchiveStrings::missingVideo},
      {"missingVoiceNote", &ChatArchiveStrings::missingVoiceNote},
      {"missingSticker", &ChatArchiveStrings::missingSticker},
      {"missingFile", &ChatArchiveStrings::missingFile},
  };
  return all;
}
