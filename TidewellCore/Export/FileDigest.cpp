#include "TidewellCore/Export/FileDigest.h"

#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/FileDescriptor.h"

std::string FileDigest::of(const std::filesystem::path& file, const CancellationCheck& isCancelled) {
  constexpr std::size_t pieceSize = 256 << 10;  // bytes
  FileDescriptor descriptor = FileDescriptor::openForReading(file);
  SHA256 digest;
  Bytes piece(pieceSize);
  while (const std::size_t count = descriptor.read(piece)) {
    throwIfCancelled(isCancelled);
    digest.add(ByteView(piece).first(count));
  }
  return Base64::encode(digest.finish());
}
