#include "Tests/Fuzz/SeedCorpus.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "Tests/Support/Hex.h"
#include "Tests/Support/KeyBagBuilder.h"
#include "Tests/Support/MBFileRecord.h"
#include "Tests/Support/PlistWriter.h"
#include "Tests/Support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using Fixture::Bytes;
using Seeds = std::vector<Bytes>;

Fixture::PlistDictionary everyType() {
  return {{"text", "Zoë"},
          {"ascii", "plain"},
          {"number", -5},
          {"real", 0.25},
          {"flag", true},
          {"data", Bytes{0, 255}},
          {"large", UINT64_MAX},
          {"list", Fixture::PlistArray{1, "x", Fixture::PlistArray{}}},
          {"date", Fixture::PlistDate{700000000}}};
}

Seeds records() {
  return {Fixture::archive({.relativePath = "a.jpg", .size = 7}),
          Fixture::archive({.relativePath = "b", .size = 7, .encryptionKey = Bytes(44, 3)})};
}

Seeds keyBags() {
  Fixture::SeededRandom random(1);
  return {Fixture::buildKeyBag({.password = "x"}, random).blob,
          Fixture::buildKeyBag({.password = "x", .doubleIterations = {}, .wideIterations = true}, random).blob};
}

Seeds madeByCode(std::string_view target) {
  if (target == "BinaryPropertyList") return {Fixture::binaryPlist(everyType()), records()[1]};
  if (target == "XMLPropertyList") return {Fixture::bytesOf(Fixture::xmlPlist(everyType()))};
  if (target == "BackupKeyBag") return keyBags();
  if (target == "MBFileArchive") return records();
  return {};
}

Bytes content(const fs::path& file) {
  const Bytes bytes = Fixture::readFile(file);
  if (file.extension() != ".hex") return bytes;
  return Fixture::fromHex({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::vector<Bytes> seedCorpus(std::string_view target) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(fs::path(TIDEWELL_FUZZ_CORPUS) / target)) files.push_back(entry);
  if (files.empty()) throw std::runtime_error("The corpus of " + std::string(target) + " has no files.");
  std::ranges::sort(files);
  Seeds seeds = madeByCode(target);
  for (const fs::path& file : files) seeds.push_back(content(file));
  return seeds;
}
