#pragma once

#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

// Keeps many texts that live and die together, without an allocation for each.
// A text stays where it is while the arena lives, also when the arena is moved.
class TextArena {
 public:
  TextArena() = default;
  TextArena(TextArena&& other) noexcept { *this = std::move(other); }
  TextArena& operator=(TextArena&& other) noexcept;

  // Keeps a copy of the text.
  std::string_view add(std::string_view text);
  // The same, once for equal texts: for those that repeat in row after row.
  std::string_view addOnce(std::string_view text);

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;  // bytes of the last block
  std::unordered_set<std::string_view> known_;
};
