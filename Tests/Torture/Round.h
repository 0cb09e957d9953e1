#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Tests/Drives/Drive.h"
#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Support/SeededRandom.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Torture/Judge.h"
#include "Tests/Torture/Phone.h"

namespace Torture {

// How often each kind of step was done, in all rounds.
using Statistics = std::map<std::string, long>;

// One phone, one destination, some disturbed steps, and a quiet end.
class Round {
 public:
  Round(std::uint64_t seed, Statistics& statistics);

  // Throws a Difference.
  void run();
  // What was done so far, a line each.
  const std::vector<std::string>& story() const { return story_; }
  // Puts all folders there, without a drive that is mounted; nothing can be done afterwards.
  void keepIn(const std::filesystem::path& place);

 private:
  using Step = void (Round::*)();

  void mountDrive();
  void newPhone();
  void step();
  void exportWithFault();
  void exportWithSignal();
  void damageDestination();
  void changePhone();
  void damageBackup();
  void dedupe();
  void changeZone();
  void endQuietly();

  void tell(const std::string& kind, const std::string& line);
  std::vector<std::string> exportOf(const std::string& backup, const std::string& destination) const;
  std::vector<std::string> plainExport() const { return exportOf("device", "out"); }
  Finished signalled(const std::vector<std::string>& arguments);
  void judge(const Finished& finished);
  void exportUndisturbed();
  void requireRest();
  void requireCleanTemporaryFolder() const;

  Statistics& statistics_;
  Fixture::SeededRandom random_;
  CommandLine program_;
  Phone phone_;
  std::unique_ptr<Fixture::Drive> drive_;
  std::filesystem::path destination_ = program_ / "out";
  Judge judge_{destination_};
  std::map<std::string, Fixture::TreeEntry> rest_;  // what no run may touch
  std::vector<std::string> story_;
};

}  // namespace Torture
