#pragma once

#include <QObject>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Services/FolderListing.h"
#include "Tidewell/Services/FolderPlaces.h"
#include "Tidewell/Session/BackgroundWork.h"

// What the own folder chooser knows.
struct FolderBrowserState {
  FolderListing listing;    // of the folder shown; its folder is empty until the first was read
  std::size_t current = 0;  // the row that keys go on from: the folder that one came up from, else the first
  std::vector<FolderPlace> places;
  bool isReading = false;                // another folder was asked for
  std::optional<FolderFault> pathFault;  // of the path typed last
  std::optional<FolderFault> nameFault;  // of the new folder's name

  bool operator==(const FolderBrowserState&) const = default;
};

// Walks through folders for whoever has to choose one. Folders are read on workers; the one
// shown stays until the next was read, and what was asked for last is what is shown.
class FolderBrowser : public QObject {
  Q_OBJECT

 public:
  // `work` must outlive it.
  FolderBrowser(BackgroundWork& work, std::filesystem::path home) : work_(work), home_(std::move(home)) {}

  const FolderBrowserState& state() const { return state_; }

  // Shows the nearest folder that exists, and the places anew.
  void open(const std::filesystem::path& folder);
  // Forgets everything, and what is still asked for.
  void close();

  void enter(std::size_t row);
  void goUp();
  void goToPlace(std::size_t place);
  // As people type it; see Folders::typed.
  void goTo(const std::string& path);
  // Within the folder shown; the new one is shown then.
  void create(const std::string& name);
  void forgetNameFault();

  // Chooses the folder shown or, while another is being read, that one once it is shown.
  void choose();

 signals:
  void changed();
  void chosen(const std::filesystem::path& folder);

 private:
  // What a worker found: a folder to show, or why there is none.
  struct Found {
    FolderListing listing;
    std::optional<FolderFault> pathFault;
    std::optional<FolderFault> nameFault;
  };

  void read(std::function<Found()> work);
  void take(Found found);
  void show(const std::filesystem::path& folder);
  std::size_t rowOf(const std::filesystem::path& folder) const;
  void readPlaces();

  BackgroundWork& work_;
  std::filesystem::path home_;
  FolderBrowserState state_;
  int question_ = 0;  // counts what was asked for; answers to earlier ones are dropped
  bool chooses_ = false;
};
