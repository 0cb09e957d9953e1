#include "TidewellCore/Export/RenderingPlan.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;
using Chat = RenderingPlan::Chat;
using Shelf = RenderingPlan::Shelf;
using Subject = RenderingPlan::Subject;

// In messages. Blocks of a shelf are made together, so a long chat has one to itself.
constexpr std::int64_t longChat = 2000;
constexpr std::int64_t fullShelf = 4000;

bool stands(const fs::path& path, std::int64_t size) { return Files::regularFileSize(path) == size; }

bool isCurrent(const ChatRendering& rendering, const Subject& subject) {
  return rendering.changed == subject.kept->changed && rendering.manner == subject.manner &&
         std::ranges::all_of(subject.files, [&](const RenderingPlan::File& file) {
           const auto known = rendering.files.find(file.name);
           return known != rendering.files.end() && stands(file.path, known->second.size);
         });
}

// What the library says of a chat whose pages are to be made.
ChatRendering begun(const Subject& subject, const SQLiteStatement& count) {
  ChatRendering rendering{.changed = subject.kept->changed, .manner = subject.manner};
  count.forEachRow({subject.kept->id}, [&](const SQLiteRowView& row) {
    rendering.messageCount = row.integer(0).value_or(0);
    rendering.lastTimestamp = row.number(1);
  });
  return rendering;
}

// To the second, in which the last message need not be the latest.
double newest(const Chat& chat) {
  return std::floor(chat.rendering.lastTimestamp.value_or(-std::numeric_limits<double>::infinity()));
}

// The chats, the one with the newest message first; on shelves where they had one.
std::vector<Chat> chatsOf(const std::vector<Subject>& subjects, const Renderings& known, const SQLiteDB& library) {
  const SQLiteStatement count(library, "SELECT count(*), max(time) FROM message WHERE chat = ?");
  std::vector<Chat> chats;
  for (std::size_t number = 0; number < subjects.size(); ++number) {
    const Subject& subject = subjects[number];
    const auto before = known.chats.find(subject.kept->id);
    const bool isKnown = before != known.chats.end();
    const bool isStale = !isKnown || !isCurrent(before->second, subject);
    chats.push_back(
        {.number = number, .isStale = isStale, .rendering = isStale ? begun(subject, count) : before->second});
    if (isKnown) chats.back().rendering.shelf = before->second.shelf;
  }
  std::ranges::stable_sort(chats, std::greater(), newest);
  return chats;
}

// Gives every chat a shelf. Those that have one keep it, until they have outgrown it.
class Shelving {
 public:
  explicit Shelving(const Renderings& known) {
    if (!known.shelves.empty()) last_ = std::max(last_, known.shelves.rbegin()->first);
  }

  void shelve(std::vector<Chat>& chats) {
    for (const Chat& chat : chats) put(chat.rendering, chat.rendering.shelf);
    for (Chat& chat : chats) leaveWhenOutgrown(chat.rendering);
    for (const auto& [number, load] : loads_) {
      if (load.messages < fullShelf) open_ = number;
    }
    for (Chat& chat : chats) {
      if (chat.rendering.shelf == 0) put(chat.rendering, chat.rendering.shelf = placeFor(chat.rendering));
    }
  }

 private:
  struct Load {
    std::int64_t messages = 0;
    std::int64_t chats = 0;
  };

  void put(const ChatRendering& chat, std::int64_t shelf) {
    if (shelf == 0) return;
    loads_[shelf].messages += chat.messageCount;
    ++loads_[shelf].chats;
    last_ = std::max(last_, shelf);
  }

  void leaveWhenOutgrown(ChatRendering& chat) {
    if (chat.shelf == 0 || chat.messageCount <= fullShelf || loads_[chat.shelf].chats == 1) return;
    loads_[chat.shelf].messages -= chat.messageCount;
    --loads_[chat.shelf].chats;
    chat.shelf = 0;
  }

  std::int64_t placeFor(const ChatRendering& chat) {
    if (chat.messageCount > longChat) return ++last_;
    if (open_ == 0 || loads_[open_].messages + chat.messageCount > fullShelf) open_ = ++last_;
    return open_;
  }

  std::map<std::int64_t, Load> loads_;  // by the shelf's number
  std::int64_t last_ = 0;
  std::int64_t open_ = 0;  // where short chats go; 0 for none yet
};

// The page IDs of the chats that have messages, in the order of the shelf.
std::vector<std::string> pagesOf(const Shelf& shelf, const std::vector<Subject>& subjects) {
  std::vector<std::string> pages;
  for (const Chat& chat : shelf.chats) {
    if (chat.rendering.messageCount > 0) pages.push_back(subjects[chat.number].kept->page);
  }
  return pages;
}

std::vector<std::string> pagesOf(const std::vector<RenderedBlock>& blocks) {
  std::vector<std::string> pages;
  for (const RenderedBlock& block : blocks) {
    for (const RenderedBlock::Part& part : block.parts) {
      if (pages.empty() || pages.back() != part.page) pages.push_back(part.page);
    }
  }
  return pages;
}

bool stands(const std::vector<RenderedBlock>& blocks, const fs::path& folder) {
  return std::ranges::all_of(blocks, [&](const RenderedBlock& block) {
    return MessageBlocks::isFileName(block.file) && stands(folder / PathText::path(block.file), block.size);
  });
}

}  // namespace

RenderingPlan RenderingPlan::make(const std::vector<Subject>& subjects, const Renderings& known,
                                  const SQLiteDB& library, const fs::path& blockFolder) {
  std::vector<Chat> chats = chatsOf(subjects, known, library);
  Shelving(known).shelve(chats);
  RenderingPlan plan;
  std::map<std::int64_t, std::size_t> places;
  for (Chat& chat : chats) {
    const std::int64_t number = chat.rendering.shelf;
    const auto [place, isNew] = places.emplace(number, plan.shelves.size());
    if (isNew) plan.shelves.push_back({.number = number});
    plan.shelves[place->second].chats.push_back(std::move(chat));
  }
  for (Shelf& shelf : plan.shelves) {
    if (std::ranges::any_of(shelf.chats, &Chat::isStale)) continue;
    const auto before = known.shelves.find(shelf.number);
    std::vector<RenderedBlock> blocks;
    if (before != known.shelves.end()) blocks = before->second;
    if (pagesOf(blocks) != pagesOf(shelf, subjects) || !stands(blocks, blockFolder)) continue;
    shelf.isStale = false;
    shelf.blocks = std::move(blocks);
  }
  return plan;
}
