#include "TidewellCore/ExportPlace.h"

#include "TidewellCore/Platform/PathText.h"

std::filesystem::path ExportPlace::in(const std::filesystem::path& contentRoot) const {
  return contentRoot / PathText::path(folder) / PathText::path(name);
}
