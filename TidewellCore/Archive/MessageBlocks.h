#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TidewellCore/Archive/ArchiveBlock.h"
#include "TidewellCore/Library/Renderings.h"
#include "TidewellCore/Platform/FileBatch.h"
#include "TidewellCore/Platform/Json.h"

// All messages of an archive once more, as lines (MessageLine) in files of about
// a megabyte: a browser reads such a text a hundred times faster than it builds
// the objects of a whole chat, so this is what the viewer searches, and what it
// opens long chats from (docs/formats/chat-archive.md).
//
// Chats stand on shelves, each in blocks of its own, so that a change in one chat
// changes the blocks of its shelf alone. A block's file is named after its content. So the blocks that a chat list
// names stay as they are until another list has taken its place.
class MessageBlocks {
 public:
  // `folder` is that of the archive's data files, and exists when `add` is called.
  MessageBlocks(std::filesystem::path folder, FileWriter writeFile)
      : folder_(std::move(folder)), writeFile_(std::move(writeFile)) {}

  // The messages added from now on are those of this chat, in order.
  void beginChat(const std::string& id);
  // The JSON of a message.
  void add(Json::Object message);
  // Writes what is left. Returns the blocks that were written since this was called last, in their order.
  std::vector<RenderedBlock> endShelf();
  // A block that stands from before, and stays.
  void keep(const RenderedBlock& block);
  // Writes what is left and returns the directory of the blocks.
  std::vector<ArchiveBlock> finish();
  // Removes the blocks of earlier exports. To be called when the new directory is in place.
  void removeOthers() const;

  // The name of the file of a block with that content.
  static std::string fileName(std::string_view content);
  // Whether a file has a name that `fileName` gives.
  static bool isFileName(std::string_view name);

 private:
  // Enters what the block has of the chat so far.
  void endPart();
  void write();

  std::filesystem::path folder_;
  FileWriter writeFile_;
  std::string lines_;
  std::vector<ArchiveBlock::Part> parts_;  // of the block that is being filled
  std::string chatID_;
  std::int64_t firstOfChat_ = 0;
  std::int64_t next_ = 0;
  std::vector<ArchiveBlock> directory_;
  std::vector<RenderedBlock> written_;  // of the shelf that is being filled
  std::set<std::string> names_;
};
