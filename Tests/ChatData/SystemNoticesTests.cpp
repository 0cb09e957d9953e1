#include "TidewellCore/ChatData/SystemNotices.h"

#include <gtest/gtest.h>

#include <map>

namespace {

constexpr const char* anaJID = "15550000002@s.whatsapp.net";

MessageContent notice(std::int64_t code) { return SystemNotices::read({.code = code}); }

TEST(SystemNotices, EveryKnownCodeHasItsKind) {
  using enum NoticeKind;
  const std::map<std::int64_t, NoticeKind> kinds = {
      {2, encrypted},         {3, securityCodeChanged}, {5, memberChangedNumber},  {6, memberChangedNumber},
      {25, businessOfficial}, {26, businessChat},       {29, businessRenamed},     {30, businessNoLonger},
      {34, contactBlocked},   {35, contactUnblocked},   {36, securityCodeChanged}, {38, businessOfficial},
      {47, messageKept},      {51, privacyChanged},     {56, contactAdded}};
  for (const auto& [code, kind] : kinds) {
    EXPECT_EQ(notice(code), MessageContent(Notice{.kind = kind, .code = code})) << code;
  }
}

TEST(SystemNotices, CallsAreCalls) {
  const CallRecord missedVoice{.isVideo = false, .isMissed = true};
  const CallRecord missedVideo{.isVideo = true, .isMissed = true};
  const CallRecord groupVideo{.isVideo = true, .isGroup = true};
  for (const std::int64_t code : {1, 45}) EXPECT_EQ(notice(code), MessageContent(missedVoice)) << code;
  for (const std::int64_t code : {4, 46}) EXPECT_EQ(notice(code), MessageContent(missedVideo)) << code;
  EXPECT_EQ(notice(21), MessageContent(CallRecord{.isVideo = false, .isGroup = true, .isMissed = true}));
  EXPECT_EQ(notice(22), MessageContent(CallRecord{.isVideo = true, .isGroup = true, .isMissed = true}));
  for (const std::int64_t code : {40, 41}) EXPECT_EQ(notice(code), MessageContent(groupVideo)) << code;
}

TEST(SystemNotices, ACodeThatNobodyKnowsIsKept) {
  for (const std::int64_t code : {0, 7, 58, 91, -1}) {
    EXPECT_EQ(notice(code), MessageContent(Notice{.kind = NoticeKind::unknownNotice, .code = code})) << code;
  }
}

TEST(SystemNotices, TheMemberIsTheOneItIsAbout) {
  EXPECT_EQ(SystemNotices::read({.code = 5, .text = "whatever", .memberJID = anaJID}),
            MessageContent(Notice{.kind = NoticeKind::memberChangedNumber, .code = 5, .actor = Person{.jid = anaJID}}));
}

TEST(SystemNotices, WhoseRowItIsSaysNothing) {
  EXPECT_EQ(SystemNotices::read({.code = 5, .isFromMe = true}),
            MessageContent(Notice{.kind = NoticeKind::memberChangedNumber, .code = 5}));
}

TEST(SystemNotices, AChannelHasNoticesOfItsOwn) {
  EXPECT_EQ(SystemNotices::ofChannel({.code = 1}), (Notice{.kind = NoticeKind::channelCreated, .code = 1}));
  EXPECT_EQ(SystemNotices::ofChannel({.code = 4}), (Notice{.kind = NoticeKind::channelPrivacyChanged, .code = 4}));
  EXPECT_EQ(SystemNotices::ofChannel({.code = 2}), (Notice{.kind = NoticeKind::unknownNotice, .code = 2}));
}

}  // namespace
