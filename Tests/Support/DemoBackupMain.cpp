#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

#include "Tests/Support/BackupBuilder.h"
#include "Tests/Support/SampleConversations.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

// Locks nothing but made-up chats, so it may be known.
constexpr const char* demoPassword = "demo-password";

std::filesystem::path writeDemo(const std::filesystem::path& folder) {
  Fixture::SampleOptions options{.playableMedia = true, .sentinelDates = false};
  options.encryption =
      Fixture::Encryption{.keyBag = {.password = demoPassword, .iterations = 10'000, .doubleIterations = 10'000'000}};
  const Fixture::BackupContents contents = Fixture::sampleBackup(options);
  std::filesystem::path device = folder / contents.uniqueIdentifier;
  const std::filesystem::path passwordFile = folder / "password.txt";
  // Only what an earlier run left is replaced: it always wrote the password first.
  if (std::filesystem::exists(device) && !std::filesystem::exists(passwordFile)) {
    throw std::runtime_error(device.string() + " exists and is no demo backup.");
  }
  Fixture::writeFile(passwordFile, std::string(demoPassword) + "\n");
  std::filesystem::remove_all(device);
  Fixture::writeBackup(contents, device);
  return device;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "Usage: tidewell-demo-backup FOLDER\n"
                 "Writes an encrypted demo backup into FOLDER, its password into FOLDER/password.txt.\n";
    return 2;
  }
  try {
    std::cout << writeDemo(argv[1]).string() << '\n';
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
}
