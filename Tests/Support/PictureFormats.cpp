#include "Tests/Support/PictureFormats.h"

#include <webp/encode.h>

#include <cstdio>
// jpeglib.h needs FILE and size_t to be declared before it.
#include <jpeglib.h>

#include <cstdlib>
#include <stdexcept>

namespace Fixture {

Bytes jpegOf(const Canvas& picture, int quality) {
  Bytes pixels = picture.rgb();
  jpeg_compress_struct compressor{};
  jpeg_error_mgr errors{};
  compressor.err = jpeg_std_error(&errors);
  jpeg_create_compress(&compressor);
  unsigned char* memory = nullptr;
  unsigned long length = 0;
  jpeg_mem_dest(&compressor, &memory, &length);
  compressor.image_width = picture.columns();
  compressor.image_height = picture.rows();
  compressor.input_components = 3;
  compressor.in_color_space = JCS_RGB;
  jpeg_set_defaults(&compressor);
  jpeg_set_quality(&compressor, quality, TRUE);
  jpeg_start_compress(&compressor, TRUE);
  for (std::size_t row = 0; row < picture.rows(); ++row) {
    JSAMPROW line = pixels.data() + row * picture.columns() * 3;
    jpeg_write_scanlines(&compressor, &line, 1);
  }
  jpeg_finish_compress(&compressor);
  Bytes content(memory, memory + length);
  jpeg_destroy_compress(&compressor);
  std::free(memory);
  return content;
}

Bytes webpOf(const Canvas& picture) {
  const Bytes pixels = picture.rgba();
  const auto width = static_cast<int>(picture.columns());
  std::uint8_t* memory = nullptr;
  const std::size_t length =
      WebPEncodeRGBA(pixels.data(), width, static_cast<int>(picture.rows()), width * 4, 85, &memory);
  if (length == 0) throw std::runtime_error("A picture could not be written as WebP.");
  Bytes content(memory, memory + length);
  WebPFree(memory);
  return content;
}

}  // namespace Fixture
