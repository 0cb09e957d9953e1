#include "TidewellCore/Archive/MessageBlocks.h"

#include <fmt/format.h>

#include <array>
#include <utility>

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

std::vector<RenderedBlock> MessageBlocks::endShelf() {
  write();
  return std::exchange(written_, {});
}

void MessageBlocks::keep(const RenderedBlock& block) {
  std::vector<ArchiveBlock::Part> parts;
  for (const auto& [page, firstMessage, count] : block.parts) parts.push_back({page, firstMessage, count});
  directory_.push_back({.file = block.file, .parts = std::move(parts)});
  names_.insert(block.file);
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
  writeFile_(folder_ / PathText::path(name), content);
  RenderedBlock block{.file = name, .size = static_cast<std::int64_t>(content.size())};
  for (const auto& [chatID, firstMessage, count] : parts_) block.parts.push_back({chatID, firstMessage, count});
  keep(block);
  written_.push_back(std::move(block));
  parts_.clear();
  lines_.clear();
}

void MessageBlocks::removeOthers() const {
  for (const Files::Entry& entry : Files::listVisible(folder_)) {
    const bool isBlock = isFileName(entry.name) && !entry.isFolder;
    if (isBlock && !names_.contains(entry.name)) Files::remove(folder_ / PathText::path(entry.name));
  }
}

std::string MessageBlocks::fileName(std::string_view content) {
  const std::array digest = sha256(bytesOf(content));
  return fmt::format("{}{:02x}{}", prefix, fmt::join(std::span(digest).first(digestBytes), ""), ending);
}

bool MessageBlocks::isFileName(std::string_view name) {
  constexpr std::size_t digits = 2 * digestBytes;
  return name.size() == prefix.size() + digits + ending.size() && name.starts_with(prefix) && name.ends_with(ending) &&
         name.substr(prefix.size(), digits).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}
