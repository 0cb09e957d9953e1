#include "TidewellCore/Platform/JsonFile.h"

#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Files.h"

std::optional<Json::Object> JsonFile::readIfThere(const std::filesystem::path& file, std::int64_t limit) {
  const std::optional<Bytes> content = Files::readIfThere(file, limit);
  std::optional<Json> document = content ? Json::parse(textOf(*content)) : std::nullopt;
  auto* object = document ? document->as<Json::Object>() : nullptr;
  return object ? std::optional(std::move(*object)) : std::nullopt;
}

std::string JsonFile::content(Json::Object object) { return Json(std::move(object)).write(true) + "\n"; }
