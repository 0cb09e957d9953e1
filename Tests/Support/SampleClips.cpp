#include "Tests/Support/SampleClips.h"

#include <algorithm>
#include <array>
#include <future>
#include <stdexcept>

#include "Tests/Support/MediaProgram.h"
#include "Tests/Support/SampleScenes.h"
#include "Tests/Support/SampleSounds.h"

namespace Fixture {

namespace {

struct Shot {
  Scenes::Painter painter;
  bool upright;
  std::uint64_t seconds;
};

constexpr std::array shots = {Shot{Scenes::sea, false, 4},    Shot{Scenes::mountains, false, 3},
                              Shot{Scenes::city, true, 3},    Shot{Scenes::flowers, true, 2},
                              Shot{Scenes::aurora, false, 4}, Shot{Scenes::beach, true, 3},
                              Shot{Scenes::forest, true, 3}};
constexpr std::array<std::uint64_t, 8> voiceNoteSeconds = {2, 3, 5, 8, 12, 17, 26, 64};
constexpr std::array<std::uint64_t, 3> audioSeconds = {6, 15, 32};

Film filmOf(const Shot& shot, std::uint64_t seed) {
  Film film{.width = shot.upright ? 360U : 640U, .height = shot.upright ? 640U : 360U};
  const std::uint64_t frames = shot.seconds * film.framesPerSecond;
  film.frames.reserve(frames * film.width * film.height * 3);
  for (std::uint64_t frame = 0; frame < frames; ++frame) {
    Canvas canvas(film.width, film.height);
    shot.painter(canvas, SeededRandom(seed), static_cast<float>(frame) / static_cast<float>(film.framesPerSecond));
    append(film.frames, canvas.rgb());
  }
  return film;
}

Clip videoOf(const Shot& shot, std::uint64_t seed) {
  SeededRandom random(seed);
  const Sound sound = melody(random, static_cast<float>(shot.seconds));
  return {encodedVideo(filmOf(shot, random.next()), sound), static_cast<std::int64_t>(shot.seconds)};
}

Clip voiceNoteOf(std::uint64_t seconds, std::uint64_t seed) {
  SeededRandom random(seed);
  return {encodedVoiceNote(babble(random, static_cast<float>(seconds))), static_cast<std::int64_t>(seconds)};
}

Clip audioOf(std::uint64_t seconds, std::uint64_t seed) {
  SeededRandom random(seed);
  return {encodedAudio(melody(random, static_cast<float>(seconds))), static_cast<std::int64_t>(seconds)};
}

// The checksum of RFC 3533, section 6: polynomial 0x04C11DB7, from 0, not reflected.
std::uint32_t oggChecksum(ByteView page) {
  std::uint32_t sum = 0;
  for (const std::uint8_t byte : page) {
    sum ^= static_cast<std::uint32_t>(byte) << 24U;
    for (int bit = 0; bit < 8; ++bit) sum = (sum & 0x80000000U) != 0 ? sum << 1U ^ 0x04C11DB7U : sum << 1U;
  }
  return sum;
}

// Header, table of segment lengths and segments.
std::size_t pageLength(ByteView page) {
  constexpr std::size_t header = 27;
  if (page.size() < header || page.size() < header + page[26]) throw std::runtime_error("This is no Ogg page.");
  std::size_t length = header + page[26];
  for (const std::uint8_t segment : page.subspan(header, page[26])) length += segment;
  return length;
}

}  // namespace

Bytes withFreeBox(Bytes content, ByteView filling) {
  const std::size_t length = filling.size() + 8;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) content.push_back(static_cast<std::uint8_t>(length >> shift));
  append(content, bytesOf("free"));
  append(content, filling);
  return content;
}

Bytes withPaddedComment(const Bytes& content, ByteView filling) {
  const ByteView whole(content);
  const std::size_t start = pageLength(whole);
  const ByteView page = whole.subspan(start, pageLength(whole.subspan(start)));
  const ByteView comment = page.subspan(std::size_t{27} + page[26]);
  const std::size_t length = comment.size() + filling.size();

  Bytes padded(page.begin(), page.begin() + 26);
  padded.push_back(static_cast<std::uint8_t>(length / 255 + 1));
  padded.insert(padded.end(), length / 255, 255);
  padded.push_back(static_cast<std::uint8_t>(length % 255));
  append(padded, comment);
  append(padded, filling);
  std::fill_n(padded.begin() + 22, 4, std::uint8_t{0});
  const std::uint32_t sum = oggChecksum(padded);
  for (std::size_t byte = 0; byte < 4; ++byte) padded[22 + byte] = static_cast<std::uint8_t>(sum >> (8 * byte));

  Bytes result(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(start));
  append(result, padded);
  append(result, whole.subspan(start + page.size()));
  return result;
}

SampleClips::SampleClips(std::uint64_t seed) {
  std::vector<std::future<Clip>> videos;
  std::vector<std::future<Clip>> voiceNotes;
  std::vector<std::future<Clip>> audios;
  for (const Shot& shot : shots) videos.push_back(std::async(std::launch::async, videoOf, shot, ++seed));
  for (const std::uint64_t seconds : voiceNoteSeconds) {
    voiceNotes.push_back(std::async(std::launch::async, voiceNoteOf, seconds, ++seed));
  }
  for (const std::uint64_t seconds : audioSeconds) {
    audios.push_back(std::async(std::launch::async, audioOf, seconds, ++seed));
  }
  for (std::future<Clip>& clip : videos) videos_.push_back(clip.get());
  for (std::future<Clip>& clip : voiceNotes) voiceNotes_.push_back(clip.get());
  for (std::future<Clip>& clip : audios) audios_.push_back(clip.get());
}

Clip SampleClips::video(SeededRandom& random) const {
  const Clip& clip = random.pick(videos_);
  return {withFreeBox(clip.content, random.bytes(16 + random.below(4'000))), clip.seconds};
}

Clip SampleClips::voiceNote(SeededRandom& random) const {
  const Clip& clip = random.pick(voiceNotes_);
  // An even first byte makes the rest padding (RFC 7845, 5.2).
  Bytes filling = {0};
  append(filling, random.bytes(16 + random.below(400)));
  return {withPaddedComment(clip.content, filling), clip.seconds};
}

Clip SampleClips::audio(SeededRandom& random) const {
  const Clip& clip = random.pick(audios_);
  return {withFreeBox(clip.content, random.bytes(16 + random.below(400))), clip.seconds};
}

}  // namespace Fixture
