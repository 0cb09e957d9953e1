#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TidewellCore/Archive/ArchiveChat.h"
#include "TidewellCore/ChatData/BackupSource.h"
#include "TidewellCore/Platform/RawValue.h"

// The image formats in which WhatsApp keeps profile pictures, whatever their
// names say. The raw value is the extension of a copy.
enum class ProfilePictureFormat { jpeg, png, gif, webp, heic };

constexpr std::array<std::pair<ProfilePictureFormat, std::string_view>, 5> rawValueTable(ProfilePictureFormat) {
  using enum ProfilePictureFormat;
  return {{{jpeg, "jpeg"}, {png, "png"}, {gif, "gif"}, {webp, "webp"}, {heic, "heic"}}};
}

// A file of the backup that may be somebody's picture.
struct ProfilePictureCandidate {
  ManifestFile file;
  std::string jidUser;          // the user part of the JID that it is filed under
  std::int64_t version = 0;     // grows with every new picture
  bool isThumb = false;         // the small form
  std::int64_t sourceSize = 0;  // bytes

  bool operator==(const ProfilePictureCandidate&) const = default;
};

// Finds the picture of each chat and copies it into the export.
namespace ProfilePictures {

struct FileName {
  std::string jidUser;
  std::int64_t version = 0;

  bool operator==(const FileName&) const = default;
};
// "<user>-<version>.<extension>"; the user part of a group has a hyphen of its own.
std::optional<FileName> parseFileName(std::string_view path);

// The candidates by the user part of their JID.
using Index = std::map<std::string, std::vector<ProfilePictureCandidate>, std::less<>>;
Index index(const std::vector<ManifestFile>& files, const OpenedBackup& backup);

// The user parts of a chat's JIDs, phone and LID, without repeats.
std::vector<std::string> matchingUsers(std::string_view jid, const ChatStorageSnapshot& snapshot);

// Tells the format from the first 16 bytes of a file.
std::optional<ProfilePictureFormat> detectFormat(ByteView header);

struct Selection {
  ProfilePictureCandidate candidate;
  ProfilePictureFormat format = ProfilePictureFormat::jpeg;

  bool operator==(const Selection&) const = default;
};
// A picture that is not in the export although the backup lists it.
struct Loss {
  const ArchiveChat& chat;
  std::string name;              // its file name in the backup
  std::filesystem::path source;  // where the backup keeps it
};
// Is told of a loss while `error`, what it came of, is being handled. May throw, to end the work.
using LossObserver = std::function<void(const std::exception& error, const Loss& loss)>;

// The best of a chat's pictures: a full picture before a thumbnail, then the
// newest, then the largest, then the first by its path. Files that are no
// pictures are passed over; `lost` is told of those that cannot be read, or not as
// the pictures that their names say they are.
std::optional<Selection> select(const ArchiveChat& chat, const ChatStorageSnapshot& snapshot, const Index& byUser,
                                const OpenedBackup& backup, const LossObserver& lost);

struct Outcome {
  std::int64_t copied = 0;
  std::int64_t skipped = 0;  // chats without a picture that can be read, and pictures that are there already
  // The names in the backup of pictures that are taken as they are, and whose ends are not as those of whole files.
  std::vector<std::string> doubtful;

  bool operator==(const Outcome&) const = default;
};
// Copies each chat's picture to "avatars" in the content root, named after the
// chat, and gives the chat its path. Throws TidewellError::cancelled, and what `lost` throws.
Outcome attachAndCopy(std::vector<ArchiveChat>& chats, const BackupSource& source,
                      const std::filesystem::path& contentRoot, const LossObserver& lost,
                      const CancellationCheck& isCancelled = {});

}  // namespace ProfilePictures
