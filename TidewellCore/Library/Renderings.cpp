#include "TidewellCore/Library/Renderings.h"

#include <utility>

#include "TidewellCore/Crypto/CryptoShim.h"
#include "TidewellCore/Library/LibraryCheck.h"
#include "TidewellCore/Platform/Base64.h"
#include "TidewellCore/Platform/Json.h"

namespace {

using Value = SQLiteStatement::Value;

constexpr const char* insertChat =
    "INSERT OR REPLACE INTO rendering (chat, changed, manner, folder, files, shelf, messages, preview, last, absent)"
    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char* insertBlock = "INSERT INTO block (shelf, place, file, size, parts) VALUES (?, ?, ?, ?, ?)";

// What is added to others; a larger one is somebody's change of the file.
bool isCount(std::int64_t number) { return number >= 0 && number <= LibraryCheck::largestNumber; }
bool isShelf(std::int64_t number) { return number > 0 && isCount(number); }

Json::Object objectOf(std::string_view text) {
  auto json = Json::parse(text);
  auto* object = json ? json->as<Json::Object>() : nullptr;
  return object == nullptr ? Json::Object() : std::move(*object);
}

std::string textOf(const RenderedFiles& files) {
  Json::Object object;
  for (const auto& [name, file] : files) object.emplace(name, Json::Array{file.size, file.digest});
  return Json(std::move(object)).write();
}

RenderedFiles filesOf(std::string_view text) {
  RenderedFiles files;
  for (const auto& [name, value] : objectOf(text)) {
    const auto* fields = value.as<Json::Array>();
    if (fields == nullptr || fields->size() != 2) continue;
    const auto* size = (*fields)[0].as<std::int64_t>();
    const auto* digest = (*fields)[1].as<std::string>();
    if (size != nullptr && digest != nullptr) files.emplace(name, RenderedFile{.size = *size, .digest = *digest});
  }
  return files;
}

std::string textOf(const std::map<MediaKind, std::int64_t>& counts) {
  Json::Object object;
  for (const auto& [kind, count] : counts) object.emplace(std::string(kind.rawValue()), count);
  return Json(std::move(object)).write();
}

std::map<MediaKind, std::int64_t> countsOf(std::string_view text) {
  std::map<MediaKind, std::int64_t> counts;
  for (const auto& [name, value] : objectOf(text)) {
    const auto kind = MediaKind::fromRawValue(name);
    const auto* count = value.as<std::int64_t>();
    if (kind && count != nullptr && isCount(*count)) counts.emplace(*kind, *count);
  }
  return counts;
}

std::string textOf(const std::vector<RenderedBlock::Part>& parts) {
  Json::Array list;
  for (const RenderedBlock::Part& part : parts) list.push_back(Json::Array{part.page, part.firstMessage, part.count});
  return Json(std::move(list)).write();
}

std::optional<RenderedBlock::Part> partOf(const Json& json) {
  const auto* fields = json.as<Json::Array>();
  if (fields == nullptr || fields->size() != 3) return std::nullopt;
  const auto* page = (*fields)[0].as<std::string>();
  const auto* first = (*fields)[1].as<std::int64_t>();
  const auto* count = (*fields)[2].as<std::int64_t>();
  if (page == nullptr || first == nullptr || count == nullptr) return std::nullopt;
  if (!isCount(*first) || !isCount(*count)) return std::nullopt;
  return RenderedBlock::Part{.page = *page, .firstMessage = *first, .count = *count};
}

std::vector<RenderedBlock::Part> partsOf(std::string_view text) {
  std::vector<RenderedBlock::Part> parts;
  const auto json = Json::parse(text);
  const auto* list = json ? json->as<Json::Array>() : nullptr;
  if (list == nullptr) return parts;
  for (const Json& entry : *list) {
    if (auto part = partOf(entry)) parts.push_back(std::move(*part));
  }
  return parts;
}

ChatRendering chatOf(const SQLiteRowView& row) {
  ChatRendering chat{.changed = row.integer(1).value_or(0),
                     .files = filesOf(row.text(3).value_or("")),
                     .shelf = row.integer(4).value_or(0),
                     .messageCount = row.integer(5).value_or(0),
                     .preview = std::string(row.text(6).value_or("")),
                     .lastTimestamp = row.number(7),
                     .absent = countsOf(row.text(8).value_or(""))};
  chat.folder = row.text(9).value_or("");
  if (const auto manner = row.blob(2)) chat.manner.assign(manner->begin(), manner->end());
  return chat;
}

void saveChats(const SQLiteDB& database, const Renderings& now, const Renderings& before) {
  const SQLiteStatement remove(database, "DELETE FROM rendering WHERE chat = ?");
  for (const auto& [number, chat] : before.chats) {
    if (!now.chats.contains(number)) remove.run({number});
  }
  const SQLiteStatement write(database, insertChat);
  for (const auto& [number, chat] : now.chats) {
    const auto known = before.chats.find(number);
    if (known != before.chats.end() && known->second == chat) continue;
    const std::string files = textOf(chat.files);
    const std::string absent = textOf(chat.absent);
    write.run({number, chat.changed, ByteView(chat.manner), std::string_view(chat.folder), std::string_view(files),
               chat.shelf, chat.messageCount, std::string_view(chat.preview),
               chat.lastTimestamp ? Value(*chat.lastTimestamp) : Value(SQLiteNull{}), std::string_view(absent)});
  }
}

void saveShelves(const SQLiteDB& database, const Renderings& now, const Renderings& before) {
  const SQLiteStatement remove(database, "DELETE FROM block WHERE shelf = ?");
  for (const auto& [number, blocks] : before.shelves) {
    const auto kept = now.shelves.find(number);
    if (kept == now.shelves.end() || kept->second != blocks) remove.run({number});
  }
  const SQLiteStatement write(database, insertBlock);
  for (const auto& [number, blocks] : now.shelves) {
    const auto known = before.shelves.find(number);
    if (known != before.shelves.end() && known->second == blocks) continue;
    std::int64_t place = 0;
    for (const RenderedBlock& block : blocks) {
      const std::string parts = textOf(block.parts);
      write.run({number, place++, std::string_view(block.file), block.size, std::string_view(parts)});
    }
  }
}

}  // namespace

RenderedFile RenderedFile::of(std::string_view content) {
  return {.size = static_cast<std::int64_t>(content.size()), .digest = Base64::encode(sha256(bytesOf(content)))};
}

Renderings Renderings::load(const SQLiteDB& database) {
  Renderings renderings;
  database.forEachRow(
      "SELECT chat, changed, manner, files, shelf, messages, preview, last, absent, folder FROM rendering",
      [&](const SQLiteRowView& row) {
        ChatRendering chat = chatOf(row);
        if (!isShelf(chat.shelf) || !isCount(chat.messageCount)) return;
        renderings.chats.insert_or_assign(row.integer(0).value_or(0), std::move(chat));
      });
  database.forEachRow("SELECT shelf, file, size, parts FROM block ORDER BY shelf, place",
                      [&](const SQLiteRowView& row) {
                        const std::int64_t shelf = row.integer(0).value_or(0);
                        if (!isShelf(shelf)) return;
                        renderings.shelves[shelf].push_back({.file = std::string(row.text(1).value_or("")),
                                                             .size = row.integer(2).value_or(0),
                                                             .parts = partsOf(row.text(3).value_or(""))});
                      });
  return renderings;
}

void Renderings::save(const SQLiteDB& database) const {
  const Renderings before = load(database);
  saveChats(database, *this, before);
  saveShelves(database, *this, before);
}

void Renderings::doubt() {
  for (auto& [number, chat] : chats) chat.manner.clear();
}

void Renderings::doubt(const SQLiteDB& database, const std::vector<std::int64_t>& chats) {
  const SQLiteStatement write(database, "UPDATE rendering SET manner = x'' WHERE chat = ?");
  for (const std::int64_t chat : chats) write.run({chat});
}

void Renderings::forget(const SQLiteDB& database) {
  for (const char* table : {"rendering", "block"}) {
    database.forEachRow(std::string("DELETE FROM ").append(table), [](const SQLiteRowView&) {});
  }
}
