#include "TidewellCore/Platform/PartialFile.h"

#include "TidewellCore/Platform/Files.h"

PartialFile::PartialFile(const std::filesystem::path& future) : path_(future.parent_path() / Files::partialName()) {}

PartialFile::~PartialFile() {
  if (!path_.empty()) Files::removeQuietly(path_);
}
