#include "TidewellCore/Archive/ChatArchiveStrings.h"

#include "TidewellCore/Platform/Text.h"

const ChatArchiveStrings& ChatArchiveStrings::english() {
  static const ChatArchiveStrings strings{
      .language = "en",
      .title = "Chat Archive",
      .chats = "Chats",
      .messages = "Messages",
      .search = "Search",
      .filterChats = "Filter chats",
      .searchMessages = "Search all messages",
      .searchHint = "Type to search message text across chats.",
      .searchMinChars = "Enter at least two characters.",
      .searching = "Searching…",
      .noMessagesFound = "No messages found.",
      .searchFailed = "Search failed.",
      .back = "Back",
      .close = "Close",
      .selectChat = "Select a chat",
      .group = "Group",
      .groupCount = "Group · {n} messages",
      .messageCount = "{n} messages",
      .noChatsMatch = "No chats match.",
      .noChats = "No chats in this archive.",
      .noMessages = "No messages in this chat.",
      .couldNotOpen = "Could not open this chat.",
      .couldNotLoad = "Could not load chat",
      .photo = "Photo",
      .video = "Video",
      .voiceNote = "Voice note",
      .sticker = "Sticker",
      .document = "Document",
      .downloadAudio = "Download audio",
      .photoNotExported = "[photo not exported]",
      .videoNotExported = "[video not exported]",
      .stickerNotExported = "[sticker not exported]",
      .voiceNoteNotExported = "[voice note not exported]",
      .documentNotExported = "[document not exported]",
      .missingImage = "[missing image]",
      .missingVideo = "[missing video]",
      .missingVoiceNote = "[missing voice note]",
      .missingSticker = "[missing sticker]",
      .missingFile = "[missing file]",
  };
  return strings;
}

const ChatArchiveStrings& ChatArchiveStrings::brazilianPortuguese() {
  static const ChatArchiveStrings strings{
      .language = "pt-BR",
      .title = "Arquivo de Conversas",
      .chats = "Conversas",
      .messages = "Mensagens",
      .search = "Buscar",
      .filterChats = "Filtrar conversas",
      .searchMessages = "Buscar em todas as mensagens",
      .searchHint = "Digite para buscar o texto das mensagens nas conversas.",
      .searchMinChars = "Digite pelo menos dois caracteres.",
      .searching = "Buscando…",
      .noMessagesFound = "Nenhuma mensagem encontrada.",
      .searchFailed = "A busca falhou.",
      .back = "Voltar",
      .close = "Fechar",
      .selectChat = "Selecione uma conversa",
      .group = "Grupo",
      .groupCount = "Grupo · {n} mensagens",
      .messageCount = "{n} mensagens",
      .noChatsMatch = "Nenhuma conversa corresponde.",
      .noChats = "Nenhuma conversa neste arquivo.",
      .noMessages = "Nenhuma mensagem nesta conversa.",
      .couldNotOpen = "Não foi possível abrir esta conversa.",
      .couldNotLoad = "Não foi possível carregar a conversa",
      .photo = "Foto",
      .video = "Vídeo",
      .voiceNote = "Áudio",
      .sticker = "Figurinha",
      .document = "Documento",
      .downloadAudio = "Baixar áudio",
      .photoNotExported = "[foto não exportada]",
      .videoNotExported = "[vídeo não exportado]",
      .stickerNotExported = "[figurinha não exportada]",
      .voiceNoteNotExported = "[áudio não exportado]",
      .documentNotExported = "[documento não exportado]",
      .missingImage = "[imagem ausente]",
      .missingVideo = "[vídeo ausente]",
      .missingVoiceNote = "[áudio ausente]",
      .missingSticker = "[figurinha ausente]",
      .missingFile = "[arquivo ausente]",
  };
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
