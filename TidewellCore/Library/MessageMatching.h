#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "TidewellCore/Library/KeptMessage.h"

// Which of a chat's kept messages each told one is. A message is known by its stanza ID, else by its second, direction,
// sender and content; what tells least apart by its key too.
class MessageMatching {
 public:
  // A place among the kept messages.
  using Place = std::optional<std::uint32_t>;

  // The surest pairs come first; each kept message is found once. Keeps neither list.
  MessageMatching(std::span<const KeptMessage> kept, std::span<const KeptMessage> told);

  // Of a told message, by its place among them.
  Place placeOf(std::size_t told) const { return places_.empty() ? std::nullopt : places_[told]; }
  // How many of the told ones are none of the kept.
  std::int64_t newCount() const { return newCount_; }
  bool wasFound(std::uint32_t kept) const { return isFound_[kept]; }

 private:
  std::vector<Place> places_;  // none where nothing was kept
  std::vector<bool> isFound_;
  std::int64_t newCount_ = 0;
};
