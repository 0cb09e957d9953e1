#include "TidewellCore/ChatData/MediaPaths.h"

#include "TidewellCore/Platform/Text.h"

bool MediaPaths::isOfFile(std::string_view localPath) {
  constexpr std::string_view folder = "MEDIA/";
  return localPath.size() > folder.size() && Text::uppercasedASCII(localPath.substr(0, folder.size())) == folder;
}

std::string MediaPaths::inBackup(std::string_view localPath) { return std::string("Message/").append(localPath); }
