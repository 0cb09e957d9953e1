#pragma once

#include <string>
#include <vector>

#include "Tests/Support/Bytes.h"

namespace Fixture {

struct ZipMember {
  std::string name;
  Bytes content;
};

// A ZIP archive whose members are stored as they are.
Bytes storedZip(const std::vector<ZipMember>& members);

// A Word document (.docx) of a heading and paragraphs, in UTF-8.
Bytes wordDocument(const std::string& heading, const std::vector<std::string>& paragraphs);

}  // namespace Fixture
