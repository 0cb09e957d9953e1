#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "TidewellCore/Platform/Bytes.h"

// A row of ZWAMESSAGE with what hangs on it, each field as its column holds it and
// absent where that holds no such value. A view: whatever it was read from must outlive it.
struct MessageRow {
  std::int64_t type = 0;       // ZMESSAGETYPE
  std::int64_t eventType = 0;  // ZGROUPEVENTTYPE
  std::int64_t flags = 0;      // ZFLAGS
  bool isFromMe = false;
  bool isStarred = false;
  std::optional<std::string_view> text;
  std::optional<std::string_view> memberJID;   // of ZGROUPMEMBER
  std::optional<std::string_view> creatorJID;  // of the group, ZCREATORJID
  std::span<const std::string> ownJIDs;        // the owner's, as far as they are known

  // The media item.
  bool namesFile = false;
  bool hasFile = false;  // one that the backup has
  std::optional<std::string_view> title;
  std::optional<std::string_view> vCardName;
  std::optional<std::string_view> vCardString;
  std::optional<std::string_view> mediaURL;
  std::optional<std::string_view> authorName;
  std::optional<double> latitude;
  std::optional<double> longitude;
  std::optional<std::int64_t> duration;  // seconds
  std::int64_t mediaOrigin = 0;
  ByteView metadata;

  // The data item, which a link's preview is.
  std::optional<std::string_view> linkURL;  // ZMATCHEDTEXT
  std::optional<std::string_view> linkTitle;
  std::optional<std::string_view> linkSummary;

  // The info row.
  ByteView receiptInfo;
};
