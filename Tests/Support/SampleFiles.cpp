#include "Tests/Support/SampleFiles.h"

#include <array>
#include <utility>

#include "Tests/Support/OfficeDocument.h"
#include "Tests/Support/PictureFormats.h"
#include "Tests/Support/SampleMedia.h"
#include "Tests/Support/SampleScenes.h"
#include "Tests/Support/SampleStickers.h"

namespace Fixture {

namespace {

SampleFile played(MessageType type, const std::string& extension, Clip clip) {
  return {.type = type, .extension = extension, .content = std::move(clip.content), .duration = clip.seconds};
}

Clip noise(Bytes (*make)(SeededRandom&, std::size_t), SeededRandom& random, std::size_t least, std::size_t spread) {
  const std::size_t length = least + random.below(spread);
  return {make(random, length), static_cast<std::int64_t>(1 + length / 2'000)};
}

Bytes lettersOf(SeededRandom& random, const std::string& name) {
  return wordDocument(
      name.substr(0, name.rfind('.')),
      {"São Paulo, " + std::to_string(1 + random.below(28)) + "/05/2024", "1. Identificação das partes & objeto",
       "2. Prazo: " + std::to_string(6 + random.below(30)) + " meses",
       "3. Valor < R$ " + std::to_string(500 + random.below(5'000)) + ",00", "Assinado eletronicamente."});
}

}  // namespace

SampleFiles::SampleFiles(bool playable, std::uint64_t seed) {
  if (playable) clips_.emplace(seed);
}

SampleFile SampleFiles::any(SeededRandom& random) {
  const std::size_t roll = random.below(100);
  if (roll < 58) return photo(random);
  if (roll < 68) return video(random);
  if (roll < 79) return voiceNote(random);
  if (roll < 82) return audio(random);
  if (roll < 90) return sticker(random);
  constexpr std::array names = {"Contrato", "Orçamento 2023", "Invoice", "Meeting notes", "Receita"};
  return document(random, std::string(random.pick(names)) + (roll < 97 ? ".pdf" : ".docx"));
}

SampleFile SampleFiles::photo(SeededRandom& random) {
  if (lastPhoto_.empty() || !random.chance(5)) lastPhoto_ = photoContent(random);
  return {.type = photoType, .extension = random.chance(5) ? "JPG" : "jpg", .content = lastPhoto_};
}

Bytes SampleFiles::photoContent(SeededRandom& random) const {
  if (!clips_) {
    const auto width = static_cast<std::uint32_t>(160 + 16 * random.below(8));
    return jpegPhoto(random, width, random.chance(50) ? width * 3 / 4 : width * 4 / 3);
  }
  using Size = std::pair<std::uint32_t, std::uint32_t>;
  constexpr std::array<Size, 7> sizes = {Size{1280, 960}, {960, 1280}, {1280, 960}, {960, 1280},
                                         {1280, 720},     {720, 1280}, {1080, 1080}};
  const auto [width, height] = random.pick(sizes);
  Canvas canvas(width, height);
  Scenes::any(canvas, random);
  return jpegOf(canvas);
}

SampleFile SampleFiles::video(SeededRandom& random) const {
  return played(videoType, "mp4", clips_ ? clips_->video(random) : noise(mp4Video, random, 20'000, 180'000));
}

SampleFile SampleFiles::voiceNote(SeededRandom& random) const {
  return played(audioType, "opus", clips_ ? clips_->voiceNote(random) : noise(opusVoiceNote, random, 4'000, 36'000));
}

SampleFile SampleFiles::audio(SeededRandom& random) const {
  return played(audioType, "m4a", clips_ ? clips_->audio(random) : noise(m4aAudio, random, 4'000, 36'000));
}

SampleFile SampleFiles::sticker(SeededRandom& random) const {
  return {.type = stickerType, .extension = "webp", .content = clips_ ? faceSticker(random) : webpSticker(random)};
}

SampleFile SampleFiles::document(SeededRandom& random, const std::string& name) const {
  SampleFile file{.type = documentType, .extension = name.substr(name.rfind('.') + 1), .title = name};
  if (file.extension == "pdf") {
    file.content = pdfDocument("Page " + std::to_string(random.below(10'000)));
  } else {
    file.content = clips_ ? lettersOf(random, name) : docxDocument(random, 6'000 + random.below(20'000));
  }
  return file;
}

Bytes SampleFiles::thumbnail(SeededRandom& random) { return jpegPhoto(random, 48, 36); }

}  // namespace Fixture
