#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SQLValue.h"
#include "Tests/Support/SampleClips.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

// ZMESSAGETYPE of the messages that the sample holds.
enum MessageType : std::int64_t {
  textType = 0,
  photoType = 1,
  videoType = 2,
  audioType = 3,
  groupEventType = 6,
  documentType = 8,
  noticeType = 10,
  deletedType = 14,
  stickerType = 15
};

struct SampleFile {
  MessageType type = textType;
  std::string extension;
  Bytes content;
  SQLValue title;
  SQLValue duration;
};

// Makes the sample's media files: such that open and play, or noise with the right first bytes, which
// takes no time.
class SampleFiles {
 public:
  SampleFiles(bool playable, std::uint64_t seed);

  // Of any kind, in the shares that phones hold.
  SampleFile any(SeededRandom& random);
  // At times the one made before: a forwarded photo has the bytes of the one it came from.
  SampleFile photo(SeededRandom& random);
  SampleFile video(SeededRandom& random) const;
  SampleFile voiceNote(SeededRandom& random) const;
  SampleFile audio(SeededRandom& random) const;
  SampleFile sticker(SeededRandom& random) const;
  // A PDF or a Word document, by the name's extension.
  SampleFile document(SeededRandom& random, const std::string& name) const;
  // The small picture beside a photo or a video.
  static Bytes thumbnail(SeededRandom& random);

 private:
  Bytes photoContent(SeededRandom& random) const;

  std::optional<SampleClips> clips_;
  Bytes lastPhoto_;
};

}  // namespace Fixture
