#include "TidewellCore/UsedNames.h"

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/NameFamily.h"

namespace {

// Of a long name the spelling counts as well, and no other name's variants are its own.
std::string familyOf(std::string_view name) {
  return NameFamily::isOne(name) ? NameFamily::of(name, 1) : "/" + std::string(name);
}

}  // namespace

bool UsedNames::contains(std::string_view name) const { return keys_.contains(FileNaming::normalizedKey(name)); }

bool UsedNames::take(std::string_view name) { return keys_.insert(FileNaming::normalizedKey(name)).second; }

std::string UsedNames::uniquify(std::string_view desired) {
  if (take(desired)) return std::string(desired);
  int& number = next_.try_emplace(familyOf(desired), 2).first->second;
  for (;; ++number) {
    std::string candidate = FileNaming::variant(desired, number);
    if (take(candidate)) return candidate;
  }
}
