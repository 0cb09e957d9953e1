#pragma once

#include <cstdint>
#include <vector>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"

namespace Fixture {

struct Clip {
  Bytes content;
  // As the chat database stores it, in whole seconds.
  std::int64_t seconds = 0;
};

// Clips that play, each encoded once. A copy has bytes and a size of its own, and plays the same.
class SampleClips {
 public:
  explicit SampleClips(std::uint64_t seed);

  Clip video(SeededRandom& random) const;
  Clip voiceNote(SeededRandom& random) const;
  Clip audio(SeededRandom& random) const;

 private:
  std::vector<Clip> videos_;
  std::vector<Clip> voiceNotes_;
  std::vector<Clip> audios_;
};

// Adds a box that players pass over to an MP4 file (ISO/IEC 14496-12, 8.1.2).
Bytes withFreeBox(Bytes content, ByteView filling);

// Adds padding to the comment header of an Opus stream in Ogg (RFC 7845, 5.2), whose second page must
// hold nothing else. `filling` takes at most 40,000 bytes.
Bytes withPaddedComment(const Bytes& content, ByteView filling);

}  // namespace Fixture
