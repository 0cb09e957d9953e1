#pragma once

#include <functional>
#include <string>

#include "Tidewell/Session/ExportSession.h"

// The list of the backups that stand where backups are kept.
class LibraryRefresh {
 public:
  explicit LibraryRefresh(ExportSession& session) : session_(session) {}

  // Reads the list anew and measures what is in it; then calls `then`, before the refresh counts as ended.
  // Ignored during an unlock.
  void refresh(const std::function<void(std::function<void()> end)>& then);
  // The same when somebody comes back to the window: sizes that are known stay, and nothing is read twice at once.
  void refreshOnReturn();

  // Null when no such backup is listed. By path, or by the identifier as the screens have it.
  const DiscoveredBackup* atPath(const std::optional<std::string>& path) const;
  const DiscoveredBackup* withIdentifier(const QString& id) const;

 private:
  enum class Sizes { measured, kept };
  using Then = std::function<void(std::function<void()> end)>;

  void read(Sizes sizes, const Then& then);
  void measure(const Then& then);
  void end();

  ExportSession& session_;
};
