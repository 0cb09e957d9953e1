#include "Tidewell/Services/FolderListing.h"

#include <QCollator>
#include <QLocale>
#include <QString>
#include <algorithm>
#include <utility>

#include "Tidewell/Services/PathURL.h"
#include "TidewellCore/Platform/Text.h"

namespace fs = std::filesystem;

namespace {

// The user's; English where that would only compare bytes.
QLocale sortingLocale() {
  const QLocale own;
  return own.language() == QLocale::C ? QLocale(QLocale::English) : own;
}

void sortForPeople(std::vector<fs::path>& names) {
  QCollator collator(sortingLocale());
  collator.setNumericMode(true);
  collator.setCaseSensitivity(Qt::CaseInsensitive);
  std::vector<std::pair<QCollatorSortKey, fs::path>> keyed;
  keyed.reserve(names.size());
  for (fs::path& name : names) {
    QCollatorSortKey key = collator.sortKey(pathText(name));
    keyed.emplace_back(std::move(key), std::move(name));
  }
  std::ranges::sort(keyed, [](const auto& one, const auto& other) {
    const int order = one.first.compare(other.first);
    return order != 0 ? order < 0 : one.second < other.second;
  });
  std::ranges::transform(keyed, names.begin(), [](auto& each) { return std::move(each.second); });
}

bool isListed(const fs::directory_entry& entry) {
  std::error_code error;
  return !entry.path().filename().native().starts_with('.') && entry.is_directory(error);
}

bool isFolder(const fs::path& folder) {
  std::error_code error;
  return fs::is_directory(folder, error);
}

// Without the separator at its end, which would make its last name an empty one.
fs::path withoutLastSeparator(const fs::path& folder) { return folder.has_filename() ? folder : folder.parent_path(); }

FolderFault faultOf(const std::error_code& error) {
  if (error == std::errc::file_exists) return FolderFault::nameTaken;
  const bool isForbidden = error == std::errc::permission_denied || error == std::errc::read_only_file_system ||
                           error == std::errc::operation_not_permitted;
  return isForbidden ? FolderFault::notPermitted : FolderFault::notCreated;
}

}  // namespace

FolderListing Folders::listing(const fs::path& folder) {
  FolderListing listing{.folder = folder};
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (isListed(*entry)) listing.names.push_back(entry->path().filename());
  }
  listing.isReadable = !error;
  sortForPeople(listing.names);
  return listing;
}

fs::path Folders::nearest(fs::path folder) {
  folder = withoutLastSeparator(folder.lexically_normal());
  while (!isFolder(folder) && folder != folder.parent_path()) folder = folder.parent_path();
  return folder;
}

fs::path Folders::typed(const std::string& text, const fs::path& shown, const fs::path& home) {
  const bool startsAtHome = text == "~" || text.starts_with("~/");
  const fs::path whole = startsAtHome ? home / text.substr(std::min<std::size_t>(text.size(), 2)) : shown / text;
  return withoutLastSeparator(whole.lexically_normal());
}

std::optional<FolderFault> Folders::create(const fs::path& parent, const std::string& name) {
  if (Text::trimmedPart(name).empty() || name == "." || name == "..") return FolderFault::noName;
  if (name.find(fs::path::preferred_separator) != std::string::npos) return FolderFault::nameOfSeveralFolders;
  std::error_code error;
  if (fs::create_directory(parent / name, error)) return std::nullopt;
  return error ? faultOf(error) : FolderFault::nameTaken;
}
