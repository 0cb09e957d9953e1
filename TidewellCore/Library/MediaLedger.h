#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TidewellCore/ExportPlace.h"
#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/DateText.h"
#include "TidewellCore/Platform/SQLiteDB.h"

// A file of the phone, and what it became in the export.
struct KeptMedium {
  std::string path;                  // on the phone: "Message/Media/…"
  std::optional<ExportPlace> place;  // absent for one that was never exported
  std::int64_t size = 0;             // bytes of the file at its place
  std::optional<Date> date;          // of its message
  MediaKind kind = MediaKind::documents;
  std::string chatJID;      // that it was filed under
  bool isThere = false;     // it stood at its place when the last export ended
  bool isDoubtful = false;  // it came from a file whose end was not as that of a whole one
  std::string digest;       // SHA-256 of the file at its place, in Base64; empty as long as nobody asked
  std::string sentDigest;   // the same as WhatsApp has it, of the file or of what was sent; empty where it is not known

  bool operator==(const KeptMedium&) const = default;
};

// Which file of the phone became which file of the export. A path that another phone gave
// to another file has an entry for each.
class MediaLedger {
 public:
  // Reads all of it.
  explicit MediaLedger(const SQLiteDB& database);

  // Null for a number that no file has.
  const KeptMedium* medium(std::int64_t number) const;
  const std::deque<KeptMedium>& media() const { return media_; }

  // The newest entry of a path; null where there is none. Good until one is entered or changed.
  const KeptMedium* newest(std::string_view path) const;
  // The number of the newest entry of a path, which is made when there is none.
  std::int64_t enter(std::string_view path);
  // What this export knows of a file; of two that have one path, the first counts.
  // `isCopied` says that this export wrote it, so that its bytes may be others.
  void settle(KeptMedium medium, bool isCopied = false);
  // Looks after every entry that was not settled, with `isThere` telling of a place and a size.
  void review(const std::function<bool(const ExportPlace& place, std::int64_t size)>& isThere);
  // Keeps what was found of a file at its place; `number` is one that there is.
  void keepDigest(std::int64_t number, std::string digest);
  // Follows files that went elsewhere: `newPlace` tells where to, and is absent for those that did not. Tells whether
  // anything changed.
  bool relocate(const std::function<std::optional<ExportPlace>(const ExportPlace& former)>& newPlace);

  // The numbers of those that went elsewhere, came or went away since they were saved.
  const std::set<std::int64_t>& displaced() const { return displaced_; }
  // Writes what is new. Tells whether there was anything.
  bool save(const SQLiteDB& database);

 private:
  void index(std::size_t number);
  // The entry of a path for such a file, which is made when there is none.
  std::size_t numberOf(const KeptMedium& medium);
  void touch(std::size_t number);
  void displace(std::size_t number);

  std::deque<KeptMedium> media_;                              // by their numbers; what is entered stays where it is
  std::unordered_map<std::string_view, std::size_t> newest_;  // by path; of texts in media_
  // The former entries of paths that have several.
  std::unordered_multimap<std::string_view, std::size_t> former_;
  std::vector<bool> isSettled_;
  std::vector<bool> isUnsaved_;
  std::size_t savedCount_ = 0;
  std::set<std::int64_t> displaced_;
};
