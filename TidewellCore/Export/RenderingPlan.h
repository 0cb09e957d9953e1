#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TidewellCore/Library/KeptChats.h"
#include "TidewellCore/Library/Renderings.h"

// Which chats' pages have to be made anew, and in which order. Those of a chat that has not
// changed stand as they are, as long as their files do with the lengths that they had.
struct RenderingPlan {
  // One of the files that a chat has to itself.
  struct File {
    std::string name;
    std::filesystem::path path;
  };
  // A chat of the library, and what its pages depend on beside that.
  struct Subject {
    const KeptChat* kept;     // must outlive the plan
    Bytes manner;             // as ChatRendering::manner
    std::vector<File> files;  // that are wanted; others that were made stay
  };
  struct Chat {
    std::size_t number = 0;   // among the subjects
    bool isStale = true;      // its files have to be made anew
    ChatRendering rendering;  // as it stands; of a stale one what is known before it is made: no files, no preview
  };
  struct Shelf {
    std::int64_t number = 0;
    bool isStale = true;                // its blocks have to be made anew
    std::vector<Chat> chats;            // the one with the newest message first
    std::vector<RenderedBlock> blocks;  // that stand; none when it is stale
  };

  std::vector<Shelf> shelves;  // the one with the newest message first

  // `blockFolder` is that of the archive's data. Throws what the file system and the database report.
  static RenderingPlan make(const std::vector<Subject>& subjects, const Renderings& known, const SQLiteDB& library,
                            const std::filesystem::path& blockFolder);
};
