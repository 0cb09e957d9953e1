#pragma once

#include <array>
#include <string_view>

// The names that stand for something in an export's destination.
namespace FolderNames {

inline constexpr const char* content = "messages";  // the content root
inline constexpr const char* viewer = "_viewer";
inline constexpr const char* viewerStyleSheet = "app.css";  // in the viewer's folder
inline constexpr const char* viewerScript = "app.js";       // in the viewer's folder
inline constexpr const char* viewerData = "data";           // in the viewer's folder
inline constexpr const char* avatars = "avatars";
inline constexpr const char* archivePage = "index.html";
inline constexpr const char* archiveChats = "chats.js";  // in the viewer's data folder
inline constexpr const char* textTranscript = "_transcript.txt";
inline constexpr const char* htmlTranscript = "_transcript.html";
inline constexpr const char* jsonMessages = "_messages.jsonl";
inline constexpr const char* csvMessages = "_messages.csv";

// Never a chat's folder, in any letter case.
inline constexpr std::array<std::string_view, 3> reserved{viewer, avatars, content};

}  // namespace FolderNames
