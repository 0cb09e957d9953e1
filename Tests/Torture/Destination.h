#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Torture {

// A file that people see in an export.
struct SeenFile {
  std::string path;  // relative to the destination, parts divided by "/"
  std::string sha1;
  std::uintmax_t size = 0;
  std::filesystem::file_time_type modified;

  bool operator==(const SeenFile&) const = default;
};

// What stands in a destination at one moment. Links are not followed.
namespace Destination {

// Ascending by path. Hidden files and those in hidden folders are left out.
std::vector<SeenFile> look(const std::filesystem::path& root);
std::set<std::string> contents(const std::vector<SeenFile>& files);

// Whether it is named as what an export makes anew each time: pages, transcripts, data.
bool isPage(const std::string& path);

// By JID, as the export remembers it; empty where it remembers none.
std::map<std::string, std::string> folders(const std::filesystem::path& root);

std::string textOf(const std::filesystem::path& file);
// All message blocks of the archive in one text.
std::string blocks(const std::filesystem::path& root);
std::size_t count(const std::string& text, const std::string& part);

}  // namespace Destination
}  // namespace Torture
