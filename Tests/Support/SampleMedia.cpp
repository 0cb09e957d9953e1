#include "Tests/Support/SampleMedia.h"

#include <cstdio>
// jpeglib.h needs FILE and size_t to be declared before it.
#include <jpeglib.h>

#include <array>
#include <cstdlib>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace Fixture {

namespace {

struct Pattern {
  std::array<std::uint32_t, 3> from{};
  std::array<std::uint32_t, 3> to{};
  std::uint32_t shape = 0;
  std::uint32_t scale = 8;
};

Pattern randomPattern(SeededRandom& random) {
  Pattern pattern;
  for (auto& value : pattern.from) value = static_cast<std::uint32_t>(random.below(256));
  for (auto& value : pattern.to) value = static_cast<std::uint32_t>(random.below(256));
  pattern.shape = static_cast<std::uint32_t>(random.below(4));
  pattern.scale = static_cast<std::uint32_t>(6 + random.below(20));
  return pattern;
}

// Whether the pattern darkens this place: stripes, checks, rings or a hill's outline.
bool isShaded(const Pattern& pattern, std::uint32_t x, std::uint32_t y) {
  switch (pattern.shape) {
    case 0:
      return (x + y) / pattern.scale % 2 == 0;
    case 1:
      return (x / pattern.scale + y / pattern.scale) % 2 == 0;
    case 2:
      return (x * x + y * y) / (pattern.scale * pattern.scale * 4) % 2 == 0;
    default:
      return y > 40 + x * (97 - x % 97) / (pattern.scale * 8);
  }
}

std::vector<JSAMPLE> pixelRow(const Pattern& pattern, std::uint32_t width, std::uint32_t height, std::uint32_t y) {
  std::vector<JSAMPLE> row;
  row.reserve(std::size_t{width} * 3);
  for (std::uint32_t x = 0; x < width; ++x) {
    const std::uint32_t part = (x * 256 / width + y * 256 / height) / 2;
    const std::uint32_t light = isShaded(pattern, x, y) ? 3 : 4;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const std::uint32_t mixed = (pattern.from[channel] * (255 - part) + pattern.to[channel] * part) / 255;
      row.push_back(static_cast<JSAMPLE>(mixed * light / 4));
    }
  }
  return row;
}

// Bits of a WebP lossless stream, least significant first.
class BitWriter {
 public:
  void put(std::uint32_t value, unsigned count) {
    for (unsigned bit = 0; bit < count; ++bit) {
      if (used_ % 8 == 0) bytes_.push_back(0);
      bytes_.back() = static_cast<std::uint8_t>(bytes_.back() | (((value >> bit) & 1U) << (used_ % 8)));
      ++used_;
    }
  }
  // A prefix code of one symbol, which then takes no bits, or of 0 and 255, which take one each.
  void putCode(bool bothExtremes, std::uint32_t symbol = 0) {
    put(1, 1);
    put(bothExtremes ? 1 : 0, 1);
    put(1, 1);
    put(bothExtremes ? 0 : symbol, 8);
    if (bothExtremes) put(255, 8);
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
  std::size_t used_ = 0;
};

void appendLittleEndian(Bytes& target, std::size_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) target.push_back(static_cast<std::uint8_t>(value >> shift));
}

// Fills up with noise to the wanted length.
Bytes padded(std::string_view start, SeededRandom& random, std::size_t byteCount) {
  Bytes content = bytesOf(start);
  if (content.size() < byteCount) append(content, random.bytes(byteCount - content.size()));
  return content;
}

}  // namespace

Bytes jpegPhoto(SeededRandom& random, std::uint32_t width, std::uint32_t height) {
  const Pattern pattern = randomPattern(random);
  jpeg_compress_struct compressor{};
  jpeg_error_mgr errors{};
  compressor.err = jpeg_std_error(&errors);
  jpeg_create_compress(&compressor);
  unsigned char* memory = nullptr;
  unsigned long length = 0;
  jpeg_mem_dest(&compressor, &memory, &length);
  compressor.image_width = width;
  compressor.image_height = height;
  compressor.input_components = 3;
  compressor.in_color_space = JCS_RGB;
  jpeg_set_defaults(&compressor);
  jpeg_set_quality(&compressor, 70, TRUE);
  jpeg_start_compress(&compressor, TRUE);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::vector<JSAMPLE> row = pixelRow(pattern, width, height, y);
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&compressor, &rows, 1);
  }
  jpeg_finish_compress(&compressor);
  Bytes content(memory, memory + length);
  jpeg_destroy_compress(&compressor);
  std::free(memory);
  return content;
}

// The lossless bitstream of RFC 9649, section 3, without transforms and with one code group.
Bytes webpSticker(SeededRandom& random) {
  constexpr std::uint32_t side = 64;
  constexpr std::uint32_t middle = side / 2;
  const auto colour = static_cast<std::uint32_t>(random.below(8));
  const auto hole = static_cast<std::uint32_t>(random.below(400));
  BitWriter bits;
  bits.put(0x2F, 8);
  bits.put(side - 1, 14);
  bits.put(side - 1, 14);
  bits.put(1, 1);  // has alpha
  bits.put(0, 3);  // version
  bits.put(0, 3);  // no transform, no colour cache, one code group
  bits.putCode(false, (colour & 1U) * 255);
  bits.putCode(false, (colour >> 1U & 1U) * 255);
  bits.putCode(false, (colour >> 2U) * 255);
  bits.putCode(true);  // alpha
  bits.putCode(false);
  for (std::uint32_t y = 0; y < side; ++y) {
    for (std::uint32_t x = 0; x < side; ++x) {
      const std::uint32_t distance = (x - middle) * (x - middle) + (y - middle) * (y - middle);
      bits.put(distance < 900 && distance >= hole ? 1 : 0, 1);
    }
  }
  Bytes stream = bits.bytes();
  if (stream.size() % 2 != 0) stream.push_back(0);
  Bytes content = bytesOf("RIFF");
  appendLittleEndian(content, stream.size() + 12);
  append(content, bytesOf("WEBPVP8L"));
  appendLittleEndian(content, bits.bytes().size());
  append(content, stream);
  return content;
}

Bytes mp4Video(SeededRandom& random, std::size_t byteCount) {
  using namespace std::string_view_literals;
  return padded(
      "\0\0\0\x18"
      "ftypmp42\0\0\0\0mp42isom\0\0\0\0mdat"sv,
      random, byteCount);
}

Bytes opusVoiceNote(SeededRandom& random, std::size_t byteCount) {
  using namespace std::string_view_literals;
  return padded(
      "OggS\0\x02\0\0\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0\0\0\0\x01\x13OpusHead\x01\x01\x38\x01\x80\xBB\0\0\0\0\0"sv,
      random, byteCount);
}

Bytes m4aAudio(SeededRandom& random, std::size_t byteCount) {
  using namespace std::string_view_literals;
  return padded(
      "\0\0\0\x18"
      "ftypM4A \0\0\0\0M4A isom\0\0\0\0mdat"sv,
      random, byteCount);
}

Bytes pdfDocument(const std::string& text) {
  const std::string drawing = "BT /F1 24 Tf 72 720 Td (" + text + ") Tj ET";
  const std::array<std::string, 5> objects = {
      "<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
      "/Resources << /Font << /F1 5 0 R >> >> >>",
      "<< /Length " + std::to_string(drawing.size()) + " >>\nstream\n" + drawing + "\nendstream",
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
  std::string document = "%PDF-1.4\n";
  std::string table = "xref\n0 6\n0000000000 65535 f \n";
  for (std::size_t index = 0; index < objects.size(); ++index) {
    const std::string offset = std::to_string(document.size());
    table += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
    document += std::to_string(index + 1) + " 0 obj\n" + objects[index] + "\nendobj\n";
  }
  const std::string start = std::to_string(document.size());
  return bytesOf(document + table + "trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n");
}

Bytes docxDocument(SeededRandom& random, std::size_t byteCount) {
  using namespace std::string_view_literals;
  return padded("PK\x03\x04\x14\0\x06\0\x08\0\0\0\x21\0"sv, random, byteCount);
}

}  // namespace Fixture
