#include "TidewellCore/Destination/EarlierCopies.h"

#include <fmt/format.h>

#include "TidewellCore/FileNaming.h"
#include "TidewellCore/NameFamily.h"

namespace {

std::string placeOf(std::string_view family, int digits, std::int64_t size) {
  return fmt::format("{}/{}/{}", family, digits, size);
}

int digitsOf(int number) { return static_cast<int>(fmt::formatted_size("{}", number)); }

}  // namespace

EarlierCopies::EarlierCopies(const DestinationIndex::Files& files, const IsTaken& isTaken) {
  for (const auto& [key, file] : files) {
    if (isTaken && isTaken(file)) continue;
    Copy& copy = byKey_.emplace(key, Copy{.name = file.name, .size = file.size}).first->second;
    for (const auto& [family, number] : NameFamily::readings(key)) {
      const int digits = digitsOf(number);
      variants_[placeOf(family, digits, file.size)].emplace(number, &copy);
      mostDigits_ = std::max(mostDigits_, digits);
    }
  }
}

std::optional<std::string> EarlierCopies::takeItself(std::string_view desired, std::int64_t size) {
  const auto itself = byKey_.find(FileNaming::normalizedKey(desired));
  if (size < 0 || itself == byKey_.end() || itself->second.size != size || itself->second.isTaken) return std::nullopt;
  itself->second.isTaken = true;
  return itself->second.name;
}

std::optional<std::string> EarlierCopies::take(std::string_view desired, std::int64_t size) {
  if (size < 0) return std::nullopt;
  if (auto itself = takeItself(desired, size)) return itself;
  std::string family;
  for (int digits = 1; digits <= mostDigits_; ++digits) {
    if (digits == 1 || !NameFamily::isOne(desired)) family = NameFamily::of(desired, digits);
    if (auto name = takeVariant(placeOf(family, digits, size))) return name;
  }
  return std::nullopt;
}

std::optional<std::string> EarlierCopies::takeVariant(const std::string& place) {
  const auto found = variants_.find(place);
  if (found == variants_.end()) return std::nullopt;
  std::map<int, Copy*>& byNumber = found->second;
  while (!byNumber.empty()) {
    Copy& copy = *byNumber.begin()->second;
    byNumber.erase(byNumber.begin());
    if (copy.isTaken) continue;
    copy.isTaken = true;
    return copy.name;
  }
  return std::nullopt;
}
