#include "TidewellCore/Archive/MessageBlocks.h"

#include <fmt/format.h>

#include <array>

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
constexpr std::string_view opening = "window.__BLOCK_PAYLOAD = String.raw`";
constexpr std::string_view closing = "`;\n";

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

Json::Array MessageBlocks::finish() {
  write();
  return std::move(directory_);
}

void MessageBlocks::endPart() {
  if (next_ > firstOfChat_) chats_.emplace_back(Json::Array{chatID_, firstOfChat_, next_ - firstOfChat_});
  firstOfChat_ = next_;
}

void MessageBlocks::write() {
  endPart();
  if (lines_.empty()) return;
  const std::string content = script(lines_);
  const std::string name = fileName(content);
  Files::writeWhenDifferent(folder_ / PathText::path(name), content);
  directory_.emplace_back(Json::Object{{"file", name}, {"chats", std::move(chats_)}});
  names_.insert(name);
  chats_.clear();
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

std::string MessageBlocks::script(std::string_view lines) { return std::string(opening).append(lines).append(closing); }

std::string_view MessageBlocks::lines(std::string_view script) {
  if (script.size() < opening.size() + closing.size()) return {};
  if (!script.starts_with(opening) || !script.ends_with(closing)) return {};
  return script.substr(opening.size(), script.size() - opening.size() - closing.size());
}
