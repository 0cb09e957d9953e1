#include "Tests/Torture/Round.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>

#include "Tests/Torture/BackupDamage.h"
#include "Tests/Torture/DestinationDamage.h"
#include "Tests/Torture/Fault.h"

namespace Torture {
namespace {

namespace fs = std::filesystem;

const std::array zones = std::to_array<std::string>({"UTC", "America/New_York", "Asia/Kolkata", "Pacific/Apia"});

// Said once: rounds go on in plain folders.
void tellMissingDrive(const std::string& why) {
  static std::set<std::string> told;
  if (told.insert(why).second) std::printf("without a kind of drive: %s\n", why.c_str());
}

// Everything in `folder` that no run may touch.
std::map<std::string, Fixture::TreeEntry> restOf(const fs::path& folder) {
  std::map<std::string, Fixture::TreeEntry> rest;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    rest[name].type = entry.symlink_status().type();
    const bool isTheirs = name == "out" || name == "temporary" || name == "stick" || name == "image";
    if (isTheirs || !entry.is_directory()) continue;
    for (auto& [path, below] : Fixture::treeSnapshot(entry.path())) rest.emplace(name + "/" + path, below);
  }
  return rest;
}

std::string firstDifference(const std::vector<SeenFile>& before, const std::vector<SeenFile>& after) {
  for (std::size_t place = 0; place < std::min(before.size(), after.size()); ++place) {
    if (before[place] == after[place]) continue;
    return before[place].path + (before[place].path == after[place].path ? "" : " / " + after[place].path);
  }
  return before.size() == after.size() ? "" : "the number of files";
}

}  // namespace

Round::Round(std::uint64_t seed, Statistics& statistics) : statistics_(statistics), random_(seed), phone_(random_) {
  Fixture::writeFile(program_ / "elsewhere/secret", "secret");
  Fixture::writeFile(program_ / "password", "correct horse\n");
  Fixture::writeFile(program_ / "home/diary", "diary");
}

void Round::run() {
  mountDrive();
  newPhone();
  for (std::size_t count = 1 + random_.below(5); count > 0; --count) step();
  endQuietly();
  ++statistics_["rounds"];
}

void Round::mountDrive() {
  fs::create_directory(destination_);
  const std::size_t kind = random_.below(10);
  if (kind < 6) return tell("in a plain folder", "into a plain folder");
  const bool isNTFS = kind == 9;
  if (isNTFS) {
    drive_.reset(new Fixture::Drive(Fixture::Drive::ntfs(program_ / "image", destination_)));
  } else {
    const Fixture::DriveOptions options{.stripsDots = random_.chance(30),
                                        .ignoresCase = random_.chance(80),
                                        .composesNames = random_.chance(30),
                                        .lacksFreeRenaming = random_.chance(30)};
    drive_ = std::make_unique<Fixture::Drive>(program_ / "stick", destination_, options);
  }
  if (drive_->isMounted()) return tell(isNTFS ? "on NTFS" : "on a stick", isNTFS ? "onto NTFS" : "onto a stick");
  tellMissingDrive(drive_->whyNot());
  drive_.reset();
}

void Round::newPhone() {
  phone_.write(program_ / "device");
  rest_ = restOf(program_ / "");
}

void Round::step() {
  static const std::array steps = std::to_array<Step>(
      {&Round::exportWithFault, &Round::exportWithFault, &Round::exportWithFault, &Round::exportWithFault,
       &Round::exportWithSignal, &Round::exportWithSignal, &Round::exportWithSignal, &Round::damageDestination,
       &Round::damageDestination, &Round::changePhone, &Round::changePhone, &Round::damageBackup, &Round::damageBackup,
       &Round::dedupe, &Round::changeZone});
  (this->*random_.pick(steps))();
  requireRest();
  ++statistics_["steps"];
}

void Round::tell(const std::string& kind, const std::string& line) {
  ++statistics_[kind];
  story_.push_back(line);
}

std::vector<std::string> Round::exportOf(const std::string& backup, const std::string& destination) const {
  std::vector<std::string> arguments{"export", (program_ / backup).string(), (program_ / destination).string(),
                                     "--json", "--no-progress"};
  if (phone_.isEncrypted()) {
    arguments.emplace_back("--password-file");
    arguments.push_back((program_ / "password").string());
  }
  return arguments;
}

void Round::judge(const Finished& finished) {
  story_.push_back("  ended with " + std::to_string(finished.exitCode) + " " + finished.output.substr(0, 2000));
  judge_.judgeFiles();
  judge_.judgeRun(finished, phone_);
}

void Round::exportWithFault() {
  if (!Fault::isPossible()) return;
  const Fault fault = Fault::random(random_);
  tell("faults", fault.told());
  judge_.begin(phone_);
  fault.putInto(program_);
  const Finished finished = program_.run(plainExport());
  Fault::takeOutOf(program_);
  judge(finished);
}

Finished Round::signalled(const std::vector<std::string>& arguments) {
  static const std::array signals{SIGKILL, SIGKILL, SIGTERM, SIGINT};
  const int signal = random_.pick(signals);
  const double seconds = static_cast<double>(random_.below(1000)) / (random_.chance(50) ? 5'000 : 20'000);
  tell(signal == SIGKILL ? "kills" : "signals",
       "signal " + std::to_string(signal) + " after " + std::to_string(seconds));
  return program_.signalAfter(arguments, std::chrono::duration<double>(seconds), signal);
}

void Round::exportWithSignal() {
  judge_.begin(phone_);
  const Finished finished = signalled(plainExport());
  constexpr int interrupted = 130;
  if (finished.exitCode >= 0 && finished.exitCode != interrupted) return judge(finished);
  judge_.judgeFiles();
  if (finished.exitCode == interrupted) requireCleanTemporaryFolder();
  if (finished.exitCode < 0 && finished.exitCode != -SIGKILL && finished.exitCode != -SIGINT &&
      finished.exitCode != -SIGTERM) {
    throw Difference("ended by signal " + std::to_string(-finished.exitCode));
  }
}

void Round::damageDestination() {
  const auto what = DestinationDamage::make(
      {.destination = destination_, .elsewhere = program_ / "elsewhere", .phone = phone_}, judge_, random_);
  tell("damaged destinations", what);
  if (!random_.chance(30)) exportUndisturbed();
}

void Round::changePhone() {
  tell("changed phones", phone_.change());
  newPhone();
  if (random_.chance(70)) exportUndisturbed();
}

// Into a destination of its own: what is read of a damaged backup may be anything.
void Round::damageBackup() {
  fs::copy(program_ / "device", program_ / "damaged", fs::copy_options::recursive);
  const BackupDamage damage = BackupDamage::make(program_ / "damaged", phone_, random_);
  tell("damaged backups", damage.what);
  const fs::path destination = program_ / "elsewhere/out";
  Judge judge(destination);
  judge.setUncertain(damage.mark);
  judge.begin(phone_);
  const Finished finished = program_.run(exportOf("damaged", "elsewhere/out"));
  story_.push_back("  ended with " + std::to_string(finished.exitCode) + " " + finished.output.substr(0, 2000));
  judge.judgeFiles();
  if (finished.exitCode != 0 && finished.exitCode != 1 && finished.exitCode != 3) {
    throw Difference("exit code " + std::to_string(finished.exitCode) + ": " + finished.errors);
  }
  if (damage.told == BackupDamage::Told::loudly && finished.exitCode == 0) throw Difference("a silent loss");
  if (damage.told <= BackupDamage::Told::always) judge.judgeRun(finished, phone_);
  if (damage.told == BackupDamage::Told::messages && finished.exitCode == 0) {
    constexpr std::size_t tabsInLine = 3;  // they part the columns, and JSON holds none
    const std::size_t count = Destination::count(Destination::blocks(destination), "\t") / tabsInLine;
    if (count != phone_.messageCount()) throw Difference("success with " + std::to_string(count) + " messages");
  }
  fs::remove_all(destination);
  fs::remove_all(program_ / "damaged");
  Fixture::writeFile(program_ / "elsewhere/secret", "secret");
  rest_ = restOf(program_ / "");
}

void Round::dedupe() {
  judge_.begin(phone_);
  const std::vector<std::string> arguments{"dedupe", destination_.string(), "--apply", "--json"};
  tell("clean-ups", "dedupe --apply");
  const std::size_t kind = random_.below(4);
  Finished finished;
  if (kind == 0) {
    finished = signalled(arguments);
  } else if (kind == 1 && Fault::isPossible()) {
    const Fault fault = Fault::random(random_);
    tell("faults", fault.told());
    fault.putInto(program_);
    finished = program_.run(arguments);
    Fault::takeOutOf(program_);
  } else {
    finished = program_.run(arguments);
  }
  story_.push_back("  ended with " + std::to_string(finished.exitCode) + " " + finished.output.substr(0, 2000));
  judge_.judgeFiles();
  const bool isAllowed = finished.exitCode == 0 || finished.exitCode == 1 || (kind == 0 && finished.exitCode != 3);
  if (!isAllowed) throw Difference("exit code " + std::to_string(finished.exitCode) + ": " + finished.errors);
}

void Round::changeZone() {
  const std::string& zone = random_.pick(zones);
  tell("other zones", "time zone " + zone);
  program_.set("TZ", zone);
}

void Round::exportUndisturbed() {
  story_.emplace_back("undisturbed");
  judge_.begin(phone_);
  const Finished finished = program_.run(plainExport());
  judge(finished);
  if (finished.exitCode != 0) throw Difference("undisturbed, but exit code " + std::to_string(finished.exitCode));
  requireCleanTemporaryFolder();
}

void Round::endQuietly() {
  exportUndisturbed();
  const std::vector<SeenFile> before = Destination::look(destination_);
  const Finished finished = program_.run(plainExport());
  judge(finished);
  if (finished.output.find("\"copiedCount\":0,") == std::string::npos)
    throw Difference("copied again: " + finished.output);
  const std::string difference = firstDifference(before, Destination::look(destination_));
  if (!difference.empty()) throw Difference("changed by an export that had nothing to do: " + difference);
  requireRest();
}

void Round::requireRest() {
  for (const auto& [path, entry] : restOf(program_ / "")) {
    const auto before = rest_.find(path);
    if (before == rest_.end()) throw Difference("written beside the destination: " + path);
    if (!(before->second == entry)) throw Difference("changed beside the destination: " + path);
    rest_.erase(before);
  }
  if (!rest_.empty()) throw Difference("removed beside the destination: " + rest_.begin()->first);
  rest_ = restOf(program_ / "");
}

void Round::requireCleanTemporaryFolder() const {
  for (const std::string& name : program_.temporaryFiles()) throw Difference("left in the temporary folder: " + name);
}

void Round::keepIn(const fs::path& place) {
  fs::copy(destination_, program_ / "destination", fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  drive_.reset();
  fs::rename(program_ / "", place);
}

}  // namespace Torture
