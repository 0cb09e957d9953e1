#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "TidewellCore/ChatData/ScanResult.h"
#include "TidewellCore/ChatData/Selection.h"

// Which of a backup's chats and days are wanted, as it stands in the window.
struct ChatChoice {
  std::set<std::string> leftOut;  // JIDs; every other chat is wanted
  std::string since, until;       // the first and the last day, as they were typed; empty for all
  bool isListShown = false;
  std::string search;  // for chats of the list

  bool has(const ScanChat& chat) const { return !leftOut.contains(chat.jid); }
  bool fitsSearch(const ScanChat& chat) const;
  std::int64_t count(const ScanResult& scan) const;
  // Of the media of these kinds, whatever their days.
  MediaTypeStats stats(const ScanResult& scan, const MediaKinds& kinds) const;
  bool hasDays() const;
  // What is wrong with the days, in English; absent when nothing is.
  std::optional<std::string_view> fault() const;
  // What an export is to take; days that are wrong are as good as none.
  Selection selection(const ScanResult& scan) const;

  bool operator==(const ChatChoice&) const = default;
};
