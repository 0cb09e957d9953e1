#include "TidewellCore/Archive/MessageBlocks.h"

#include <fmt/format.h>

#include <array>

#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/MessageLine.h"
#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t fullSize = 1 << 20;  // bytes of lines
constexpr std::size_t digestBytes = 8;     // of a block's content, in its name
constexpr std::string_view prefix = "block-";
constexpr std::string_view ending = ".js";

// Whether a file has a name that `MessageBlocks::fileName` gives.
bool isBlockName(std::string_view name) {
  constexpr std::size_t digits = 2 * digestBytes;
  return name.size() == prefix.size() + digits + ending.size() && name.starts_with(prefix) && name.ends_with(ending) &&
         name.substr(prefix.size(), digits).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace

void MessageBlocks::beginChat(const std::string& id) {
  endPart();
  chatID_ = id;
  firstOfChat_ = next_ = 0;
}

void MessageBlocks::add(Json::Object message) {
  if (!lines_.empty()) lines_ += '\n';
  MessageLine::append(lines_, std::move(message));
  ++next_;
  if (lines_.size() >= fullSize) write();
}

std::vector<ArchiveBlock> MessageBlocks::finish() {
  write();
  return std::move(directory_);
}

void MessageBlocks::endPart() {
  if (next_ > firstOfChat_) parts_.push_back({chatID_, firstOfChat_, next_ - firstOfChat_});
  firstOfChat_ = next_;
}

void MessageBlocks::write() {
  endPart();
  if (lines_.empty()) return;
  const std::string content = ArchiveScripts::block(lines_);
  const std::string name = fileName(content);
  Files::writeWhenDifferent(folder_ / PathText::path(name), content);
  directory_.push_back({.file = name, .parts = std::move(parts_)});
  names_.insert(name);
  parts_.clear();
  lines_.clear();
}

void MessageBlocks::removeOthers() const {
  for (const Files::Entry& entry : Files::listVisible(folder_)) {
    const bool isBlock = isBlockName(entry.name) && !entry.isFolder;
    if (isBlock && !names_.contains(entry.name)) Files::remove(folder_ / PathText::path(entry.name));
  }
}

std::string MessageBlocks::fileName(std::string_view content) {
  const std::array digest = sha256(bytesOf(content));
  return fmt::format("{}{:02x}{}", prefix, fmt::join(std::span(digest).first(digestBytes), ""), ending);
}
