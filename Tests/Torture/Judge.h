#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <string>

#include "Tests/EndToEnd/CommandLine.h"
#include "Tests/Torture/Destination.h"
#include "Tests/Torture/Phone.h"
#include "TidewellCore/Platform/Json.h"

namespace Torture {

// What is otherwise than it must be.
struct Difference : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Knows what must stand in one destination. Slow and simple: it looks at every byte after every step.
// All that find a difference throw it.
class Judge {
 public:
  explicit Judge(std::filesystem::path destination) : destination_(std::move(destination)) {}

  // Before a step: what the phone holds may come, and what is there may not go.
  void begin(const Phone& phone);
  // After any step, however it ended.
  void judgeFiles() const;
  // After a run that ended by itself: what its exit code and its words promise.
  void judgeRun(const Finished& finished, const Phone& phone);
  void requireWhole(const Phone& phone) const;

  // What was done on purpose.
  void addForeign(const std::string& sha1) { foreign_.insert(sha1); }
  void addEmptied(const std::string& path) { emptied_.insert(path); }
  // A folder of the content root has another name: files that are found there stay there. What a run copied that was
  // broken off nobody knows of yet, so that it may come once more.
  void addRenamed(const std::string& from, const std::string& to) {
    if (isBrokenOff_) return addCopied(from, to);
    otherNames_.emplace(from, to);
  }
  // The same of a copy, where they are found once the first is gone.
  void addCopied(const std::string& from, const std::string& to) {
    otherNames_.emplace(from, to);
    copied_.insert({from, to});
  }
  void allowRepeats() { mayRepeat_ = true; }
  // The media of this mark may be anything, or absent.
  void setUncertain(const std::string& mark) { uncertain_ = mark; }

 private:
  bool isExpected(const SeenFile& file) const;
  bool isUncertain(const Medium& medium) const { return !uncertain_.empty() && medium.mark == uncertain_; }
  std::vector<Medium> missingMedia(const Phone& phone) const;
  std::vector<Text> missingTexts(const Phone& phone) const;
  void judgeFailures(const Json::Object& summary, const Phone& phone) const;
  void requireOnce(const Phone& phone) const;
  std::set<std::string> allNamesOf(const std::string& folder) const;

  std::filesystem::path destination_;
  std::set<std::string> media_;    // SHA-1 of all that the phone holds or held
  std::set<std::string> foreign_;  // SHA-1
  std::set<std::string> present_;  // SHA-1, when the step began
  std::set<std::string> pages_;    // SHA-1 of all pages and transcripts that stood there when a step began
  std::set<std::string> emptied_;  // paths
  std::multimap<std::string, std::string> otherNames_;  // of folders
  bool isBrokenOff_ = false;                            // the last run did not come to its end
  std::set<std::string> copied_;                        // folders
  std::string uncertain_;
  bool mayRepeat_ = false;
};

}  // namespace Torture
