#include "Tests/Support/BackupContents.h"

#include <utility>

#include "Tests/Support/TestCrypto.h"

namespace Fixture {

std::string stanzaIDOf(std::int64_t pk) { return sha1Hex(bytesOf(std::to_string(pk))).substr(0, 20); }

std::string mediaPath(const std::string& jid, const std::string& uuid, const std::string& extension) {
  return "Media/" + jid + "/" + uuid.substr(0, 1) + "/" + uuid.substr(1, 1) + "/" + uuid + "." + extension;
}

BackupFile profilePicture(const std::string& user, std::int64_t number, Bytes content, const std::string& extension) {
  return {.relativePath = "Media/Profile/" + user + "-" + std::to_string(number) + "." + extension,
          .content = std::move(content)};
}

BackupFile thumbnail(const std::string& localPath, Bytes content) {
  return {.relativePath = "Message/" + localPath.substr(0, localPath.rfind('.')) + ".thumb",
          .content = std::move(content)};
}

}  // namespace Fixture
