#include "TidewellCore/Archive/MessageInfo.h"

#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/ReadableText.h"

namespace {

using JSONMembers::member;
using JSONMembers::textOf;
using JSONMembers::textsOf;
using JSONMembers::valueOf;
using ReadableText::cleaned;

void add(std::string_view name, const std::optional<std::string>& words, Json::Object& json) {
  if (words) json.emplace(name, Wording::line(*words));
}

Json::Array lines(const std::vector<std::string>& texts) {
  Json::Array array;
  for (const std::string& text : texts) array.emplace_back(Wording::line(text));
  return array;
}

// One function for each kind; the overloads are the table.
struct Facts {
  const Wording& wording;

  Json::Object operator()(const std::monostate&) const { return {}; }

  Json::Object operator()(const SharedLocation& location) const {
    Json::Object json{{"live", location.isLive}};
    add("name", location.name, json);
    add("address", location.address, json);
    if (!location.coordinates) return json;
    json.emplace("lat", location.coordinates->latitude);
    json.emplace("lon", location.coordinates->longitude);
    return json;
  }

  Json::Object operator()(const SharedContacts& contacts) const {
    Json::Array people;
    for (const SharedContact& contact : contacts.contacts) {
      people.emplace_back(Json::Object{
          {"emails", lines(contact.emails)}, {"name", Wording::line(contact.name)}, {"phones", lines(contact.phones)}});
    }
    return {{"people", std::move(people)}};
  }

  Json::Object operator()(const LinkPreview& preview) const {
    Json::Object json{{"url", Wording::line(preview.url)}};
    add("title", preview.title, json);
    add("summary", preview.summary, json);
    return {{"link", std::move(json)}};
  }

  Json::Object operator()(const Poll& poll) const {
    Json::Array options;
    for (const PollOption& option : poll.options) {
      Json::Array names;
      for (const Person& voter : option.voters) names.emplace_back(wording.name(voter));
      options.emplace_back(Json::Object{{"names", std::move(names)}, {"words", Wording::line(option.words)}});
    }
    return {{"options", std::move(options)}, {"question", Wording::line(poll.question)}};
  }

  Json::Object operator()(const CallRecord& call) const {
    Json::Object json{{"missed", call.isMissed}};
    if (call.isVideo) json.emplace("video", *call.isVideo);
    if (call.seconds) json.emplace("seconds", *call.seconds);
    return json;
  }

  Json::Object operator()(const GroupInvite& invite) const {
    Json::Object json;
    add("group", invite.groupName, json);
    return json;
  }

  Json::Object operator()(const Product& product) const {
    Json::Object json{{"title", Wording::line(product.title)}};
    if (product.thousandths && product.currency) {
      json.emplace("price", wording.price(*product.thousandths, *product.currency));
    }
    if (product.description) json.emplace("description", cleaned(*product.description));
    return json;
  }

  Json::Object operator()(const BusinessText& text) const {
    Json::Array buttons;
    for (const BusinessButton& button : text.buttons) {
      Json::Object json{{"words", Wording::line(button.words)}};
      add("url", button.target, json);
      buttons.emplace_back(std::move(json));
    }
    return {{"buttons", std::move(buttons)}};
  }

  Json::Object operator()(const DeletedMessage& message) const {
    Json::Object json;
    add("by", message.remover ? wording.knownName(*message.remover) : std::nullopt, json);
    return json;
  }

  Json::Object operator()(const WaitingMessage&) const { return {}; }

  Json::Object operator()(const MissingMedia& media) const {
    Json::Object json{{"part", rawValue(media.part)}};
    add("name", media.fileName, json);
    if (media.seconds) json.emplace("seconds", *media.seconds);
    return json;
  }

  Json::Object operator()(const Notice& notice) const {
    return {{"code", notice.code}, {"type", rawValue(notice.kind)}};
  }

  Json::Object operator()(const UnsupportedMessage& message) const { return {{"type", message.type}}; }
};

struct Kind {
  ArchiveKind operator()(const std::monostate&) const { return ArchiveKind::none; }
  ArchiveKind operator()(const LinkPreview&) const { return ArchiveKind::none; }
  ArchiveKind operator()(const SharedLocation&) const { return ArchiveKind::place; }
  ArchiveKind operator()(const SharedContacts&) const { return ArchiveKind::contacts; }
  ArchiveKind operator()(const Poll&) const { return ArchiveKind::poll; }
  ArchiveKind operator()(const CallRecord&) const { return ArchiveKind::call; }
  ArchiveKind operator()(const GroupInvite&) const { return ArchiveKind::invite; }
  ArchiveKind operator()(const Product&) const { return ArchiveKind::product; }
  ArchiveKind operator()(const BusinessText&) const { return ArchiveKind::business; }
  ArchiveKind operator()(const DeletedMessage&) const { return ArchiveKind::deleted; }
  ArchiveKind operator()(const WaitingMessage&) const { return ArchiveKind::waiting; }
  ArchiveKind operator()(const MissingMedia&) const { return ArchiveKind::missing; }
  ArchiveKind operator()(const Notice&) const { return ArchiveKind::notice; }
  ArchiveKind operator()(const UnsupportedMessage&) const { return ArchiveKind::unsupported; }
};

}  // namespace

ArchiveKind MessageInfo::kindOf(const MessageContent& content) { return std::visit(Kind(), content); }

Json::Object MessageInfo::of(const MessageContent& content, const Wording& wording) {
  return std::visit(Facts{wording}, content);
}

std::string MessageInfo::question(const Json::Object& info) { return valueOf<std::string>(info, "question"); }

std::vector<MessageInfo::Choice> MessageInfo::choices(const Json::Object& info) {
  std::vector<Choice> choices;
  for (const Json& option : valueOf<Json::Array>(info, "options")) {
    const auto* json = option.as<Json::Object>();
    if (json) choices.push_back({.words = valueOf<std::string>(*json, "words"), .names = textsOf(*json, "names")});
  }
  return choices;
}

MissingMedia MessageInfo::missing(const Json::Object& info) {
  const auto* seconds = member<std::int64_t>(info, "seconds");
  return {.part = fromRawValue<MessagePart>(valueOf<std::string>(info, "part")).value_or(MessagePart::photo),
          .seconds = seconds ? std::optional(*seconds) : std::nullopt,
          .fileName = textOf(info, "name")};
}

std::optional<std::string> MessageInfo::caption(const Json::Object& info) { return textOf(info, "caption"); }

std::optional<LinkPreview> MessageInfo::link(const Json::Object& info) {
  const auto* link = member<Json::Object>(info, "link");
  if (link == nullptr) return std::nullopt;
  return LinkPreview{
      .url = valueOf<std::string>(*link, "url"), .title = textOf(*link, "title"), .summary = textOf(*link, "summary")};
}

std::optional<Coordinates> MessageInfo::coordinates(const Json::Object& info) {
  const auto* latitude = member<double>(info, "lat");
  const auto* longitude = member<double>(info, "lon");
  if (latitude == nullptr || longitude == nullptr) return std::nullopt;
  return Coordinates{.latitude = *latitude, .longitude = *longitude};
}
