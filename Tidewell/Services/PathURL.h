#pragma once

#include <QFile>
#include <QString>
#include <QUrl>
#include <filesystem>

// Between the core's paths and Qt's texts and file URLs, in the file system's own encoding.
inline std::filesystem::path localPath(const QString& text) { return QFile::encodeName(text).toStdString(); }

inline std::filesystem::path localPath(const QUrl& url) { return localPath(url.toLocalFile()); }

inline QString pathText(const std::filesystem::path& path) { return QFile::decodeName(path.c_str()); }

inline QUrl fileURL(const std::filesystem::path& path) { return QUrl::fromLocalFile(pathText(path)); }
