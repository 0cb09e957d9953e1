#include "Tidewell/Screens/FolderPrompt.h"

#include <utility>

#include "Tidewell/Contents/TypeAhead.h"
#include "Tidewell/Services/PathURL.h"

FolderPrompt::FolderPrompt(const Parts& parts)
    : work_(parts.work), texts_(parts.texts), asksDesktop_(parts.asksDesktop), browser_(parts.work, parts.home) {
  connect(&browser_, &FolderBrowser::changed, this, [this] { update(browser_.state()); });
  connect(&browser_, &FolderBrowser::chosen, this, [this](const std::filesystem::path& folder) { answer(folder); });
}

void FolderPrompt::ask(const FolderRequest& request, FolderAnswer answer) {
  cancel();
  ++question_;
  request_ = request;
  answer_ = std::move(answer);
  if (asksDesktop_) return askDesktop();
  open(Place::window);
}

// Its dialogs go astray in folders that do not exist.
void FolderPrompt::askDesktop() {
  work_.run(
      BackgroundWork::Lane::userInitiated, this, [folder = request_.initialFolder] { return Folders::nearest(folder); },
      [this, question = question_](std::future<std::filesystem::path> folder) {
        if (question != question_) return;
        request_.initialFolder = folder.get();
        portal_.ask(request_, {.opened = [this] { open(Place::desktop); },
                               .answered = [this](const auto& chosen) { answer(chosen); },
                               .absent = [this] { open(Place::window); }});
      });
}

void FolderPrompt::open(Place place) {
  place_ = place;
  if (place == Place::window) browser_.open(request_.initialFolder);
  emit changed();
}

void FolderPrompt::goTo(const QString& path) { browser_.goTo(localPath(path).string()); }

void FolderPrompt::create(const QString& name) { browser_.create(localPath(name).string()); }

int FolderPrompt::rowNamed(const QString& typed, int current) const {
  return static_cast<int>(TypeAhead::find(content_.folders, typed, current));
}

void FolderPrompt::answer(const std::optional<std::filesystem::path>& folder) {
  if (!answer_) return;
  const FolderAnswer answer = std::exchange(answer_, nullptr);
  place_ = Place::nowhere;
  portal_.cancel();
  browser_.close();
  emit changed();
  answer(folder);
}

void FolderPrompt::show(const FolderRequest& request, const FolderBrowserState& state) {
  cancel();
  request_ = request;
  answer_ = [](const auto&) {};
  place_ = Place::window;
  update(state);
}

void FolderPrompt::update(const FolderBrowserState& state) {
  content_ = FolderChooserContent::of(state, texts_);
  if (folderRows_.stringList() != content_.folders) folderRows_.setStringList(content_.folders);
  if (placeRows_.stringList() != content_.places) placeRows_.setStringList(content_.places);
  emit changed();
}
