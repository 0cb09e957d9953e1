#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <webp/decode.h>

#include <cstdio>
// jpeglib.h needs FILE and size_t to be declared before it.
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "Tests/Support/MediaProgram.h"
#include "Tests/Support/OfficeDocument.h"
#include "Tests/Support/SampleFiles.h"
#include "Tests/Support/TemporaryDirectory.h"

// Each file is judged by a program or library that had no part in making it, or reads it anew.
namespace Fixture {
namespace {

using testing::HasSubstr;

// What a shell command says on both streams, and its exit code at the end if it is not 0.
std::string outputOf(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1 </dev/null").c_str(), "r");
  std::string text;
  std::array<char, 4096> buffer{};
  while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) text.append(buffer.data(), count);
  const int status = pclose(pipe);
  return status == 0 ? text : text + "exit " + std::to_string(status);
}

// "codec_name=…", "width=…", "duration=…" on lines of their own, and whatever the program warns of.
std::string probe(const TemporaryDirectory& folder, const SampleFile& file) {
  writeFile(folder / "clip", file.content);
  const std::string clip = "'" + (folder / "clip").native() + "'";
  // Decoding it all says nothing when all is well.
  EXPECT_EQ(outputOf("ffmpeg -nostdin -v warning -i " + clip + " -f null -"), "") << file.extension;
  return outputOf(
      "ffprobe -v warning -of default=noprint_wrappers=1 -show_entries "
      "stream=codec_name,width,height:format=duration " +
      clip);
}

double durationIn(const std::string& report) {
  const std::size_t found = report.find("duration=");
  return found == std::string::npos ? 0 : std::strtod(report.c_str() + found + 9, nullptr);
}

struct Size {
  unsigned width = 0;
  unsigned height = 0;
  long warnings = 0;
};

Size decodedJPEG(const Bytes& content) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors{};
  decoder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, content.data(), content.size());
  jpeg_read_header(&decoder, TRUE);
  jpeg_start_decompress(&decoder);
  Bytes row(std::size_t{decoder.output_width} * 3);
  JSAMPROW rows = row.data();
  while (decoder.output_scanline < decoder.output_height) jpeg_read_scanlines(&decoder, &rows, 1);
  const Size size{decoder.output_width, decoder.output_height, errors.num_warnings};
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return size;
}

void expectClipsPlay(const SampleFiles& files, SeededRandom& random) {
  const TemporaryDirectory folder;
  std::set<Bytes> contents;
  std::set<std::string> shapes;
  for (int count = 0; count < 6; ++count) {
    const SampleFile video = files.video(random);
    const std::string report = probe(folder, video);
    EXPECT_THAT(report, HasSubstr("codec_name=h264\n"));
    EXPECT_THAT(report, HasSubstr("codec_name=aac\n"));
    EXPECT_NEAR(durationIn(report), static_cast<double>(std::get<std::int64_t>(video.duration)), 0.2);
    shapes.insert(report.substr(report.find("width="), 20));
    const SampleFile voice = files.voiceNote(random);
    const std::string voiceReport = probe(folder, voice);
    EXPECT_THAT(voiceReport, HasSubstr("codec_name=opus\n"));
    EXPECT_NEAR(durationIn(voiceReport), static_cast<double>(std::get<std::int64_t>(voice.duration)), 0.2);
    const SampleFile audio = files.audio(random);
    EXPECT_THAT(probe(folder, audio), HasSubstr("codec_name=aac\n"));
    contents.insert({video.content, voice.content, audio.content});
  }
  EXPECT_EQ(contents.size(), 18U) << "every copy has bytes of its own";
  EXPECT_EQ(shapes.size(), 2U) << "upright and wide ones";
}

void expectPhotosDecode(SampleFiles& files, SeededRandom& random) {
  for (int count = 0; count < 5; ++count) {
    const Size size = decodedJPEG(files.photo(random).content);
    EXPECT_THAT(std::max(size.width, size.height), testing::AnyOf(1280U, 1080U));
    EXPECT_EQ(size.warnings, 0);
  }
}

void expectStickersDecode(const SampleFiles& files, SeededRandom& random) {
  const SampleFile sticker = files.sticker(random);
  int width = 0;
  int height = 0;
  const std::unique_ptr<std::uint8_t, decltype(&WebPFree)> pixels(
      WebPDecodeRGBA(sticker.content.data(), sticker.content.size(), &width, &height), &WebPFree);
  ASSERT_TRUE(pixels);
  EXPECT_EQ(width, 512);
  EXPECT_EQ(height, 512);
  EXPECT_EQ(pixels.get()[3], 0) << "a corner is transparent";
  EXPECT_EQ(pixels.get()[(std::size_t{300} * 512 + 256) * 4 + 3], 255) << "the face is not";
}

TEST(SampleFiles, OpenAndPlayWhenAskedTo) {
  SampleFiles files(true, 1);
  SeededRandom random(1);
  expectClipsPlay(files, random);
  expectPhotosDecode(files, random);
  expectStickersDecode(files, random);
  const TemporaryDirectory folder;
  const SampleFile document = files.document(random, "Contrato.docx");
  writeFile(folder / "document.docx", document.content);
  const std::string path = "'" + (folder / "document.docx").native() + "'";
  EXPECT_THAT(outputOf("unzip -tq " + path), HasSubstr("No errors detected"));
  EXPECT_THAT(outputOf("unzip -p " + path + " word/document.xml"), HasSubstr(">Contrato</w:t>"));
}

TEST(OfficeDocument, IsAnArchiveThatKeepsItsMembers) {
  const TemporaryDirectory folder;
  writeFile(folder / "a.zip",
            storedZip({{"one", bytesOf("first")}, {"é/two", bytesOf("")}, {"three", Bytes(700, 'x')}}));
  const std::string path = "'" + (folder / "a.zip").native() + "'";
  EXPECT_THAT(outputOf("unzip -tq " + path), HasSubstr("No errors detected"));
  EXPECT_EQ(outputOf("unzip -p " + path + " one"), "first");
  EXPECT_EQ(outputOf("unzip -p " + path + " three"), std::string(700, 'x'));
  writeFile(folder / "b.docx", wordDocument("A & B", {"1 < 2", "ção"}));
  const std::string text = outputOf("unzip -p '" + (folder / "b.docx").native() + "' word/document.xml");
  EXPECT_THAT(text, HasSubstr(">A &amp; B</w:t>"));
  EXPECT_THAT(text, HasSubstr(">1 &lt; 2</w:t>"));
  EXPECT_THAT(text, HasSubstr(">ção</w:t>"));
}

TEST(SampleClips, PaddingOfACommentKeepsPagesWhole) {
  const Bytes note = encodedVoiceNote({.samplesPerSecond = 16'000, .samples = std::vector<std::int16_t>(16'000)});
  const TemporaryDirectory folder;
  for (const std::size_t length : {1U, 254U, 255U, 20'000U}) {
    const SampleFile padded{.extension = "opus", .content = withPaddedComment(note, Bytes(length))};
    EXPECT_GE(padded.content.size(), note.size() + length);
    EXPECT_THAT(probe(folder, padded), HasSubstr("codec_name=opus\n")) << length;
  }
  EXPECT_THROW(withPaddedComment(bytesOf("OggS"), {}), std::runtime_error);
}

TEST(MediaProgram, NamesThePackageWhenItIsMissing) {
  const TemporaryDirectory empty;
  const std::string before = std::getenv("PATH");
  ASSERT_EQ(setenv("PATH", empty.path().c_str(), 1), 0);
  try {
    encodedAudio({.samples = {0, 0}});
    FAIL() << "no program, no clip";
  } catch (const std::runtime_error& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("Debian package ffmpeg"));
  }
  ASSERT_EQ(setenv("PATH", before.c_str(), 1), 0);
}

TEST(MediaProgram, TellsWhyItFailed) {
  try {
    encodedVideo({.width = 3, .height = 3, .frames = {}}, {.samples = {}});
    FAIL() << "a film of nothing";
  } catch (const std::runtime_error& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("ffmpeg failed: "));
  }
}

}  // namespace
}  // namespace Fixture
