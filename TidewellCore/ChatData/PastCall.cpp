#include "TidewellCore/ChatData/PastCall.h"

#include <algorithm>
#include <cmath>

bool isSameCall(const PastCall& call, const CallMessage& message) {
  if (!call.date || !message.date || call.isIncoming == message.isFromMe) return false;
  constexpr double minute = 60;
  const auto lasted = static_cast<double>(std::max(call.call.seconds.value_or(0), message.seconds.value_or(0)));
  return std::abs(unixTime(*call.date) - unixTime(*message.date)) <= lasted + minute;
}
