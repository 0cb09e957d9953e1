#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

// What a merge of folders is about to move, kept in the content root until the
// archive, the folder manifest and the library have followed: after an interruption nothing
// else tells which of two files that had one name is which. Places are
// "folder/file" or a folder, from the content root.
class MergeJournal {
 public:
  // With what an interrupted merge left; one that cannot be read is empty.
  explicit MergeJournal(std::filesystem::path contentRoot);

  void addFile(const std::string& from, const std::string& to) { files_.add(from, to); }
  void addFolder(const std::string& from, const std::string& to) { folders_.add(from, to); }
  bool isEmpty() const { return files_.places.empty() && folders_.places.empty(); }

  // Throws what writing reports.
  void save() const;
  void remove() const;

  // Where something went that no longer stands in its place, whatever the
  // spelling of its name; absent when it has not moved, or not yet.
  std::optional<std::string> newPlaceOfFile(const std::string& former) const { return newPlace(files_, former); }
  std::optional<std::string> newPlaceOfFolder(const std::string& former) const { return newPlace(folders_, former); }

 private:
  struct Places {
    void add(const std::string& from, const std::string& to);
    const std::string* next(const std::string& place) const;

    std::map<std::string, std::string> places;
    std::map<std::string, std::string> placesByKey;
  };

  bool stands(const std::string& place) const;
  std::optional<std::string> newPlace(const Places& places, const std::string& former) const;

  std::filesystem::path contentRoot_;
  Places files_;
  Places folders_;
};
