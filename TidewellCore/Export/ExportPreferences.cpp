#include "TidewellCore/Export/ExportPreferences.h"

#include <cstdint>
#include <string_view>

#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/Json.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t largestFile = 1 << 20;

// A value of another type than was written: the file is not ours.
struct ForeignValue {};

std::optional<std::string> text(const Json::Object& object, std::string_view key) {
  const auto found = object.find(key);
  if (found == object.end() || found->second.as<std::nullptr_t>() != nullptr) return std::nullopt;
  const auto* value = found->second.as<std::string>();
  if (value == nullptr) throw ForeignValue();
  return *value;
}

std::optional<Bytes> bytes(const Json::Object& object, std::string_view key) {
  const std::optional<std::string> encoded = text(object, key);
  if (!encoded) return std::nullopt;
  std::optional<Bytes> decoded = Base64::decode(*encoded);
  if (!decoded) throw ForeignValue();
  return decoded;
}

ExportPreferences parsed(std::string_view content) {
  const std::optional<Json> document = Json::parse(content);
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  if (object == nullptr) return {};
  return {.lastBackupPath = text(*object, "lastBackupPath"),
          .lastDestinationPath = text(*object, "lastDestinationPath"),
          .lastBackupBookmark = bytes(*object, "lastBackupBookmark"),
          .lastDestinationBookmark = bytes(*object, "lastDestinationBookmark")};
}

void add(Json::Object& object, std::string_view key, const std::optional<std::string>& value) {
  if (value) object.emplace(key, *value);
}

void add(Json::Object& object, std::string_view key, const std::optional<Bytes>& value) {
  if (value) object.emplace(key, Base64::encode(*value));
}

}  // namespace

fs::path ExportPreferences::fileURL(const fs::path& base) { return base / "Lorewick" / "preferences.json"; }

ExportPreferences ExportPreferences::load(const fs::path& url) {
  try {
    return parsed(textOf(Files::read(url, largestFile)));
  } catch (const fs::filesystem_error&) {
    return {};
  } catch (const ForeignValue&) {
    return {};
  }
}

void ExportPreferences::save(const fs::path& url) const {
  Files::makeFolder(url.parent_path());
  Json::Object object;
  add(object, "lastBackupPath", lastBackupPath);
  add(object, "lastDestinationPath", lastDestinationPath);
  add(object, "lastBackupBookmark", lastBackupBookmark);
  add(object, "lastDestinationBookmark", lastDestinationBookmark);
  Files::writeAtomically(url, Json(std::move(object)).write());
}
