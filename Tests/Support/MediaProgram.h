#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Support/Bytes.h"

// Clips made by the program ffmpeg, as short as the samples given. A missing program ends in a
// std::runtime_error that names its package, a failing one in its own words.
namespace Fixture {

// Rows of red, green and blue, one picture after the other.
struct Film {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t framesPerSecond = 20;
  Bytes frames;
};

// One channel.
struct Sound {
  std::uint32_t samplesPerSecond = 48'000;
  std::vector<std::int16_t> samples;
};

// H.264 and AAC in MP4, its index first.
Bytes encodedVideo(const Film& film, const Sound& sound);
// AAC in MP4.
Bytes encodedAudio(const Sound& sound);
// Opus in Ogg.
Bytes encodedVoiceNote(const Sound& sound);

}  // namespace Fixture
