#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Tests/Support/Bytes.h"
#include "Tests/Support/SeededRandom.h"

// Media files to fill a backup with that are made at once. Photos, stickers and PDF documents open in a
// viewer; the other kinds have the right first bytes and noise behind them.
namespace Fixture {

// A JPEG picture of a gradient with a pattern over it.
Bytes jpegPhoto(SeededRandom& random, std::uint32_t width, std::uint32_t height);

// A lossless WebP picture of 64 x 64 pixels: a round shape in one of eight colours.
Bytes webpSticker(SeededRandom& random);

Bytes mp4Video(SeededRandom& random, std::size_t byteCount);
Bytes opusVoiceNote(SeededRandom& random, std::size_t byteCount);
Bytes m4aAudio(SeededRandom& random, std::size_t byteCount);

// A one-page PDF that shows `text`, which must be ASCII.
Bytes pdfDocument(const std::string& text);
Bytes docxDocument(SeededRandom& random, std::size_t byteCount);

}  // namespace Fixture
