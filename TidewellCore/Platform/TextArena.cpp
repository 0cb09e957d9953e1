#include "TidewellCore/Platform/TextArena.h"

#include <algorithm>

namespace {

constexpr std::size_t blockSize = 1 << 18;

}  // namespace

// What is left of the last block goes with the blocks.
TextArena& TextArena::operator=(TextArena&& other) noexcept {
  blocks_ = std::exchange(other.blocks_, {});
  next_ = std::exchange(other.next_, nullptr);
  left_ = std::exchange(other.left_, 0);
  known_ = std::exchange(other.known_, {});
  return *this;
}

std::string_view TextArena::add(std::string_view text) {
  if (text.empty()) return "";
  if (text.size() > left_) {
    // One that fills most of a block gets its own, and the last one is used on.
    const bool isLarge = text.size() > blockSize / 4;
    const std::size_t size = isLarge ? text.size() : blockSize;
    std::unique_ptr<char[]>& block = blocks_.emplace_back(std::make_unique_for_overwrite<char[]>(size));
    if (isLarge) return {std::ranges::copy(text, block.get()).out - text.size(), text.size()};
    next_ = block.get();
    left_ = size;
  }
  char* const begin = next_;
  next_ = std::ranges::copy(text, begin).out;
  left_ -= text.size();
  return {begin, text.size()};
}

std::string_view TextArena::addOnce(std::string_view text) {
  if (const auto found = known_.find(text); found != known_.end()) return *found;
  return *known_.insert(add(text)).first;
}
