#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ChatArchiveStrings.h"

// The texts of the viewer's own controls, which the page has beside
// ChatArchiveStrings. "{n}" and "{total}" stand for numbers that the page puts in.
struct ViewerTexts {
  std::string jumpToDate;
  std::string searchInChat;
  std::string previous;
  std::string next;
  std::string newestMessages;
  std::string resultCount;
  std::string resultPosition;
  std::string emptyMessage;
  std::string undated;
  std::string loading;
  std::string clear;
  std::string openOriginal;

  static const ViewerTexts& english();
  static const ViewerTexts& brazilianPortuguese();
  // Those in the language of `strings`.
  static const ViewerTexts& beside(const ChatArchiveStrings& strings);

  // A field by its name, and all of them in their order.
  struct Field {
    std::string_view name;
    std::string ViewerTexts::*text;
  };
  static const std::vector<Field>& fields();

  bool operator==(const ViewerTexts&) const = default;
};
