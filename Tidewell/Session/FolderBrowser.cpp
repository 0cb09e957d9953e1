#include "Tidewell/Session/FolderBrowser.h"

#include <algorithm>
#include <utility>

namespace fs = std::filesystem;

void FolderBrowser::open(const fs::path& folder) {
  close();
  readPlaces();
  show(folder);
}

void FolderBrowser::close() {
  ++question_;
  chooses_ = false;
  state_ = {};
}

void FolderBrowser::enter(std::size_t row) {
  if (row < state_.listing.names.size()) show(state_.listing.folder / state_.listing.names[row]);
}

void FolderBrowser::goUp() {
  if (state_.listing.folder.has_relative_path()) show(state_.listing.folder.parent_path());
}

void FolderBrowser::goToPlace(std::size_t place) {
  if (place < state_.places.size()) show(state_.places[place].folder);
}

void FolderBrowser::goTo(const std::string& path) {
  read([folder = Folders::typed(path, state_.listing.folder, home_)] {
    const bool isThere = Folders::nearest(folder) == folder;
    return isThere ? Found{.listing = Folders::listing(folder)} : Found{.pathFault = FolderFault::noSuchFolder};
  });
}

void FolderBrowser::create(const std::string& name) {
  read([parent = state_.listing.folder, name] {
    const std::optional<FolderFault> fault = Folders::create(parent, name);
    return fault ? Found{.nameFault = fault} : Found{.listing = Folders::listing(parent / name)};
  });
}

void FolderBrowser::forgetNameFault() {
  state_.nameFault.reset();
  emit changed();
}

void FolderBrowser::choose() {
  chooses_ = state_.isReading;
  if (!state_.isReading && !state_.listing.folder.empty()) emit chosen(state_.listing.folder);
}

void FolderBrowser::show(const fs::path& folder) {
  read([folder] { return Found{.listing = Folders::listing(Folders::nearest(folder))}; });
}

void FolderBrowser::read(std::function<Found()> work) {
  state_.isReading = true;
  state_.pathFault.reset();
  state_.nameFault.reset();
  chooses_ = false;
  emit changed();
  work_.run(BackgroundWork::Lane::userInitiated, this, std::move(work),
            [this, question = ++question_](std::future<Found> found) {
              if (question == question_) take(found.get());
            });
}

void FolderBrowser::take(Found found) {
  state_.isReading = false;
  state_.pathFault = found.pathFault;
  state_.nameFault = found.nameFault;
  const bool isShown = !found.pathFault && !found.nameFault;
  if (isShown) {
    const fs::path before = std::exchange(state_.listing, std::move(found.listing)).folder;
    state_.current = rowOf(before);
  }
  const bool chooses = std::exchange(chooses_, false) && isShown;
  emit changed();
  if (chooses) choose();
}

std::size_t FolderBrowser::rowOf(const fs::path& folder) const {
  const std::vector<fs::path>& names = state_.listing.names;
  if (folder.parent_path() != state_.listing.folder) return 0;
  const auto row = std::ranges::find(names, folder.filename());
  return row == names.end() ? 0 : static_cast<std::size_t>(row - names.begin());
}

void FolderBrowser::readPlaces() {
  work_.run(
      BackgroundWork::Lane::userInitiated, this, [home = home_] { return FolderPlaces::all(home); },
      [this](std::future<std::vector<FolderPlace>> places) {
        state_.places = places.get();
        emit changed();
      });
}
