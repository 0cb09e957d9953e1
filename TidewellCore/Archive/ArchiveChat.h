#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TidewellCore/Archive/ArchiveDetails.h"
#include "TidewellCore/MediaKind.h"
#include "TidewellCore/Platform/Boxed.h"

// What the Chat Archive shows, as the exporter hands it over.

struct ArchiveMedia {
  MediaKind kind = MediaKind::documents;
  std::optional<std::string> relativePath;  // of the file, from the content root; absent when it was not exported
  std::optional<std::string> fileName;
  bool exported = false;  // the file stands in the export

  bool operator==(const ArchiveMedia&) const = default;
};

struct ArchiveMessage {
  std::string id;  // unique in its chat
  bool fromMe = false;
  std::string sender;               // as it is shown; empty for a notice
  std::string senderJID;            // empty for the owner, for a notice and where it is not known; pages do not tell it
  std::optional<double> timestamp;  // seconds since 1970-01-01T00:00:00Z
  std::optional<std::string> text;
  std::optional<ArchiveMedia> media;
  std::optional<MediaKind> lostMedium;  // of a file that is not in the export, and that words stand for
  Boxed<ArchiveDetails> details;        // absent for plain texts and files
  bool isDeletedLater = false;          // its words or file stayed though the phone has deleted it since
  bool isGone = false;                  // the phone no longer has it

  ArchiveKind kind() const { return details ? details->kind : ArchiveKind::none; }
  bool operator==(const ArchiveMessage&) const = default;
};

struct ArchiveChat {
  std::string id;  // unique in the archive and fit for a file name: ChatArchiveWriter::safeID
  std::string name;
  std::string jid;
  std::string folder;  // in the content root; empty when the chat has none
  bool isGroup = false;
  std::vector<ArchiveMessage> messages;           // undated first, then oldest first
  std::optional<std::string> avatarRelativePath;  // from the content root
  bool isGone = false;                            // the phone no longer has the chat

  bool operator==(const ArchiveChat&) const = default;
};
