#include "TidewellCore/ChatData/Scope.h"

#include <algorithm>

#include "TidewellCore/ChatData/ChatFinder.h"

namespace {

std::set<CanonicalJID> chatsOf(const Selection& selection, const BackupSource& source) {
  const ChatFinder finder(source);
  std::set<CanonicalJID> chats;
  for (const std::string& wanted : selection.chats) chats.insert(finder.find(wanted));
  if (selection.chats.empty()) {
    for (CanonicalJID& jid : finder.all()) chats.insert(std::move(jid));
  }
  for (const std::string& unwanted : selection.notChats) chats.erase(finder.find(unwanted));
  return chats;
}

}  // namespace

Scope Scope::of(const Selection& selection, const BackupSource& source, const TimeZone& timeZone) {
  Scope scope;
  if (!selection.chats.empty() || !selection.notChats.empty()) scope.chats = chatsOf(selection, source);
  if (selection.since) scope.from = startOf(*selection.since, timeZone);
  if (selection.until) {
    scope.before = startOf(std::chrono::sys_days(*selection.until) + std::chrono::days(1), timeZone);
  }
  return scope;
}

bool Scope::has(const CanonicalJID& chat, const std::optional<Date>& date) const {
  if (!has(chat) || hasAllTime()) return has(chat);
  return date && (!from || *date >= *from) && (!before || *date < *before);
}

// They stand in the order of their seconds, and the stretch begins and ends with one.
std::span<const MessageRecord> Scope::messages(const ChatStorageSnapshot& snapshot, const CanonicalJID& chat) const {
  if (!has(chat)) return {};
  const std::span<const MessageRecord> all = snapshot.messages(chat);
  if (hasAllTime()) return all;
  const auto isEarlier = [&](const MessageRecord& message) { return !message.date || (from && *message.date < *from); };
  const auto isTaken = [&](const MessageRecord& message) { return !before || *message.date < *before; };
  const auto first = std::ranges::partition_point(all, isEarlier);
  const auto end = std::partition_point(first, all.end(), isTaken);
  return {first, end};
}
