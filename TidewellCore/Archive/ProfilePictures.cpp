#include "TidewellCore/Archive/ProfilePictures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>

#include "TidewellCore/ChatData/JID.h"
#include "TidewellCore/CopyFailure.h"
#include "TidewellCore/FolderNames.h"
#include "TidewellCore/MakeRoom.h"
#include "TidewellCore/Platform/FileDescriptor.h"
#include "TidewellCore/Platform/Files.h"
#include "TidewellCore/Platform/PathText.h"
#include "TidewellCore/Platform/Text.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t headerSize = 16;
constexpr std::int64_t largestPicture = 32 << 20;  // bytes; WhatsApp's take a tenth of a megabyte

std::optional<std::int64_t> signedNumber(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool hasAt(ByteView bytes, std::size_t offset, std::string_view expected) {
  return bytes.size() >= offset + expected.size() && textOf(bytes.subspan(offset, expected.size())) == expected;
}

// In bytes. Throws what keeps the file from being read whole.
std::int64_t sizeOf(const ManifestFile& file, const OpenedBackup& backup) {
  const auto size = backup.provenSize(file);
  const bool isOpen = backup.isOpenedBy(backup.keyOf(file));
  if (size && isOpen) return *size;
  const auto stored = backup.location(file);
  if (!stored) throw CopyError(FailureReason::missing);
  FileDescriptor::openForReading(*stored);
  if (!isOpen) throw CopyError(FailureReason::keyMissing);
  throw CopyError(FailureReason::cutShort);
}

// Whether its name says that it is a picture, and not something else that is kept beside them.
bool isNamedAsPicture(const ManifestFile& file) {
  constexpr std::array<std::string_view, 8> extensions{"jpg", "jpeg", "thumb", "png", "gif", "webp", "heic", "heif"};
  return std::ranges::find(extensions, Text::lowercased(PathText::extension(file.relativePath))) != extensions.end();
}

// Absent for a file that is meant to be no picture, and for one that the phone
// kept empty. Throws what keeps it from being read as one.
std::optional<ProfilePictureFormat> formatOf(const ManifestFile& file, const OpenedBackup& backup) {
  const std::int64_t size = sizeOf(file, backup);
  if (size <= largestPicture) {
    if (const auto format = ProfilePictures::detectFormat(backup.firstBytes(file, headerSize))) return format;
  }
  if (size > 0 && isNamedAsPicture(file)) throw CopyError(FailureReason::unreadable);
  return std::nullopt;
}

void tellOfLoss(const std::exception& error, const ArchiveChat& chat, const ManifestFile& file,
                const OpenedBackup& backup, const ProfilePictures::LossObserver& lost) {
  lost(error, {.chat = chat,
               .name = std::string(PathText::lastComponent(file.relativePath)),
               .source = backup.location(file).value_or(fs::path())});
}

// A phone loads the full picture when somebody looks at it, and may have the small one alone again.
bool isKept(const fs::path& former, const ProfilePictureCandidate& now) {
  return now.isThumb && Files::regularFileSize(former).value_or(0) > now.sourceSize;
}

// False when the copy is there already. Gives the chat the copy's path.
bool copyTo(const fs::path& contentRoot, const ProfilePictures::Selection& picture, const OpenedBackup& backup,
            ArchiveChat& chat) {
  const ManifestFile& file = picture.candidate.file;
  const Bytes content = backup.firstBytes(file, static_cast<std::size_t>(sizeOf(file, backup)));
  const std::string name = chat.id + "." + std::string(rawValue(picture.format));
  const fs::path folder = contentRoot / FolderNames::avatars;
  MakeRoom::forFolder(folder);
  const fs::path place = folder / PathText::path(name);
  const bool isNew = !isKept(place, picture.candidate) && Files::writeWhenDifferent(place, textOf(content));
  chat.avatarRelativePath = std::string(FolderNames::avatars) + "/" + name;
  return isNew;
}

bool isBetter(const ProfilePictureCandidate& a, const ProfilePictureCandidate& b) {
  const auto rank = [](const ProfilePictureCandidate& candidate) {
    return std::tuple(!candidate.isThumb, candidate.version, candidate.sourceSize);
  };
  if (rank(a) != rank(b)) return rank(a) > rank(b);
  return a.file.relativePath < b.file.relativePath;
}

}  // namespace

std::optional<ProfilePictures::FileName> ProfilePictures::parseFileName(std::string_view path) {
  const std::string_view name = PathText::lastComponent(path);
  const auto dot = name.rfind('.');
  if (dot == std::string_view::npos) return std::nullopt;
  const std::string_view stem = name.substr(0, dot);
  const auto hyphen = stem.rfind('-');
  if (hyphen == std::string_view::npos || hyphen == 0) return std::nullopt;
  const auto version = signedNumber(stem.substr(hyphen + 1));
  if (!version) return std::nullopt;
  return FileName{.jidUser = std::string(stem.substr(0, hyphen)), .version = *version};
}

ProfilePictures::Index ProfilePictures::index(const std::vector<ManifestFile>& files, const OpenedBackup& backup) {
  Index byUser;
  for (const ManifestFile& file : files) {
    const auto name = parseFileName(file.relativePath);
    if (!name) continue;
    byUser[name->jidUser].push_back({.file = file,
                                     .jidUser = name->jidUser,
                                     .version = name->version,
                                     .isThumb = Text::lowercased(PathText::extension(file.relativePath)) == "thumb",
                                     .sourceSize = backup.sourceSize(file)});
  }
  return byUser;
}

std::vector<std::string> ProfilePictures::matchingUsers(std::string_view jid, const ChatStorageSnapshot& snapshot) {
  std::vector<std::string> users;
  const auto add = [&](std::string_view alias) {
    std::string user(JID::userPart(alias));
    if (!user.empty() && std::ranges::find(users, user) == users.end()) users.push_back(std::move(user));
  };
  add(jid);
  for (const std::string& alias : snapshot.aliasJIDs(jid)) add(alias);
  return users;
}

std::optional<ProfilePictureFormat> ProfilePictures::detectFormat(ByteView bytes) {
  const ByteView header = bytes.first(std::min(bytes.size(), headerSize));
  if (hasAt(header, 0, "\xFF\xD8\xFF")) return ProfilePictureFormat::jpeg;
  if (hasAt(header, 0, "\x89PNG\r\n\x1A\n")) return ProfilePictureFormat::png;
  if (hasAt(header, 0, "GIF87a") || hasAt(header, 0, "GIF89a")) return ProfilePictureFormat::gif;
  if (hasAt(header, 0, "RIFF") && hasAt(header, 8, "WEBP")) return ProfilePictureFormat::webp;
  constexpr std::array<std::string_view, 4> heicBrands{"heic", "heif", "mif1", "msf1"};
  const bool isHEIC = std::ranges::any_of(heicBrands, [&](std::string_view brand) { return hasAt(header, 8, brand); });
  if (hasAt(header, 4, "ftyp") && isHEIC) return ProfilePictureFormat::heic;
  return std::nullopt;
}

std::optional<ProfilePictures::Selection> ProfilePictures::select(const ArchiveChat& chat,
                                                                  const ChatStorageSnapshot& snapshot,
                                                                  const Index& byUser, const OpenedBackup& backup,
                                                                  const LossObserver& lost) {
  std::vector<const ProfilePictureCandidate*> candidates;
  for (const std::string& user : matchingUsers(chat.jid, snapshot)) {
    const auto found = byUser.find(user);
    if (found == byUser.end()) continue;
    for (const ProfilePictureCandidate& candidate : found->second) candidates.push_back(&candidate);
  }
  std::ranges::stable_sort(candidates, [](const auto* a, const auto* b) { return isBetter(*a, *b); });
  for (const ProfilePictureCandidate* candidate : candidates) {
    try {
      if (const auto format = formatOf(candidate->file, backup)) return Selection{*candidate, *format};
    } catch (const std::exception& error) {
      tellOfLoss(error, chat, candidate->file, backup, lost);
    }
  }
  return std::nullopt;
}

ProfilePictures::Outcome ProfilePictures::attachAndCopy(std::vector<ArchiveChat>& chats, const BackupSource& source,
                                                        const fs::path& contentRoot, const LossObserver& lost,
                                                        const CancellationCheck& isCancelled) {
  const Index byUser = index(source.pictures(), source.opened);
  Outcome outcome;
  for (ArchiveChat& chat : chats) {
    throwIfCancelled(isCancelled);
    const auto best = select(chat, source.snapshot, byUser, source.opened, lost);
    bool isCopied = false;
    try {
      isCopied = best && copyTo(contentRoot, *best, source.opened, chat);
      if (best && source.opened.isDoubtful(best->candidate.file)) {
        outcome.doubtful.emplace_back(PathText::lastComponent(best->candidate.file.relativePath));
      }
    } catch (const std::exception& error) {
      tellOfLoss(error, chat, best->candidate.file, source.opened, lost);
    }
    isCopied ? ++outcome.copied : ++outcome.skipped;
  }
  return outcome;
}
