#include "TidewellCore/ChatData/SystemNotices.h"

#include <algorithm>
#include <array>
#include <span>

namespace {

using enum NoticeKind;

struct Code {
  std::int64_t code = 0;
  NoticeKind kind = unknownNotice;
};

constexpr std::array systemCodes{
    Code{2, encrypted},           Code{3, securityCodeChanged},  Code{5, memberChangedNumber},
    Code{6, memberChangedNumber}, Code{25, businessOfficial},    Code{26, businessChat},
    Code{29, businessRenamed},    Code{30, businessNoLonger},    Code{34, contactBlocked},
    Code{35, contactUnblocked},   Code{36, securityCodeChanged}, Code{38, businessOfficial},
    Code{47, messageKept},        Code{51, privacyChanged},      Code{56, contactAdded},
};

constexpr std::array channelCodes{Code{1, channelCreated}, Code{4, channelPrivacyChanged}};

struct CallCode {
  std::int64_t code = 0;
  bool isVideo = false;
  bool isGroup = false;
  bool isMissed = true;
};

constexpr std::array callCodes{
    CallCode{.code = 1},
    CallCode{.code = 45},
    CallCode{.code = 4, .isVideo = true},
    CallCode{.code = 46, .isVideo = true},
    CallCode{.code = 21, .isGroup = true},
    CallCode{.code = 22, .isVideo = true, .isGroup = true},
    CallCode{.code = 40, .isVideo = true, .isGroup = true, .isMissed = false},
    CallCode{.code = 41, .isVideo = true, .isGroup = true, .isMissed = false},
};

Notice notice(const NoticeRow& row, std::span<const Code> codes) {
  const auto found = std::ranges::find(codes, row.code, &Code::code);
  if (found == codes.end()) return {.kind = unknownNotice, .code = row.code};
  return {.kind = found->kind, .code = row.code, .actor = row.member()};
}

}  // namespace

MessageContent SystemNotices::read(const NoticeRow& row) {
  const auto* call = std::ranges::find(callCodes, row.code, &CallCode::code);
  if (call == callCodes.end()) return notice(row, systemCodes);
  return CallRecord{.isVideo = call->isVideo, .isGroup = call->isGroup, .isMissed = call->isMissed};
}

Notice SystemNotices::ofChannel(const NoticeRow& row) { return notice(row, channelCodes); }
