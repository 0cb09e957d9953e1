#include "Tests/Support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "Tests/Support/TestCrypto.h"

namespace Fixture {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (fs::temp_directory_path() / "tidewell-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("No temporary folder could be made.");
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

Bytes readFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary | std::ios::ate);
  if (!stream) throw std::runtime_error("Cannot read " + file.string());
  Bytes content(static_cast<std::size_t>(stream.tellg()));
  stream.seekg(0);
  stream.read(reinterpret_cast<char*>(content.data()), static_cast<std::streamsize>(content.size()));
  if (!stream) throw std::runtime_error("Cannot read " + file.string());
  return content;
}

void writeFile(const fs::path& file, ByteView content) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  stream.close();
  if (!stream) throw std::runtime_error("Cannot write " + file.string());
}

void writeFile(const fs::path& file, std::string_view text) { writeFile(file, bytesOf(text)); }

std::map<std::string, TreeEntry> treeSnapshot(const fs::path& root) {
  std::map<std::string, TreeEntry> snapshot;
  for (const auto& item : fs::recursive_directory_iterator(root)) {
    TreeEntry entry{.type = item.symlink_status().type()};
    if (entry.type == fs::file_type::symlink) {
      entry.sha1 = sha1Hex(bytesOf(fs::read_symlink(item.path()).string()));
    } else {
      entry.modified = item.last_write_time();
    }
    if (entry.type == fs::file_type::regular) {
      entry.size = item.file_size();
      entry.sha1 = sha1Hex(readFile(item.path()));
    }
    snapshot.emplace(item.path().lexically_relative(root).generic_string(), entry);
  }
  return snapshot;
}

}  // namespace Fixture
