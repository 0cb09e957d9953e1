#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Tests/Export/ExportScene.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TidewellCore/Archive/ChatArchiveWriter.h"
#include "TidewellCore/Destination/FolderManifest.h"
#include "TidewellCore/Export/Exporter.h"

namespace ExportTest {

// What stands below a folder: the content of each file, by its path.
using Tree = std::map<std::string, std::string>;

// An export in which chats may have more than one folder.
struct DedupeScene : testing::Test {
  DedupeScene() { std::filesystem::create_directories(content / "_viewer"); }

  void write(const std::string& file, const std::string& text) const { Fixture::writeFile(content / file, text); }
  void remember(const FolderAssignment& folders) const { FolderManifest::save(content, folders); }
  FolderAssignment remembered() const { return FolderManifest::load(destination); }
  DedupeSummary dedupe(bool apply, const CancellationCheck& isCancelled = {}) const {
    return Exporter().dedupe(destination, apply, isCancelled);
  }
  void writeArchive(const std::vector<ArchiveChat>& chats) const {
    ChatArchiveWriter::write({.destination = destination,
                              .contentRoot = content,
                              .style = TranscriptStyle::matching(Locale{"en_US"}),
                              .timeZone = TimeZone{"UTC"}},
                             chats);
  }
  // The files of the chat folders alone.
  Tree media() const {
    Tree files = filesBelow(content);
    std::erase_if(files, [](const auto& file) { return file.first.starts_with("_viewer/") || file.first[0] == '.'; });
    return files;
  }

  Fixture::TemporaryDirectory folder;
  std::filesystem::path destination = folder / "Desktop";
  std::filesystem::path content = destination / "messages";
};

// A chat with one message for each file, "folder/file".
inline ArchiveChat archiveChat(const std::string& jid, const std::string& folder,
                               const std::vector<std::string>& files = {}) {
  ArchiveChat chat{.id = ChatArchiveWriter::safeID(jid + folder, {}), .name = folder, .jid = jid, .folder = folder};
  for (const std::string& file : files) {
    ArchiveMessage message{.id = std::to_string(chat.messages.size()), .sender = "Ana", .text = "`${" + file + "}`"};
    message.media = ArchiveMedia{
        .kind = MediaKind::photos, .relativePath = file, .fileName = file.substr(file.find('/') + 1), .exported = true};
    chat.messages.push_back(message);
  }
  return chat;
}

}  // namespace ExportTest
