#include "Tidewell/Screens/FolderPrompt.h"

#include <utility>

#include "Tidewell/Services/PathURL.h"

void FolderPrompt::ask(const FolderRequest& request, FolderAnswer answer) {
  cancel();
  request_ = request;
  answer_ = std::move(answer);
  emit changed();
}

QUrl FolderPrompt::initialFolder() const {
  std::filesystem::path folder = request_.initialFolder;
  std::error_code error;
  while (!std::filesystem::is_directory(folder, error) && folder != folder.parent_path()) folder = folder.parent_path();
  return fileURL(folder);
}

void FolderPrompt::choose(const QUrl& folder) { answer(localPath(folder)); }

void FolderPrompt::cancel() { answer(std::nullopt); }

void FolderPrompt::answer(const std::optional<std::filesystem::path>& folder) {
  if (!answer_) return;
  const FolderAnswer answer = std::exchange(answer_, nullptr);
  emit changed();
  answer(folder);
}
