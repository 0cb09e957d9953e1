#include "Tidewell/Services/ScopedAccess.h"

#include <utility>

ScopedAccess::ScopedAccess(std::filesystem::path url, bool accessed,
                           std::function<void(const std::filesystem::path&)> stopAccess)
    : url_(std::move(url)), accessed_(accessed), stopAccess_(std::move(stopAccess)) {}

ScopedAccess::~ScopedAccess() {
  if (accessed_ && stopAccess_) stopAccess_(url_);
}
