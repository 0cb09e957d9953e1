#include "Tests/Torture/BackupDamage.h"

#include <array>

#include "Tests/Support/TemporaryDirectory.h"

namespace Torture {
namespace {

namespace fs = std::filesystem;
using Fixture::SeededRandom;
using Told = BackupDamage::Told;

enum class Way { flip, cut, remove };
constexpr std::array ways{Way::flip, Way::cut, Way::remove};

struct Done {
  std::string what = "did nothing";
  std::size_t place = 0;  // of the flipped byte, or the new length
  std::size_t size = 0;   // before
};

Done damage(const fs::path& file, Way way, SeededRandom& random) {
  Fixture::Bytes bytes = Fixture::readFile(file);
  const std::size_t place = bytes.empty() ? 0 : random.below(bytes.size());
  if (way == Way::remove || bytes.empty()) {
    fs::remove(file);
    return {"removed", 0, bytes.size()};
  }
  if (way == Way::cut) {
    fs::resize_file(file, place);
    return {"cut to " + std::to_string(place) + " bytes", place, bytes.size()};
  }
  bytes[place] = static_cast<std::uint8_t>(bytes[place] ^ (1U << random.below(8)));
  Fixture::writeFile(file, bytes);
  return {"flipped a bit of byte " + std::to_string(place) + " in", place, bytes.size()};
}

// In the last frame of a log a flipped bit looks like a phone that stopped there. An encrypted bit spoils
// its block and the next.
bool isInLastFrame(const Done& done) {
  constexpr std::size_t header = 32, frame = 24 + 4096, block = 16;
  if (done.size < header + frame) return true;
  const std::size_t frames = (done.size - header) / frame;
  return done.place + 2 * block >= header + (frames - 1) * frame;
}

fs::path stored(const fs::path& backup, const std::string& relativePath) {
  return Fixture::storedPath(backup, Fixture::fileIDOf(Fixture::consumerDomain, relativePath));
}

BackupDamage damageLog(const fs::path& log, bool isIndex, SeededRandom& random) {
  const Way way = random.pick(ways);
  const Done done = damage(log, way, random);
  // The length of the index's own log is recorded nowhere.
  const bool isKnown = way == Way::flip ? !isInLastFrame(done) : !isIndex;
  return {.what = done.what + (isIndex ? " the index's log" : " the chat database's log"),
          .told = isKnown ? Told::always : Told::nothing};
}

BackupDamage damageMedium(const fs::path& backup, const Phone& phone, SeededRandom& random) {
  const auto& media = phone.contents().whatsApp.mediaFiles;
  if (media.empty()) return {.what = "no medium to damage", .told = Told::always};
  const std::string& path = random.pick(media).localPath;
  const Way way = random.pick(ways);
  const Done done = damage(stored(backup, "Message/" + path), way, random);
  const std::string name = path.substr(path.rfind('/') + 1);
  BackupDamage result{.what = done.what + " " + name, .told = done.size == 0 ? Told::always : Told::loudly};
  const bool isFlipped = way == Way::flip && done.size > 0;
  if (isFlipped) result.told = Told::always;  // all but this one
  // What is in it is not known, and a file in clear that lost its end is copied as it is.
  if (isFlipped || (way == Way::cut && !phone.isEncrypted())) result.mark = name.substr(0, name.find('_'));
  return result;
}

}  // namespace

BackupDamage BackupDamage::make(const fs::path& backup, const Phone& phone, SeededRandom& random) {
  const fs::path log = stored(backup, "ChatStorage.sqlite-wal");
  const fs::path indexLog = backup / "Manifest.db-wal";
  if (fs::exists(log) && random.chance(40)) return damageLog(log, false, random);
  if (fs::exists(indexLog) && random.chance(40)) return damageLog(indexLog, true, random);
  if (random.chance(50)) return damageMedium(backup, phone, random);
  const bool isIndex = random.chance(40);
  const Way way = random.chance(70) ? Way::flip : random.pick(ways);
  const Done done = damage(isIndex ? backup / "Manifest.db" : stored(backup, "ChatStorage.sqlite"), way, random);
  const Told told = isIndex ? Told::nothing : way == Way::flip ? Told::messages : Told::always;
  return {.what = done.what + (isIndex ? " the index" : " the chat database"), .told = told};
}

}  // namespace Torture
