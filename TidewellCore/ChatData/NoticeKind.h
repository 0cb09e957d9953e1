#pragma once

#include <array>
#include <string_view>
#include <utility>

#include "TidewellCore/Platform/RawValue.h"

// What WhatsApp itself tells in a chat. A is the actor, B, C the targets, X the parameter of the Notice;
// each is named only where the sentence has it.
enum class NoticeKind {
  unknownGroupEvent,
  unknownNotice,

  groupCreated,  // A created the group, X when it was called something
  groupRenamed,  // A called it X
  groupPictureChanged,
  groupPictureRemoved,
  groupDescriptionChanged,
  groupDescriptionRemoved,

  memberAdded,  // A, where known, added B, C
  memberJoined,
  memberJoinedByLink,
  memberJoinedByInvitation,
  memberJoinedFromCommunity,
  memberLeft,
  memberRemoved,  // A, where known, removed B
  memberChangedNumber,
  adminGained,  // B is an admin now
  adminLost,

  infoEditedByAdmins,
  infoEditedByAll,
  messagesSentByAdmins,
  messagesSentByAll,
  membersAddedByAdmins,
  membersAddedByAll,
  groupsAddedByAdmins,
  groupsAddedByAll,

  timerSet,         // A: messages disappear after the seconds; 0 turns it off
  defaultTimerSet,  // the same for every new chat of the owner

  communityUnavailable,
  communityJoined,  // the group was added to it
  communityLeft,
  communityLinked,   // A linked the group to the community X
  communityForeign,  // somebody is not part of it
  communityDescriptionChanged,
  communityWelcome,

  encrypted,
  securityCodeChanged,
  businessOfficial,
  businessChat,
  businessRenamed,
  businessNoLonger,
  contactBlocked,
  contactUnblocked,
  contactAdded,
  messageKept,
  privacyChanged,
  channelCreated,
  channelPrivacyChanged,
};

constexpr std::array<std::pair<NoticeKind, std::string_view>, 48> rawValueTable(NoticeKind) {
  using enum NoticeKind;
  return {{{unknownGroupEvent, "unknownGroupEvent"},
           {unknownNotice, "unknownNotice"},
           {groupCreated, "groupCreated"},
           {groupRenamed, "groupRenamed"},
           {groupPictureChanged, "groupPictureChanged"},
           {groupPictureRemoved, "groupPictureRemoved"},
           {groupDescriptionChanged, "groupDescriptionChanged"},
           {groupDescriptionRemoved, "groupDescriptionRemoved"},
           {memberAdded, "memberAdded"},
           {memberJoined, "memberJoined"},
           {memberJoinedByLink, "memberJoinedByLink"},
           {memberJoinedByInvitation, "memberJoinedByInvitation"},
           {memberJoinedFromCommunity, "memberJoinedFromCommunity"},
           {memberLeft, "memberLeft"},
           {memberRemoved, "memberRemoved"},
           {memberChangedNumber, "memberChangedNumber"},
           {adminGained, "adminGained"},
           {adminLost, "adminLost"},
           {infoEditedByAdmins, "infoEditedByAdmins"},
           {infoEditedByAll, "infoEditedByAll"},
           {messagesSentByAdmins, "messagesSentByAdmins"},
           {messagesSentByAll, "messagesSentByAll"},
           {membersAddedByAdmins, "membersAddedByAdmins"},
           {membersAddedByAll, "membersAddedByAll"},
           {groupsAddedByAdmins, "groupsAddedByAdmins"},
           {groupsAddedByAll, "groupsAddedByAll"},
           {timerSet, "timerSet"},
           {defaultTimerSet, "defaultTimerSet"},
           {communityUnavailable, "communityUnavailable"},
           {communityJoined, "communityJoined"},
           {communityLeft, "communityLeft"},
           {communityLinked, "communityLinked"},
           {communityForeign, "communityForeign"},
           {communityDescriptionChanged, "communityDescriptionChanged"},
           {communityWelcome, "communityWelcome"},
           {encrypted, "encrypted"},
           {securityCodeChanged, "securityCodeChanged"},
           {businessOfficial, "businessOfficial"},
           {businessChat, "businessChat"},
           {businessRenamed, "businessRenamed"},
           {businessNoLonger, "businessNoLonger"},
           {contactBlocked, "contactBlocked"},
           {contactUnblocked, "contactUnblocked"},
           {contactAdded, "contactAdded"},
           {messageKept, "messageKept"},
           {privacyChanged, "privacyChanged"},
           {channelCreated, "channelCreated"},
           {channelPrivacyChanged, "channelPrivacyChanged"}}};
}
