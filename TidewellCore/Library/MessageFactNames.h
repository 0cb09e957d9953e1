#pragma once

#include <concepts>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "TidewellCore/ChatData/MessageContent.h"

// What the facts of a message are called in their JSON (docs/formats/library.md), for both directions; MessageFacts
// writes and reads it.
namespace MessageFactNames {

// A member of a record by the name that it has in the JSON.
template <typename Value>
struct Named {
  std::string_view name;
  Value& value;
};

template <typename Value>
Named<Value> named(std::string_view name, Value& value) {
  return {name, value};
}

template <typename Type, typename Record>
concept Is = std::same_as<std::remove_const_t<Type>, Record>;

// The members of each record. The bindings fail to compile when a record gets another member.

auto members(Is<Person> auto& person) {
  auto& [jid, isOwner] = person;
  return std::tuple{named("jid", jid), named("me", isOwner)};
}

auto members(Is<std::monostate> auto&) { return std::tuple(); }

auto members(Is<SharedLocation> auto& location) {
  auto& [coordinates, name, address, isLive] = location;
  return std::tuple{named("at", coordinates), named("name", name), named("address", address), named("live", isLive)};
}

auto members(Is<SharedContact> auto& contact) {
  auto& [name, phones, emails] = contact;
  return std::tuple{named("name", name), named("phones", phones), named("emails", emails)};
}

auto members(Is<SharedContacts> auto& shared) {
  auto& [contacts] = shared;
  return std::tuple{named("people", contacts)};
}

auto members(Is<LinkPreview> auto& preview) {
  auto& [url, title, summary] = preview;
  return std::tuple{named("url", url), named("title", title), named("summary", summary)};
}

auto members(Is<PollOption> auto& option) {
  auto& [words, voters] = option;
  return std::tuple{named("words", words), named("voters", voters)};
}

auto members(Is<Poll> auto& poll) {
  auto& [question, options] = poll;
  return std::tuple{named("question", question), named("options", options)};
}

auto members(Is<CallRecord> auto& call) {
  auto& [isVideo, isGroup, isMissed, seconds] = call;
  return std::tuple{named("video", isVideo), named("group", isGroup), named("missed", isMissed),
                    named("seconds", seconds)};
}

auto members(Is<GroupInvite> auto& invite) {
  auto& [groupName, caption] = invite;
  return std::tuple{named("group", groupName), named("caption", caption)};
}

auto members(Is<Product> auto& product) {
  auto& [title, description, currency, thousandths] = product;
  return std::tuple{named("title", title), named("description", description), named("currency", currency),
                    named("thousandths", thousandths)};
}

auto members(Is<BusinessButton> auto& button) {
  auto& [words, target] = button;
  return std::tuple{named("words", words), named("target", target)};
}

auto members(Is<BusinessText> auto& text) {
  auto& [paragraphs, buttons] = text;
  return std::tuple{named("paragraphs", paragraphs), named("buttons", buttons)};
}

auto members(Is<DeletedMessage> auto& message) {
  auto& [remover] = message;
  return std::tuple{named("by", remover)};
}

static_assert(std::is_empty_v<WaitingMessage>);
auto members(Is<WaitingMessage> auto&) { return std::tuple(); }

auto members(Is<MissingMedia> auto& media) {
  auto& [part, seconds, fileName] = media;
  return std::tuple{named("part", part), named("seconds", seconds), named("name", fileName)};
}

auto members(Is<Notice> auto& notice) {
  auto& [kind, code, actor, targets, parameter, seconds] = notice;
  return std::tuple{named("type", kind),       named("code", code),           named("actor", actor),
                    named("targets", targets), named("parameter", parameter), named("seconds", seconds)};
}

auto members(Is<UnsupportedMessage> auto& message) {
  auto& [type] = message;
  return std::tuple{named("type", type)};
}

auto members(Is<Quote> auto& quote) {
  auto& [stanzaID, sender, part, words] = quote;
  return std::tuple{named("id", stanzaID), named("sender", sender), named("part", part), named("words", words)};
}

auto members(Is<Reaction> auto& reaction) {
  auto& [emoji, person, count, milliseconds] = reaction;
  return std::tuple{named("emoji", emoji), named("person", person), named("count", count),
                    named("milliseconds", milliseconds)};
}

auto members(Is<MessageMarks> auto& marks) {
  auto& [isForwarded, isStarred, isViewOnce, isGIF, isRound] = marks;
  return std::tuple{named("forwarded", isForwarded), named("starred", isStarred), named("viewOnce", isViewOnce),
                    named("gif", isGIF), named("round", isRound)};
}

auto members(Is<MessageDetails> auto& details) {
  auto& [content, quote, reactions, marks, heading] = details;
  return std::tuple{named("content", content), named("quote", quote), named("reactions", reactions),
                    named("marks", marks), named("heading", heading)};
}

// The overloads are the table of what contents are called.
template <typename Content>
using As = std::type_identity<Content>;

constexpr std::string_view kindOf(As<std::monostate>) { return ""; }
constexpr std::string_view kindOf(As<SharedLocation>) { return "place"; }
constexpr std::string_view kindOf(As<SharedContacts>) { return "contacts"; }
constexpr std::string_view kindOf(As<LinkPreview>) { return "link"; }
constexpr std::string_view kindOf(As<Poll>) { return "poll"; }
constexpr std::string_view kindOf(As<CallRecord>) { return "call"; }
constexpr std::string_view kindOf(As<GroupInvite>) { return "invite"; }
constexpr std::string_view kindOf(As<Product>) { return "product"; }
constexpr std::string_view kindOf(As<BusinessText>) { return "business"; }
constexpr std::string_view kindOf(As<DeletedMessage>) { return "deleted"; }
constexpr std::string_view kindOf(As<WaitingMessage>) { return "waiting"; }
constexpr std::string_view kindOf(As<MissingMedia>) { return "missing"; }
constexpr std::string_view kindOf(As<Notice>) { return "notice"; }
constexpr std::string_view kindOf(As<UnsupportedMessage>) { return "unsupported"; }

}  // namespace MessageFactNames
