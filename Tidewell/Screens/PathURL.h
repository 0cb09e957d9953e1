#pragma once

#include <QFile>
#include <QUrl>
#include <filesystem>

// Between the core's paths and Qt's file URLs, in the file system's own encoding.
inline QUrl fileURL(const std::filesystem::path& path) { return QUrl::fromLocalFile(QFile::decodeName(path.c_str())); }

inline std::filesystem::path localPath(const QUrl& url) {
  return std::filesystem::path(QFile::encodeName(url.toLocalFile()).toStdString());
}
