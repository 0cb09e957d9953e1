#include "Tests/Library/LibraryRows.h"

#include <string_view>

#include "TidewellCore/Library/LibraryFile.h"

std::string LibraryRows::of(const std::filesystem::path& contentRoot) {
  constexpr std::string_view columnsOfTables[] = {
      "'owner', jid, 0 FROM owner",    "'export', id, device, device_name, backup_at, zone, locale FROM export",
      "'chat', * FROM chat",           "'identity', * FROM chat_jid",
      "'title', * FROM title",         "'member', * FROM member",
      "'sender', * FROM sender",       "'person', * FROM person",
      "'medium', * FROM medium",       "'message', * FROM message",
      "'rendering', * FROM rendering", "'block', * FROM block",
  };
  const std::filesystem::path file = contentRoot / LibraryFile::fileName;
  if (!std::filesystem::exists(file)) return {};
  const SQLiteDB database(file.string(), SQLiteDB::OpenMode::readOnly);
  std::string rows;
  for (const std::string_view columns : columnsOfTables) {
    database.query("SELECT " + std::string(columns) + " ORDER BY 2, 3", {}, [&](const SQLiteRow& row) {
      for (const SQLiteValue& value : row.values) {
        if (const auto* text = std::get_if<std::string>(&value)) rows += *text;
        if (const auto* number = std::get_if<std::int64_t>(&value)) rows += std::to_string(*number);
        if (const auto* real = std::get_if<double>(&value)) rows += std::to_string(*real);
        if (const auto* blob = std::get_if<::Bytes>(&value))
          for (const std::uint8_t byte : *blob) rows += std::to_string(byte) + " ";
        rows += '|';
      }
      rows += '\n';
    });
  }
  return rows;
}
