#include "TidewellCore/Archive/ArchiveRelocation.h"

#include <algorithm>
#include <set>

#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/JSONText.h"
#include "TidewellCore/Archive/MessageBlocks.h"
#include "TidewellCore/Archive/MessageLine.h"
#include "TidewellCore/Archive/ReadableText.h"
#include "TidewellCore/Archive/TextPatch.h"
#include "TidewellCore/FileNaming.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/Platform/Bytes.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"

namespace {

namespace fs = std::filesystem;
using ArchiveRelocation::NewPlace;
using ArchiveRelocation::NewPlaces;

constexpr std::int64_t largestFile = std::int64_t{4} << 30;

std::optional<std::string> read(const fs::path& file) {
  const std::optional<Bytes> content = Files::readIfThere(file, largestFile);
  return content ? std::optional(std::string(textOf(*content))) : std::nullopt;
}

// Null unless the object has a text of that name.
const std::string* textMember(const Json::Object& object, std::string_view name) {
  const auto member = object.find(name);
  return member == object.end() ? nullptr : member->second.as<std::string>();
}

std::optional<std::string> movedMember(const Json::Object& object, std::string_view name, const NewPlace& places) {
  const std::string* place = textMember(object, name);
  return place == nullptr ? std::nullopt : places(*place);
}

std::string fileNameShown(std::string_view place) { return ReadableText::cleaned(PathText::lastComponent(place)); }

// A message whose medium has moved; absent for all others.
std::optional<Json::Object> moved(const Json::Object& message, const NewPlace& files) {
  const auto found = message.find("media");
  const auto* media = found != message.end() ? found->second.as<Json::Object>() : nullptr;
  const auto place = media ? movedMember(*media, "path", files) : std::nullopt;
  if (!place) return std::nullopt;
  Json::Object newMedia = *media;
  const std::string* name = textMember(*media, "name");
  if (name != nullptr && *name == fileNameShown(*textMember(*media, "path"))) newMedia["name"] = fileNameShown(*place);
  newMedia["path"] = *place;
  Json::Object newMessage = message;
  newMessage["media"] = std::move(newMedia);
  return newMessage;
}

// Whether the text of a message, in any form, may hold the place of a medium.
bool mayHavePlace(std::string_view message) { return message.find("\"path\"") != std::string_view::npos; }

template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    visit(line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

// An archive's data files, rewritten one after another.
class Rewriting {
 public:
  Rewriting(const fs::path& folder, const NewPlaces& places) : folder_(folder), places_(places) {}

  bool run() {
    const fs::path list = folder_ / FolderNames::archiveChats;
    const std::optional<std::string> text = read(list);
    if (!text) return false;
    TextPatch patch(*text);
    for (const char* identifier : {"ARCHIVE", "CHATS"}) replaceValue(*text, identifier, patch);
    rewriteDataFiles();
    if (const auto newText = patch.result()) write(list, *newText);
    removeFormerBlocks();
    return isChanged_;
  }

 private:
  void replaceValue(const std::string& text, std::string_view identifier, TextPatch& patch) {
    const std::string_view value = ChatArchiveJSON::assignedValue(text, identifier);
    const std::optional<Json> json = Json::parse(value);
    if (!json) return;
    const std::optional<Json> newJson = identifier == "CHATS" ? newChats(*json) : newArchive(*json);
    if (newJson) patch.replace(value, ChatArchiveJSON::stringify(*newJson));
  }

  std::optional<Json> newChats(const Json& json) {
    const auto* chats = json.as<Json::Array>();
    if (chats == nullptr) return std::nullopt;
    bool isMoved = false;
    Json::Array newChats;
    for (const Json& chat : *chats) {
      newChats.push_back(chat);
      const auto* object = chat.as<Json::Object>();
      if (object == nullptr) continue;
      if (const std::string* file = textMember(*object, "file")) addDataFile(*file);
      const auto folder = movedMember(*object, "folder", places_.folder);
      if (!folder) continue;
      Json::Object newChat = *object;
      newChat["folder"] = *folder;
      newChats.back() = std::move(newChat);
      isMoved = true;
    }
    return isMoved ? std::optional<Json>(std::move(newChats)) : std::nullopt;
  }

  std::optional<Json> newArchive(const Json& json) {
    const auto* archive = json.as<Json::Object>();
    const auto found = archive ? archive->find("blocks") : Json::Object::const_iterator();
    const auto* blocks = archive && found != archive->end() ? found->second.as<Json::Array>() : nullptr;
    if (blocks == nullptr) return std::nullopt;
    const auto form = MessageLine::form(*archive);
    if (!form) return std::nullopt;
    Json::Array newBlocks;
    for (const Json& block : *blocks) newBlocks.push_back(newBlock(block, *form));
    if (formerBlocks_.empty()) return std::nullopt;
    Json::Object newArchive = *archive;
    newArchive["blocks"] = std::move(newBlocks);
    return newArchive;
  }

  Json newBlock(const Json& block, MessageLine::Form form) {
    const auto* object = block.as<Json::Object>();
    const std::string* file = object ? textMember(*object, "file") : nullptr;
    if (file == nullptr || !FileNaming::isSafeComponent(*file)) return block;
    const std::optional<std::string> script = newScript(*file, form);
    const std::string newFile = script ? MessageBlocks::fileName(*script) : *file;
    currentBlocks_.insert(newFile);
    if (!script) return block;
    write(folder_ / newFile, *script);
    formerBlocks_.insert(*file);
    Json::Object newObject = *object;
    newObject["file"] = newFile;
    return newObject;
  }

  std::optional<std::string> newScript(const std::string& file, MessageLine::Form form) const {
    const std::optional<std::string> script = read(folder_ / PathText::path(file));
    if (!script) return std::nullopt;
    TextPatch patch(*script);
    forEachLine(MessageBlocks::lines(*script), [&](std::string_view line) {
      if (const auto newLine = movedLine(line, form)) patch.replace(line, *newLine);
    });
    return patch.result();
  }

  std::optional<std::string> movedLine(std::string_view line, MessageLine::Form form) const {
    const auto message = mayHavePlace(line) ? MessageLine::message(line, form) : std::nullopt;
    auto newMessage = message ? moved(*message, places_.file) : std::nullopt;
    if (!newMessage) return std::nullopt;
    std::string newLine;
    MessageLine::append(newLine, std::move(*newMessage), form);
    return newLine;
  }

  std::optional<std::string> movedElement(std::string_view message) const {
    const auto json = mayHavePlace(message) ? Json::parse(message) : std::nullopt;
    const auto* object = json ? json->as<Json::Object>() : nullptr;
    auto newMessage = object ? moved(*object, places_.file) : std::nullopt;
    return newMessage ? std::optional(ChatArchiveJSON::stringify(std::move(*newMessage))) : std::nullopt;
  }

  void addDataFile(const std::string& name) {
    if (FileNaming::isSafeComponent(name)) dataFiles_.insert(name);
  }

  // Those of chats that only earlier exports had, too, which no list names.
  void rewriteDataFiles() {
    for (const Files::Entry& entry : Files::list(folder_)) {
      if (entry.name.starts_with("chat-") && entry.name.ends_with(".js")) addDataFile(entry.name);
    }
    for (const std::string& name : dataFiles_) rewriteDataFile(folder_ / PathText::path(name));
  }

  void rewriteDataFile(const fs::path& file) {
    const std::optional<std::string> text = read(file);
    if (!text) return;
    TextPatch patch(*text);
    const std::string_view payload = ChatArchiveJSON::assignedValue(*text, "__CHAT_PAYLOAD");
    JSONText::forEachElement(JSONText::member(payload, "\"messages\""), [&](std::string_view message) {
      if (const auto newMessage = movedElement(message)) patch.replace(message, *newMessage);
    });
    if (const auto newText = patch.result()) write(file, *newText);
  }

  void write(const fs::path& file, const std::string& text) {
    Files::writeAtomically(file, text);
    isChanged_ = true;
  }

  void removeFormerBlocks() const {
    for (const std::string& file : formerBlocks_) {
      if (!currentBlocks_.contains(file)) Files::remove(folder_ / PathText::path(file));
    }
  }

  const fs::path& folder_;
  const NewPlaces& places_;
  std::set<std::string> dataFiles_;
  std::set<std::string> formerBlocks_;
  std::set<std::string> currentBlocks_;
  bool isChanged_ = false;
};

}  // namespace

std::vector<ArchiveRelocation::ChatReference> ArchiveRelocation::loadChats(const fs::path& dataFolder) {
  const std::optional<std::string> text = read(dataFolder / FolderNames::archiveChats);
  const std::optional<Json> json = text ? ChatArchiveJSON::parseAssignment(*text, "CHATS") : std::nullopt;
  const auto* chats = json ? json->as<Json::Array>() : nullptr;
  std::vector<ChatReference> references;
  if (chats == nullptr) return references;
  for (const Json& chat : *chats) {
    const auto* object = chat.as<Json::Object>();
    const std::string* jid = object ? textMember(*object, "jid") : nullptr;
    const std::string* folder = object ? textMember(*object, "folder") : nullptr;
    if (jid == nullptr || folder == nullptr || jid->empty() || !FileNaming::isSafeComponent(*folder)) continue;
    references.push_back({.jid = *jid, .folder = *folder});
  }
  return references;
}

bool ArchiveRelocation::rewrite(const fs::path& dataFolder, const NewPlaces& places) {
  return Rewriting(dataFolder, places).run();
}
