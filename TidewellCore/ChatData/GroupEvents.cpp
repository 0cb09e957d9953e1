#include "TidewellCore/ChatData/GroupEvents.h"

#include <algorithm>
#include <array>

#include "TidewellCore/ChatData/BlobText.h"
#include "TidewellCore/ChatData/StoredJID.h"
#include "TidewellCore/Platform/JSONMembers.h"

namespace {

const Person owner{.isOwner = true};

std::string_view parameterOf(const NoticeRow& row) {
  const std::string_view text = row.text.value_or("");
  return text.size() <= GroupEvents::longestParameter ? text : std::string_view();
}

// The members of a parameter that is a JSON object; none for any other.
class JsonParameter {
 public:
  explicit JsonParameter(const NoticeRow& row) : row_(row), json_(Json::parse(parameterOf(row))) {}

  bool isObject() const { return json_ && json_->as<Json::Object>() != nullptr; }

  std::optional<std::string> words(std::string_view key) const { return BlobText::shortWords(text(key)); }

  std::optional<Person> person(std::string_view key) const {
    return StoredJID::person(text(key).value_or(""), row_.ownJIDs);
  }

 private:
  std::optional<std::string_view> text(std::string_view key) const {
    if (!isObject()) return std::nullopt;
    const auto* text = JSONMembers::member<std::string>(*json_->as<Json::Object>(), key);
    return text == nullptr ? std::nullopt : std::optional<std::string_view>(*text);
  }

  const NoticeRow& row_;
  std::optional<Json> json_;
};

std::optional<std::string> nameIn(const NoticeRow& row) {
  const std::string_view text = parameterOf(row);
  return BlobText::isReadable(text) ? BlobText::shortWords(text) : std::nullopt;
}

// What follows completes a notice that has its kind, its code and its actor.

void addTarget(std::optional<Person> person, Notice& notice) {
  if (person) notice.targets.push_back(std::move(*person));
}

void needTargets(Notice& notice) {
  if (notice.targets.empty()) notice = {.kind = NoticeKind::unknownGroupEvent, .code = notice.code};
}

void asItIs(const NoticeRow&, Notice&) {}

void named(const NoticeRow& row, Notice& notice) { notice.parameter = nameIn(row); }

void renamedInJSON(const NoticeRow& row, Notice& notice) {
  const JsonParameter parameter(row);
  notice.parameter = parameter.words("new_subject");
  if (auto author = parameter.person("author")) notice.actor = std::move(author);
}

void created(const NoticeRow& row, Notice& notice) {
  const JsonParameter parameter(row);
  notice.parameter = parameter.isObject() ? parameter.words("subject") : nameIn(row);
  auto author = parameter.person("author");
  if (author) notice.actor = std::move(author);
  if (!notice.actor) notice.actor = StoredJID::person(row.creatorJID.value_or(""), row.ownJIDs);
}

// The member was added by the person in the text, who may be the same; without a member it was the owner.
void added(const NoticeRow& row, Notice& notice) {
  const auto member = row.member();
  const auto other = row.personInText();
  if (member && member == other) {
    notice.kind = NoticeKind::memberJoined;
    notice.actor = member;
  } else if (row.isFromMe && !member && other) {
    addTarget(other, notice);
  } else {
    notice.targets.push_back(member.value_or(owner));
    notice.actor = row.isFromMe && member ? owner : other;
  }
}

void removed(const NoticeRow& row, Notice& notice) {
  const auto member = row.member();
  const auto other = row.personInText();
  if (!row.isFromMe) notice.actor = other == member ? std::nullopt : other;
  addTarget(member || !row.isFromMe ? member : other, notice);
  needTargets(notice);
}

void left(const NoticeRow& row, Notice& notice) {
  if (!notice.actor) notice.actor = row.personInText();
}

// "actor;member,member"
void severalAdded(const NoticeRow& row, Notice& notice) {
  const std::string_view text = parameterOf(row);
  const auto end = std::min(text.find(';'), text.size());
  if (auto adder = StoredJID::person(text.substr(0, end), row.ownJIDs)) notice.actor = std::move(adder);
  for (std::size_t start = end + 1; start < text.size() && notice.targets.size() < GroupEvents::mostTargets;) {
    const auto comma = std::min(text.find(',', start), text.size());
    addTarget(StoredJID::person(text.substr(start, comma - start), row.ownJIDs), notice);
    start = comma + 1;
  }
  needTargets(notice);
}

void ofOwner(const NoticeRow&, Notice& notice) {
  notice.actor.reset();
  notice.targets = {owner};
}

void ofMember(const NoticeRow&, Notice& notice) {
  addTarget(std::exchange(notice.actor, std::nullopt), notice);
  needTargets(notice);
}

void timer(const NoticeRow& row, Notice& notice) {
  notice.seconds = BlobText::secondsInText(parameterOf(row));
  if (!notice.seconds) notice = {.kind = NoticeKind::unknownGroupEvent, .code = notice.code};
}

void linked(const NoticeRow& row, Notice& notice) {
  const JsonParameter parameter(row);
  notice.parameter = parameter.words("parent_group_name");
  if (auto author = parameter.person("author")) notice.actor = std::move(author);
}

bool isForAll(const NoticeRow& row) { return row.text == "1"; }

void membersByWhom(const NoticeRow& row, Notice& notice) {
  if (isForAll(row)) notice.kind = NoticeKind::membersAddedByAll;
}

void groupsByWhom(const NoticeRow& row, Notice& notice) {
  if (isForAll(row)) notice.kind = NoticeKind::groupsAddedByAll;
}

struct Event {
  std::int64_t code = 0;
  NoticeKind kind = NoticeKind::unknownGroupEvent;
  void (*complete)(const NoticeRow&, Notice&) = asItIs;
};

using enum NoticeKind;

constexpr std::array events{
    Event{1, groupRenamed, named},
    Event{2, memberAdded, added},
    Event{3, memberLeft, left},
    Event{4, groupPictureChanged},
    Event{5, groupPictureRemoved},
    Event{7, memberRemoved, removed},
    Event{9, memberChangedNumber},
    Event{10, adminGained, ofOwner},
    Event{11, adminLost, ofOwner},
    Event{12, groupCreated, created},
    Event{13, communityUnavailable},
    Event{15, memberJoinedByLink},
    Event{17, groupDescriptionChanged},
    Event{18, infoEditedByAdmins},
    Event{19, infoEditedByAll},
    Event{20, messagesSentByAdmins},
    Event{21, messagesSentByAll},
    Event{22, groupDescriptionRemoved},
    Event{23, memberJoinedByInvitation},
    Event{26, timerSet, timer},
    Event{30, memberJoinedFromCommunity},
    Event{31, communityJoined},
    Event{33, communityLeft},
    Event{39, adminGained, ofMember},
    Event{42, membersAddedByAdmins, membersByWhom},
    Event{43, communityForeign},
    Event{50, memberAdded, severalAdded},
    Event{51, communityLinked, linked},
    Event{56, groupRenamed, renamedInJSON},
    Event{57, communityDescriptionChanged},
    Event{60, communityWelcome},
    Event{61, communityJoined},
    Event{64, groupsAddedByAdmins, groupsByWhom},
};

}  // namespace

Notice GroupEvents::read(const NoticeRow& row) {
  const auto* event = std::ranges::find(events, row.code, &Event::code);
  if (event == events.end()) return {.kind = unknownGroupEvent, .code = row.code};
  Notice notice{.kind = event->kind, .code = row.code, .actor = row.actor()};
  event->complete(row, notice);
  return notice;
}
