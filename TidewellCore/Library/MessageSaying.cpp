#include "TidewellCore/Library/MessageSaying.h"

#include "TidewellCore/Platform/JSONMembers.h"

namespace {

template <typename... Types>
bool isOneOf(const MessageContent& content) {
  return (std::holds_alternative<Types>(content) || ...);
}

bool isPlaceholderContent(const MessageContent& content) {
  return isOneOf<WaitingMessage, UnsupportedMessage, DeletedMessage>(content);
}

}  // namespace

MessageSaying::Amount MessageSaying::of(const KeptMessage& message, const MessageContent& content) {
  if (message.page && isPlaceholder(kindOnPage(message))) return Amount::placeholder;
  if (isPlaceholderContent(content)) return Amount::placeholder;
  const bool isSaying = message.page || !message.text.empty() || message.medium || !isOneOf<std::monostate>(content);
  return isSaying ? Amount::something : Amount::nothing;
}

bool MessageSaying::isLoss(const MessageContent& content) {
  return isPlaceholderContent(content) || isOneOf<MissingMedia>(content);
}

std::string MessageSaying::kindOnPage(const KeptMessage& message) {
  const auto json = Json::parse(message.page.value_or(""));
  const auto* object = json ? json->as<Json::Object>() : nullptr;
  return object == nullptr ? std::string() : JSONMembers::valueOf<std::string>(*object, "kind");
}

bool MessageSaying::isPlaceholder(std::string_view kind) {
  return kind == "deleted" || kind == "waiting" || kind == "unsupported";
}
