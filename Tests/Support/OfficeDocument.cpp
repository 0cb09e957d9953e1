#include "Tests/Support/OfficeDocument.h"

#include <cstdint>
#include <string_view>

namespace Fixture {

namespace {

void put(Bytes& target, std::size_t value, unsigned byteCount) {
  for (unsigned byte = 0; byte < byteCount; ++byte) target.push_back(static_cast<std::uint8_t>(value >> (8 * byte)));
}

// CRC-32 as ZIP, PNG and gzip have it (RFC 1952, section 8).
std::uint32_t crc32(ByteView content) {
  std::uint32_t sum = 0xFFFFFFFFU;
  for (const std::uint8_t byte : content) {
    sum ^= byte;
    for (int bit = 0; bit < 8; ++bit) sum = (sum & 1U) != 0 ? sum >> 1U ^ 0xEDB88320U : sum >> 1U;
  }
  return ~sum;
}

// What the local header and the central directory say alike: from the version needed to the name's length.
void putDescription(Bytes& target, const ZipMember& member) {
  put(target, 20, 2);
  put(target, 0x0800, 2);  // names are UTF-8
  put(target, 0, 2);       // stored
  put(target, 0, 2);
  put(target, 0x58A1, 2);  // 2024-05-01
  put(target, crc32(member.content), 4);
  put(target, member.content.size(), 4);
  put(target, member.content.size(), 4);
  put(target, member.name.size(), 2);
  put(target, 0, 2);
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '&') {
      result += "&amp;";
    } else if (letter == '<') {
      result += "&lt;";
    } else {
      result += letter;
    }
  }
  return result;
}

std::string paragraph(std::string_view text, bool heading) {
  const std::string look = heading ? "<w:rPr><w:b/><w:sz w:val=\"36\"/></w:rPr>" : "";
  return "<w:p><w:r>" + look + "<w:t xml:space=\"preserve\">" + escaped(text) + "</w:t></w:r></w:p>";
}

constexpr std::string_view declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr std::string_view contentTypes =
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
    "<Override PartName=\"/word/document.xml\" ContentType="
    "\"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/></Types>";
constexpr std::string_view relationships =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"rId1\" Type="
    "\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" "
    "Target=\"word/document.xml\"/></Relationships>";

}  // namespace

Bytes storedZip(const std::vector<ZipMember>& members) {
  Bytes archive;
  Bytes directory;
  for (const ZipMember& member : members) {
    append(directory, bytesOf("PK\x01\x02"));
    put(directory, 20, 2);
    putDescription(directory, member);
    put(directory, 0, 6);  // comment, disk, internal attributes
    put(directory, 0, 4);  // external attributes
    put(directory, archive.size(), 4);
    append(directory, bytesOf(member.name));
    append(archive, bytesOf("PK\x03\x04"));
    putDescription(archive, member);
    append(archive, bytesOf(member.name));
    append(archive, member.content);
  }
  const std::size_t start = archive.size();
  append(archive, directory);
  append(archive, bytesOf("PK\x05\x06"));
  put(archive, 0, 4);
  put(archive, members.size(), 2);
  put(archive, members.size(), 2);
  put(archive, directory.size(), 4);
  put(archive, start, 4);
  put(archive, 0, 2);
  return archive;
}

Bytes wordDocument(const std::string& heading, const std::vector<std::string>& paragraphs) {
  std::string body = paragraph(heading, true);
  for (const std::string& text : paragraphs) body += paragraph(text, false);
  const std::string document = std::string(declaration) +
                               "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">"
                               "<w:body>" +
                               body + "</w:body></w:document>";
  return storedZip({{"[Content_Types].xml", bytesOf(std::string(declaration).append(contentTypes))},
                    {"_rels/.rels", bytesOf(std::string(declaration).append(relationships))},
                    {"word/document.xml", bytesOf(document)}});
}

}  // namespace Fixture
