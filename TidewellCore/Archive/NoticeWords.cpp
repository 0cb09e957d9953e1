#include "TidewellCore/Archive/NoticeWords.h"

#include <algorithm>
#include <array>

namespace {

using enum NoticeKind;
using Text = std::string_view;

// The texts for a kind: by whom it was done, or whom it happened to.
struct Forms {
  NoticeKind kind = unknownNotice;
  Text byActor;   // {actor} did it
  Text byNobody;  // when nobody is known
  Text byOwner = byActor;
};

constexpr std::array plainForms{
    Forms{unknownGroupEvent, "unknownGroupEvent", "unknownGroupEvent"},
    Forms{unknownNotice, "unknownNotice", "unknownNotice"},
    Forms{groupCreated, "groupCreated", "groupCreatedByNobody"},
    Forms{groupRenamed, "groupRenamed", "groupRenamedByNobody"},
    Forms{groupPictureChanged, "groupPictureChanged", "groupPictureChangedByNobody"},
    Forms{groupPictureRemoved, "groupPictureRemoved", "groupPictureRemovedByNobody"},
    Forms{groupDescriptionChanged, "groupDescriptionChanged", "groupDescriptionChangedByNobody"},
    Forms{groupDescriptionRemoved, "groupDescriptionRemoved", "groupDescriptionRemovedByNobody"},
    Forms{memberJoined, "memberJoined", "memberJoinedByNobody"},
    Forms{memberJoinedByLink, "memberJoinedByLink", "memberJoinedByLinkByNobody"},
    Forms{memberJoinedByInvitation, "memberJoinedByInvitation", "memberJoinedByInvitationByNobody"},
    Forms{memberJoinedFromCommunity, "memberJoinedFromCommunity", "memberJoinedFromCommunityByNobody"},
    Forms{memberLeft, "memberLeft", "memberLeftByNobody"},
    Forms{memberChangedNumber, "memberChangedNumber", "memberChangedNumberByNobody", "memberChangedNumberYou"},
    Forms{infoEditedByAdmins, "infoEditedByAdmins", "infoEditedByAdmins"},
    Forms{infoEditedByAll, "infoEditedByAll", "infoEditedByAll"},
    Forms{messagesSentByAdmins, "messagesSentByAdmins", "messagesSentByAdmins"},
    Forms{messagesSentByAll, "messagesSentByAll", "messagesSentByAll"},
    Forms{membersAddedByAdmins, "membersAddedByAdmins", "membersAddedByAdmins"},
    Forms{membersAddedByAll, "membersAddedByAll", "membersAddedByAll"},
    Forms{groupsAddedByAdmins, "groupsAddedByAdmins", "groupsAddedByAdmins"},
    Forms{groupsAddedByAll, "groupsAddedByAll", "groupsAddedByAll"},
    Forms{timerSet, "timerSet", "timerSetByNobody"},
    Forms{defaultTimerSet, "defaultTimerSet", "defaultTimerSet"},
    Forms{communityUnavailable, "communityUnavailable", "communityUnavailable"},
    Forms{communityJoined, "communityJoined", "communityJoined"},
    Forms{communityLeft, "communityLeft", "communityLeft"},
    Forms{communityLinked, "communityLinked", "communityLinkedByNobody"},
    Forms{communityForeign, "communityForeign", "communityForeignByNobody", "communityForeignYou"},
    Forms{communityDescriptionChanged, "communityDescriptionChanged", "communityDescriptionChangedByNobody"},
    Forms{communityWelcome, "communityWelcome", "communityWelcome"},
    Forms{encrypted, "encrypted", "encrypted"},
    Forms{securityCodeChanged, "securityCodeChanged", "securityCodeChangedByNobody", "securityCodeChangedYou"},
    Forms{businessOfficial, "businessOfficial", "businessOfficial"},
    Forms{businessChat, "businessChat", "businessChat"},
    Forms{businessRenamed, "businessRenamed", "businessRenamed"},
    Forms{businessNoLonger, "businessNoLonger", "businessNoLonger"},
    Forms{contactBlocked, "contactBlocked", "contactBlockedByNobody", "contactBlockedByNobody"},
    Forms{contactUnblocked, "contactUnblocked", "contactUnblockedByNobody", "contactUnblockedByNobody"},
    Forms{contactAdded, "contactAdded", "contactAdded"},
    Forms{messageKept, "messageKept", "messageKeptByNobody"},
    Forms{privacyChanged, "privacyChanged", "privacyChanged"},
    Forms{channelCreated, "channelCreated", "channelCreated"},
    Forms{channelPrivacyChanged, "channelPrivacyChanged", "channelPrivacyChanged"},
};

// In the place of those, where the notice has a parameter.
constexpr std::array namedForms{
    Forms{groupCreated, "groupCreatedNamed", "groupCreatedNamedByNobody"},
    Forms{groupRenamed, "groupRenamedTo", "groupRenamedToByNobody"},
    Forms{communityLinked, "communityLinkedTo", "communityLinkedToByNobody"},
};

// A timer of no length.
constexpr std::array offForms{
    Forms{timerSet, "timerOff", "timerOffByNobody"},
    Forms{defaultTimerSet, "defaultTimerOff", "defaultTimerOff"},
};

// For what happens to people.
struct TargetForms {
  NoticeKind kind = unknownNotice;
  Text byActor;  // {actor} did it to {targets}; empty when nobody is told to do it
  Text toOwner;
  Text toOne;
  Text toSeveral;
};

constexpr std::array targetForms{
    TargetForms{memberAdded, "memberAdded", "memberAddedYou", "memberAddedOne", "memberAddedSeveral"},
    TargetForms{memberRemoved, "memberRemoved", "memberRemovedYou", "memberRemovedOne", "memberRemovedSeveral"},
    TargetForms{adminGained, "", "adminGainedYou", "adminGainedOne", "adminGainedSeveral"},
    TargetForms{adminLost, "", "adminLostYou", "adminLostOne", "adminLostSeveral"},
};

bool isOfPartner(NoticeKind kind) {
  return kind == memberChangedNumber || kind == securityCodeChanged || kind == contactBlocked ||
         kind == contactUnblocked;
}

const Forms& formsOf(const Notice& notice) {
  const auto* named = std::ranges::find(namedForms, notice.kind, &Forms::kind);
  if (notice.parameter && named != namedForms.end()) return *named;
  const auto* off = std::ranges::find(offForms, notice.kind, &Forms::kind);
  if (notice.seconds == 0 && off != offForms.end()) return *off;
  const auto* found = std::ranges::find(plainForms, notice.kind, &Forms::kind);
  return found == plainForms.end() ? plainForms.front() : *found;
}

// Absent also for somebody whom nobody knows, who is as good as nobody.
std::optional<std::string> actorOf(const Notice& notice, const Wording& wording) {
  return notice.actor ? wording.knownName(*notice.actor) : std::nullopt;
}

Text textFor(const TargetForms& forms, const Notice& notice, bool hasActor) {
  if (hasActor && !forms.byActor.empty()) return forms.byActor;
  if (notice.targets.size() > 1) return forms.toSeveral;
  return notice.targets.front().isOwner ? forms.toOwner : forms.toOne;
}

// Of people whom nobody knows only the number is told: "someone", "2 people", "2 more people".
std::string crowd(std::size_t count, bool isFirst, bool isAlone, const Wording& wording) {
  if (count == 1) return wording.say("notices", !isAlone ? "personMore" : isFirst ? "personFirst" : "person");
  return wording.say("notices", isAlone ? "people" : "peopleMore", {{"n", std::to_string(count)}});
}

// `isFirst`: the sentence begins with them.
std::string targetsOf(const Notice& notice, bool isFirst, const Wording& wording) {
  std::vector<std::string> names;
  for (const Person& target : notice.targets) {
    if (!wording.knownName(target)) continue;
    names.push_back(isFirst && names.empty() ? wording.name(target) : wording.nameInside(target));
  }
  const std::size_t others = notice.targets.size() - names.size();
  if (others > 0) names.push_back(crowd(others, isFirst, names.empty(), wording));
  return wording.list(names);
}

std::string toTargets(const TargetForms& forms, const Notice& notice, const Wording& wording) {
  const auto actor = actorOf(notice, wording);
  const Text text = textFor(forms, notice, actor.has_value());
  const bool isFirst = wording.say("notices", text).starts_with("{targets}");
  const std::string targets = targetsOf(notice, isFirst, wording);
  return wording.say("notices", text, {{"actor", actor.value_or("")}, {"targets", targets}});
}

Text textFor(const Forms& forms, const Notice& notice, bool isNamed) {
  if (!isNamed) return forms.byNobody;
  return notice.actor && notice.actor->isOwner ? forms.byOwner : forms.byActor;
}

}  // namespace

std::string NoticeWords::sentence(const Notice& notice, const Wording& wording, std::string_view partner) {
  const auto* toSomebody = std::ranges::find(targetForms, notice.kind, &TargetForms::kind);
  if (toSomebody != targetForms.end() && !notice.targets.empty()) return toTargets(*toSomebody, notice, wording);
  auto actor = actorOf(notice, wording);
  if (!actor && !partner.empty() && isOfPartner(notice.kind)) actor = Wording::line(partner);
  return wording.say("notices", textFor(formsOf(notice), notice, actor.has_value()),
                     {{"actor", actor.value_or("")},
                      {"words", Wording::line(notice.parameter.value_or(""))},
                      {"time", wording.timer(notice.seconds.value_or(0))},
                      {"code", std::to_string(notice.code)}});
}
