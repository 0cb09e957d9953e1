#include "TidewellCore/Export/FailureLog.h"

void FailureLog::add(const std::exception& error, CopyFailure failure) {
  EarlyEnd::throwWhenDue(error, places_);
  failures_.push_back(std::move(failure));
}
