#include "Tests/Torture/Judge.h"

#include <algorithm>
#include <map>

namespace Torture {
namespace {

namespace fs = std::filesystem;

constexpr int done = 0;
constexpr int failed = 1;
constexpr int incomplete = 3;

Json::Object parsed(const Finished& finished) {
  const auto document = Json::parse(finished.output);
  const auto* object = document ? document->as<Json::Object>() : nullptr;
  if (object == nullptr) throw Difference("standard output is no JSON object: " + finished.output);
  return *object;
}

std::vector<std::string> namesOfFailures(const Json::Object& summary) {
  std::vector<std::string> names;
  for (const Json& failure : *summary.at("failures").as<Json::Array>()) {
    names.push_back(*failure.as<Json::Object>()->at("name").as<std::string>());
  }
  return names;
}

// The texts of the chat with this JID, as the export left them.
class Transcripts {
 public:
  explicit Transcripts(const fs::path& root) : root_(root), folders_(Destination::folders(root)) {}

  std::size_t count(const Text& text, const std::string& name) {
    const std::string place = "messages/" + folders_[text.jid] + "/" + name;
    const auto known = read_.try_emplace(place);
    if (known.second) known.first->second = Destination::textOf(root_ / place);
    return Destination::count(known.first->second, text.mark);
  }

 private:
  fs::path root_;
  std::map<std::string, std::string> folders_;
  std::map<std::string, std::string> read_;
};

}  // namespace

void Judge::begin(const Phone& phone) {
  isBrokenOff_ = true;
  for (const Medium& medium : phone.media()) media_.insert(medium.sha1);
  for (const Medium& picture : phone.pictures()) media_.insert(picture.sha1);
  const std::vector<SeenFile> files = Destination::look(destination_);
  for (const SeenFile& file : files) {
    if (Destination::isPage(file.path)) pages_.insert(file.sha1);
  }
  present_ = Destination::contents(files);
  std::erase_if(present_, [&](const auto& sha1) { return !media_.contains(sha1) && !foreign_.contains(sha1); });
}

bool Judge::isExpected(const SeenFile& file) const {
  // The clean-up keeps a chat's other transcript under a name of its own, one that was emptied too.
  const bool isOtherPage = pages_.contains(file.sha1) && file.path.find("/_transcript-") != std::string::npos;
  if (file.size == 0 && !foreign_.contains(file.sha1) && !isOtherPage) {
    return emptied_.contains(file.path) || file.path.find("/undated_empty") != std::string::npos ||
           file.path.find("_empty") != std::string::npos;
  }
  if (media_.contains(file.sha1) || foreign_.contains(file.sha1) || Destination::isPage(file.path)) return true;
  if (pages_.contains(file.sha1)) return true;
  return !uncertain_.empty() && file.path.find(uncertain_) != std::string::npos;
}

void Judge::judgeFiles() const {
  const std::vector<SeenFile> files = Destination::look(destination_);
  for (const SeenFile& file : files) {
    if (!isExpected(file)) {
      throw Difference("a half file: " + file.path + ", " + std::to_string(file.size) + " bytes");
    }
  }
  const std::set<std::string> now = Destination::contents(files);
  for (const std::string& sha1 : present_) {
    // A chat's picture is replaced by its next.
    if (!now.contains(sha1)) throw Difference("gone from the destination: SHA-1 " + sha1);
  }
}

void Judge::judgeRun(const Finished& finished, const Phone& phone) {
  if (finished.exitCode != done && finished.exitCode != failed && finished.exitCode != incomplete) {
    throw Difference("exit code " + std::to_string(finished.exitCode) + ": " + finished.errors);
  }
  const Json::Object summary = parsed(finished);
  if (finished.output.find(".tidewell-") != std::string::npos) throw Difference("a hidden name: " + finished.output);
  if (finished.exitCode == failed && !summary.contains("error")) throw Difference("no error: " + finished.output);
  isBrokenOff_ = finished.exitCode == failed;
  if (finished.exitCode == done) requireWhole(phone);
  if (finished.exitCode == incomplete) judgeFailures(summary, phone);
}

std::vector<Medium> Judge::missingMedia(const Phone& phone) const {
  const std::set<std::string> now = Destination::contents(Destination::look(destination_));
  std::vector<Medium> missing = phone.media();
  const std::vector<Medium> pictures = phone.pictures();
  missing.insert(missing.end(), pictures.begin(), pictures.end());
  std::erase_if(missing, [&](const Medium& medium) { return now.contains(medium.sha1) || isUncertain(medium); });
  return missing;
}

std::vector<Text> Judge::missingTexts(const Phone& phone) const {
  const std::string blocks = Destination::blocks(destination_);
  Transcripts transcripts(destination_);
  std::vector<Text> missing = phone.texts();
  std::erase_if(missing, [&](const Text& text) {
    return transcripts.count(text, "_transcript.txt") == 1 && transcripts.count(text, "_transcript.html") == 1 &&
           Destination::count(blocks, text.mark) == 1;
  });
  return missing;
}

void Judge::judgeFailures(const Json::Object& summary, const Phone& phone) const {
  const std::vector<std::string> names = namesOfFailures(summary);
  const bool isIncomplete = *summary.at("mayBeIncomplete").as<bool>();
  if (names.empty() && summary.at("warnings").as<Json::Array>()->empty())
    throw Difference("exit code 3 without a word");
  if (isIncomplete) return;
  for (const Medium& medium : missingMedia(phone)) {
    const auto tells = [&](const std::string& name) { return name.find(medium.mark) != std::string::npos; };
    if (std::ranges::none_of(names, tells))
      throw Difference("lost without a word: " + medium.mark + " of " + medium.jid);
  }
  const auto isPage = [](const std::string& name) { return Destination::isPage(name); };
  if (std::ranges::any_of(names, isPage)) return;
  for (const Text& text : missingTexts(phone))
    throw Difference("a text lost without a word: " + text.mark + " of " + text.jid);
}

void Judge::requireWhole(const Phone& phone) const {
  for (const Medium& medium : missingMedia(phone)) {
    throw Difference("success, but missing: " + medium.mark + " of " + medium.jid + ", SHA-1 " + medium.sha1);
  }
  for (const Text& text : missingTexts(phone)) {
    throw Difference("success, but a text is not there exactly once: " + text.mark + " of " + text.jid);
  }
  requireOnce(phone);
}

std::set<std::string> Judge::allNamesOf(const std::string& folder) const {
  std::set<std::string> names;
  std::vector<std::string> waiting{folder};
  while (!waiting.empty()) {
    const std::string name = waiting.back();
    waiting.pop_back();
    if (!names.insert(name).second) continue;
    const auto [first, last] = otherNames_.equal_range(name);
    for (auto later = first; later != last; ++later) waiting.push_back(later->second);
  }
  return names;
}

void Judge::requireOnce(const Phone& phone) const {
  std::map<std::string, std::string> folders = Destination::folders(destination_);
  std::map<std::pair<std::string, std::string>, int> copies;
  for (const SeenFile& file : Destination::look(destination_)) {
    ++copies[{file.path.substr(0, file.path.rfind('/')), file.sha1}];
  }
  for (const Medium& medium : phone.media()) {
    if (isUncertain(medium)) continue;
    const std::set<std::string> names = allNamesOf(folders[medium.jid]);
    int count = 0;
    for (const std::string& folder : names) count += copies[{"messages/" + folder, medium.sha1}];
    const bool isCopied = std::ranges::any_of(names, [&](const auto& folder) { return copied_.contains(folder); });
    // One of no bytes is known by nothing but its place.
    const bool mayRepeat = mayRepeat_ || isCopied || medium.mark.starts_with("empty");
    if (count == 1 || (count > 1 && mayRepeat)) continue;
    throw Difference(medium.mark + " of " + medium.jid + " is " + std::to_string(count) +
                     " times in its chat's folder \"" + folders[medium.jid] + "\"");
  }
}

}  // namespace Torture
