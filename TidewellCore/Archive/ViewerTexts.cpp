#include "TidewellCore/Archive/ViewerTexts.h"

const ViewerTexts& ViewerTexts::english() {
  static const ViewerTexts texts{
      .jumpToDate = "Jump to date",
      .searchInChat = "Search in this chat",
      .previous = "Previous",
      .next = "Next",
      .newestMessages = "Newest messages",
      .resultCount = "Results: {n}",
      .resultPosition = "{n} of {total}",
      .emptyMessage = "Message without text",
      .undated = "Undated",
      .loading = "Loading…",
      .clear = "Clear",
      .openOriginal = "Open file",
  };
  return texts;
}

const ViewerTexts& ViewerTexts::brazilianPortuguese() {
  static const ViewerTexts texts{
      .jumpToDate = "Ir para a data",
      .searchInChat = "Buscar nesta conversa",
      .previous = "Anterior",
      .next = "Próxima",
      .newestMessages = "Mensagens mais recentes",
      .resultCount = "Resultados: {n}",
      .resultPosition = "{n} de {total}",
      .emptyMessage = "Mensagem sem texto",
      .undated = "Sem data",
      .loading = "Carregando…",
      .clear = "Limpar",
      .openOriginal = "Abrir arquivo",
  };
  return texts;
}

const ViewerTexts& ViewerTexts::beside(const ChatArchiveStrings& strings) {
  return strings.language == ChatArchiveStrings::brazilianPortuguese().language ? brazilianPortuguese() : english();
}

const std::vector<ViewerTexts::Field>& ViewerTexts::fields() {
  static const std::vector<Field> all{
      {"jumpToDate", &ViewerTexts::jumpToDate},
      {"searchInChat", &ViewerTexts::searchInChat},
      {"previous", &ViewerTexts::previous},
      {"next", &ViewerTexts::next},
      {"newestMessages", &ViewerTexts::newestMessages},
      {"resultCount", &ViewerTexts::resultCount},
      {"resultPosition", &ViewerTexts::resultPosition},
      {"emptyMessage", &ViewerTexts::emptyMessage},
      {"undated", &ViewerTexts::undated},
      {"loading", &ViewerTexts::loading},
      {"clear", &ViewerTexts::clear},
      {"openOriginal", &ViewerTexts::openOriginal},
  };
  return all;
}
