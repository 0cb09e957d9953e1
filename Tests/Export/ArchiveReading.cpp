#include "Tests/Export/ArchiveReading.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Tests/Export/ExportScene.h"
#include "TidewellCore/Archive/ArchiveScripts.h"
#include "TidewellCore/Archive/ChatArchiveJSON.h"
#include "TidewellCore/Archive/MessageBlocks.h"

namespace ExportTest {

namespace fs = std::filesystem;

namespace {

Json assigned(const fs::path& script, std::string_view identifier) {
  auto value = ChatArchiveJSON::parseAssignment(textOf(script), identifier);
  EXPECT_TRUE(value) << script << " assigns nothing to " << identifier;
  return value ? std::move(*value) : Json();
}

std::vector<Json::Object> objects(const Json& list) {
  std::vector<Json::Object> found;
  const auto* items = list.as<Json::Array>();
  EXPECT_NE(items, nullptr);
  if (items == nullptr) return found;
  for (const Json& item : *items) found.push_back(*item.as<Json::Object>());
  return found;
}

std::vector<Json::Object> messagesIn(const fs::path& script) {
  const Json payload = assigned(script, "__CHAT_PAYLOAD");
  const auto* object = payload.as<Json::Object>();
  return object == nullptr ? std::vector<Json::Object>() : objects(object->at("messages"));
}

fs::path dataFolder(const fs::path& contentRoot) { return contentRoot / "_viewer/data"; }

// What stands between each `before` and the quotation mark behind it.
std::vector<std::string> quotedAfter(const std::string& text, const std::string& before) {
  std::vector<std::string> found;
  for (auto at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
    at += before.size();
    found.push_back(text.substr(at, text.find('"', at) - at));
  }
  return found;
}

void expectFile(const fs::path& file) { EXPECT_TRUE(fs::is_regular_file(file)) << file << " is missing"; }

// The lines of all blocks that the directory names.
std::size_t linesInBlocks(const fs::path& contentRoot) {
  const Json archive = assigned(dataFolder(contentRoot) / "chats.js", "ARCHIVE");
  std::size_t lines = 0;
  for (const Json::Object& block : objects(archive.as<Json::Object>()->at("blocks"))) {
    const fs::path file = dataFolder(contentRoot) / textIn(block, "file");
    expectFile(file);
    if (!fs::exists(file)) continue;
    const std::string script = textOf(file);
    EXPECT_EQ(MessageBlocks::fileName(script), textIn(block, "file"));
    const std::string_view text = ArchiveScripts::lines(script);
    lines += static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  }
  return lines;
}

}  // namespace

std::string textIn(const Json::Object& object, const std::string& key) {
  const auto found = object.find(key);
  const auto* text = found == object.end() ? nullptr : found->second.as<std::string>();
  return text == nullptr ? "" : *text;
}

std::vector<Json::Object> listedChats(const fs::path& contentRoot) {
  return objects(assigned(dataFolder(contentRoot) / "chats.js", "CHATS"));
}

std::vector<std::string> listedNames(const fs::path& contentRoot) {
  std::vector<std::string> names;
  for (const Json::Object& chat : listedChats(contentRoot)) names.push_back(textIn(chat, "name"));
  return names;
}

Json::Object listedChat(const fs::path& contentRoot, const std::string& name) {
  for (const Json::Object& chat : listedChats(contentRoot)) {
    if (textIn(chat, "name") == name) return chat;
  }
  ADD_FAILURE() << "no chat is called " << name;
  return {};
}

std::vector<Json::Object> messagesOf(const fs::path& contentRoot, const std::string& name) {
  return messagesIn(dataFolder(contentRoot) / textIn(listedChat(contentRoot, name), "file"));
}

Json::Object mediumOf(const Json::Object& message) {
  const auto found = message.find("media");
  return found == message.end() ? Json::Object() : *found->second.as<Json::Object>();
}

void expectWholeArchive(const fs::path& destination) {
  const std::string page = textOf(destination / "index.html");
  const auto bases = quotedAfter(page, "window.ARCHIVE_BASE = \"");
  ASSERT_EQ(bases.size(), 1U);
  const fs::path contentRoot = bases[0].empty() ? destination : destination / bases[0].substr(0, bases[0].size() - 1);
  auto assets = quotedAfter(page, "src=\"" + bases[0] + "_viewer/");
  std::ranges::copy(quotedAfter(page, "href=\"" + bases[0] + "_viewer/"), std::back_inserter(assets));
  EXPECT_EQ(assets.size(), 3U) << "style sheet, script and chat list";
  for (const std::string& asset : assets) expectFile(contentRoot / "_viewer" / asset);

  std::size_t count = 0;
  for (const Json::Object& chat : listedChats(contentRoot)) {
    expectFile(dataFolder(contentRoot) / textIn(chat, "file"));
    if (chat.contains("avatar")) expectFile(contentRoot / textIn(chat, "avatar"));
    const auto messages = messagesIn(dataFolder(contentRoot) / textIn(chat, "file"));
    for (const Json::Object& message : messages) {
      const Json::Object medium = mediumOf(message);
      if (medium.contains("path")) expectFile(contentRoot / textIn(medium, "path"));
    }
    count += static_cast<std::size_t>(*chat.at("count").as<std::int64_t>());
  }
  EXPECT_EQ(linesInBlocks(contentRoot), count);
}

Fixture::Bytes picture(const std::string& rest) { return Fixture::bytesOf("\xFF\xD8\xFF" + rest); }

Fixture::BackupContents talkingBackup(bool isEncrypted) {
  Fixture::BackupContents contents = smallBackup(isEncrypted);
  auto& app = contents.whatsApp;
  int number = 0;
  for (Fixture::Message& message : app.messages) message.text = "text " + std::to_string(++number);
  app.files.push_back(Fixture::profilePicture("5511900001111", 3, picture("of Ana")));
  app.files.push_back(Fixture::profilePicture("5511900001111-1500000000", 9, picture("of us")));
  return contents;
}

std::set<std::string> namesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

std::string linkOfFirst(const Scene& scene, const std::string& chat) {
  return textIn(mediumOf(messagesOf(scene.content, chat).at(0)), "path");
}

std::string medium(const Scene& scene, const std::string& chat, std::size_t message) {
  return Json(mediumOf(messagesOf(scene.content, chat).at(message))).write();
}

}  // namespace ExportTest
