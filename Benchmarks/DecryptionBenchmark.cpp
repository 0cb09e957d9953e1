#include <fmt/core.h>

#include <string>

#include "Benchmarks/Measure.h"
#include "Tests/Support/TestCrypto.h"
#include "TidewellCore/Crypto/BackupCrypto.h"

void measureDecryption(const std::filesystem::path& folder) {
  const Bytes key(32, 7);
  const auto source = folder / "encrypted";
  // Any whole blocks decrypt to something.
  Measure::makeRandomFile(source, 512);
  const std::int64_t memory =
      Measure::peakMemory([&] { BackupCrypto::decryptFile(source, folder / "ours", key, std::nullopt); });
  fmt::print("{:<34} {:.1f} MiB\n", "Memory for decrypting 512 MiB:", static_cast<double>(memory) / (1 << 20));
  const std::string openssl =
      fmt::format("openssl enc -d -nopad -aes-256-cbc -K {} -iv {} -in {} -out {}", Fixture::hex(key),
                  std::string(32, '0'), source.string(), (folder / "openssl").string());
  const auto comparison = Measure::compare(
      [&] { BackupCrypto::decryptFile(source, folder / "ours", key, std::nullopt); }, [&] { Measure::shell(openssl); });
  Measure::report("Decrypting them:", "openssl enc -d", comparison);
}
