#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/MediaKind.h"
#include "TidewellCore/TranscriptStyle.h"

// The texts of the archive's page in one language, those of its own controls left
// out, which only the page knows. "{n}" stands for a number that the page puts in.
// Their words stand in Texts/, with the controls' (ExportTexts, section "page").
struct ChatArchiveStrings {
  std::string language;
  std::string title;
  std::string chats;
  std::string messages;
  std::string search;
  std::string filterChats;
  std::string searchMessages;
  std::string searchHint;
  std::string searchMinChars;
  std::string searching;
  std::string noMessagesFound;
  std::string searchFailed;
  std::string back;
  std::string close;
  std::string selectChat;
  std::string group;
  std::string groupCount;
  std::string messageCount;
  std::string noChatsMatch;
  std::string noChats;
  std::string noMessages;
  std::string couldNotOpen;
  std::string couldNotLoad;
  std::string photo;
  std::string video;
  std::string voiceNote;
  std::string sticker;
  std::string document;
  std::string downloadAudio;
  std::string photoNotExported;
  std::string videoNotExported;
  std::string stickerNotExported;
  std::string voiceNoteNotExported;
  std::string documentNotExported;
  std::string missingImage;
  std::string missingVideo;
  std::string missingVoiceNote;
  std::string missingSticker;
  std::string missingFile;

  static const ChatArchiveStrings& english();
  static const ChatArchiveStrings& brazilianPortuguese();
  // Portuguese for every form of that language, else English.
  static const ChatArchiveStrings& forLanguageCode(std::string_view code);
  static const ChatArchiveStrings& forStyle(const TranscriptStyle& style);

  const std::string& mediaLabel(MediaKind kind) const;

  // A field by its name, and all of them in their order.
  struct Field {
    std::string_view name;
    std::string ChatArchiveStrings::*text;
  };
  static const std::vector<Field>& fields();

  bool operator==(const ChatArchiveStrings&) const = default;
};
