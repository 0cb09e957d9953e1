#include "TidewellCore/CleanUp/MergeJournal.h"

#include <functional>

#include "TidewellCore/Destination/OwnFiles.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/JSONMembers.h"
#include "TidewellCore/Platform/JsonFile.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = std::int64_t{1} << 30;
constexpr std::int64_t version = 1;
constexpr const char* filesName = "files";
constexpr const char* foldersName = "folders";

Json::Object dictionary(const std::map<std::string, std::string>& places) {
  Json::Object object;
  for (const auto& [from, to] : places) object.emplace(from, to);
  return object;
}

using Add = std::function<void(const std::string& from, const std::string& to)>;

void addAll(const Json::Object& document, const char* name, const Add& add) {
  const auto* places = JSONMembers::member<Json::Object>(document, name);
  if (places == nullptr) return;
  for (const auto& [from, value] : *places) {
    if (const auto* to = value.as<std::string>()) add(from, *to);
  }
}

}  // namespace

MergeJournal::MergeJournal(fs::path contentRoot) : contentRoot_(std::move(contentRoot)) {
  const std::optional<Json::Object> document =
      JsonFile::readIfThere(contentRoot_ / OwnFiles::cleanUpJournal, largestFile);
  if (!document) return;
  addAll(*document, filesName, [this](const std::string& from, const std::string& to) { addFile(from, to); });
  addAll(*document, foldersName, [this](const std::string& from, const std::string& to) { addFolder(from, to); });
}

void MergeJournal::save() const {
  Files::writeAtomically(
      contentRoot_ / OwnFiles::cleanUpJournal,
      JsonFile::content(
          {{filesName, dictionary(files_.places)}, {foldersName, dictionary(folders_.places)}, {"version", version}}));
}

void MergeJournal::remove() const { Files::remove(contentRoot_ / OwnFiles::cleanUpJournal); }

void MergeJournal::Places::add(const std::string& from, const std::string& to) {
  places.insert_or_assign(from, to);
  placesByKey.insert_or_assign(FileNaming::normalizedKey(from), to);
}

const std::string* MergeJournal::Places::next(const std::string& place) const {
  if (const auto found = places.find(place); found != places.end()) return &found->second;
  const auto found = placesByKey.find(FileNaming::normalizedKey(place));
  return found == placesByKey.end() ? nullptr : &found->second;
}

bool MergeJournal::stands(const std::string& place) const {
  return Files::kindOf(contentRoot_ / PathText::path(place)) != Files::Kind::nothing;
}

// A place that was moved to may itself have been moved from later.
std::optional<std::string> MergeJournal::newPlace(const Places& places, const std::string& former) const {
  const std::string* next = places.next(former);
  if (next == nullptr || stands(former)) return std::nullopt;
  for (std::size_t hops = 0; next != nullptr && hops <= places.places.size(); ++hops) {
    if (stands(*next)) return *next;
    next = places.next(*next);
  }
  return std::nullopt;
}
