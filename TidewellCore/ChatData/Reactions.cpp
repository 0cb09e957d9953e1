#include "TidewellCore/ChatData/Reactions.h"

#include <algorithm>
#include <map>

#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/Platform/Text.h"

namespace {

using OwnJIDs = std::span<const std::string>;

// In units of UTF-16, as the viewer counts, and in bytes; a family with its skins has 19 and 41.
constexpr std::size_t longestEmoji = 32;
constexpr std::size_t longestEmojiInBytes = 3 * longestEmoji;
constexpr std::int64_t greatestCount = 10'000'000'000;

const Person owner{.isOwner = true};

bool isShowable(std::string_view emoji) {
  if (emoji.empty() || emoji.size() > longestEmojiInBytes) return false;
  const std::u32string scalars = Text::scalars(emoji);
  const auto pairs = std::ranges::count_if(scalars, [](char32_t scalar) { return scalar > 0xFFFF; });
  if (scalars.size() + static_cast<std::size_t>(pairs) > longestEmoji) return false;
  return std::ranges::none_of(scalars, [](char32_t scalar) {
    return Text::isControl(scalar) || Text::isDirectionalMark(scalar) || Text::isBlank(scalar);
  });
}

// Empty for what shows nothing.
std::string emojiOf(const ProtobufReader& field) {
  const auto text = field.text();
  return text && isShowable(*text) ? std::string(*text) : std::string();
}

std::int64_t millisecondsOf(const ProtobufReader& field) {
  return std::max<std::int64_t>(field.integer().value_or(0), 0);
}

// Some programs keep the owner's own reaction here, without a JID.
Reaction theirs(ProtobufReader fields, OwnJIDs ownJIDs) {
  Reaction reaction{.person = owner};
  while (fields.next()) {
    if (fields.number() == 2 && !fields.bytes().empty())
      reaction.person = StoredJID::person(fields.text().value_or(""), ownJIDs);
    if (fields.number() == 3) reaction.emoji = emojiOf(fields);
    if (fields.number() == 4) reaction.milliseconds = millisecondsOf(fields);
  }
  return reaction;
}

Reaction mine(ProtobufReader fields) {
  Reaction reaction{.person = owner};
  while (fields.next()) {
    if (fields.number() == 2) reaction.emoji = emojiOf(fields);
    if (fields.number() == 3) reaction.milliseconds = millisecondsOf(fields);
  }
  return reaction;
}

Reaction total(ProtobufReader fields) {
  Reaction reaction{.count = 0};
  while (fields.next()) {
    if (fields.number() == 1) reaction.emoji = emojiOf(fields);
    if (fields.number() == 2) reaction.count = fields.integer().value_or(0);
  }
  return reaction;
}

// The newest of each person, the oldest of them first.
std::vector<Reaction> standing(std::vector<Reaction> all) {
  std::ranges::stable_sort(all, {}, &Reaction::milliseconds);
  std::map<std::string, std::size_t, std::less<>> newest;  // by JID; the owner's is empty
  for (std::size_t i = 0; i < all.size(); ++i) newest.insert_or_assign(all[i].person->jid, i);
  std::vector<Reaction> reactions;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (newest.at(all[i].person->jid) == i && !all[i].emoji.empty()) reactions.push_back(all[i]);
  }
  return reactions;
}

// Those that are not among the reactions by name.
void addTotals(const std::vector<Reaction>& totals, std::vector<Reaction>& reactions) {
  std::map<std::string, std::int64_t, std::less<>> told;  // by emoji
  for (const Reaction& reaction : reactions) ++told[reaction.emoji];
  for (Reaction total : totals) {
    if (total.emoji.empty() || total.count <= 0 || total.count > greatestCount) continue;
    const std::int64_t counted = total.count;
    std::int64_t& before = told[total.emoji];
    total.count -= before;
    before = std::max(before, counted);
    if (total.count > 0) reactions.push_back(std::move(total));
  }
}

}  // namespace

std::vector<Reaction> Reactions::read(ProtobufReader field, std::span<const std::string> ownJIDs) {
  std::vector<Reaction> all;
  std::vector<Reaction> totals;
  while (field.next()) {
    if (field.number() == 1) all.push_back(theirs(field.message(), ownJIDs));
    if (field.number() == 2) all.push_back(mine(field.message()));
    if (field.number() == 3) {
      forEachMessage(field.message(), 1, [&](ProtobufReader fields) { totals.push_back(total(fields)); });
    }
  }
  std::erase_if(all, [](const Reaction& reaction) { return !reaction.person; });
  std::vector<Reaction> reactions = standing(std::move(all));
  addTotals(totals, reactions);
  if (reactions.size() > most) reactions.resize(most);
  return reactions;
}
