// The portable pixel formats: PGM and PPM as text (P2, P3) and binary (P5, P6), PAM (P7), and the
// floating-point PFM (Pf, PF). Samples with another maximum than 255 or 65,535 are scaled to it.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "pictures/header_text.h"
#include "pictures/picture.h"

namespace lfmeta {

namespace {

constexpr uint32_t kMaxSide = 0x7FFFFFFF;
constexpr uint32_t kMaxValue = 0xFFFF;

struct Header {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;
  uint32_t maximum = 0;
};

Header readPamHeader(TextCursor& text) {
  Header header;
  for (std::string_view key = text.word(); key != "ENDHDR"; key = text.word()) {
    if (key == "WIDTH") {
      header.width = text.number(kMaxSide);
    } else if (key == "HEIGHT") {
      header.height = text.number(kMaxSide);
    } else if (key == "DEPTH") {
      header.channels = text.number(4);
    } else if (key == "MAXVAL") {
      header.maximum = text.number(kMaxValue);
    } else if (key == "TUPLTYPE") {
      text.word();
    } else {
      throw std::runtime_error("has a damaged header");
    }
  }
  return header;
}

Header readHeader(TextCursor& text) {
  const std::string_view magic = text.word();
  Header header;
  if (magic == "P7") {
    header = readPamHeader(text);
  } else {
    header.channels = magic == "P3" || magic == "P6" ? 3 : 1;
    header.width = text.number(kMaxSide);
    header.height = text.number(kMaxSide);
    header.maximum = text.number(kMaxValue);
  }
  if (header.channels < 1 || header.maximum < 1) throw std::runtime_error("has a damaged header");
  return header;
}

uint32_t nextBinary(std::span<const unsigned char>& bytes, std::size_t sampleSize) {
  uint32_t value = bytes[0];
  if (sampleSize == 2) value = value << 8 | bytes[1];
  bytes = bytes.subspan(sampleSize);
  return value;
}

void storeScaled(Image& image, std::size_t index, uint32_t value, uint32_t maximum) {
  if (value > maximum) {
    throw std::runtime_error("has a sample above the maximum that its header names");
  }
  const uint32_t full = image.sample == Sample::integer8 ? 0xFF : 0xFFFF;
  const auto scaled = static_cast<uint16_t>((value * full + maximum / 2) / maximum);
  if (image.sample == Sample::integer8) {
    image.pixels[index] = static_cast<unsigned char>(scaled);
  } else {
    std::memcpy(&image.pixels[2 * index], &scaled, 2);
  }
}

// "-1.0" or "1.0": the sign is the byte order, the value a unit that the samples keep.
bool isLittleEndian(std::string_view scale) {
  if (scale.empty() || scale.find_first_not_of("+-.0123456789eE") != std::string_view::npos ||
      scale.find_first_of("123456789") == std::string_view::npos) {
    throw std::runtime_error("has a damaged header");
  }
  return scale.front() == '-';
}

}  // namespace

Image decodeNetpbm(std::span<const unsigned char> file) {
  const bool isText = file[1] == '2' || file[1] == '3';
  TextCursor text(file);
  const Header header = readHeader(text);

  Image image;
  allocatePixels(image, header.width, header.height, static_cast<int>(header.channels),
                 header.maximum > 0xFF ? Sample::integer16 : Sample::integer8);
  const std::size_t sampleSize = sizeOf(image.sample);
  std::span<const unsigned char> bytes = text.rest();
  if (!isText && bytes.size() / sampleSize < image.sampleCount()) {
    throw std::runtime_error("ends before its pixels do");
  }
  for (std::size_t i = 0; i < image.sampleCount(); ++i) {
    const uint32_t value = isText ? text.number(kMaxValue) : nextBinary(bytes, sampleSize);
    storeScaled(image, i, value, header.maximum);
  }
  return image;
}

Image decodePfm(std::span<const unsigned char> file) {
  TextCursor text(file);
  const int channels = text.word() == "PF" ? 3 : 1;
  const uint32_t width = text.number(kMaxSide);
  const uint32_t height = text.number(kMaxSide);
  const bool littleEndian = isLittleEndian(text.word());

  Image image;
  allocatePixels(image, width, height, channels, Sample::float32);
  if (text.rest().size() / image.rowSize() < height) {
    throw std::runtime_error("ends before its pixels do");
  }
  for (int y = 0; y < image.height; ++y) {  // the file begins with the bottom row
    unsigned char* row = image.row(image.height - 1 - y);
    std::memcpy(row, &text.rest()[image.rowSize() * static_cast<std::size_t>(y)], image.rowSize());
    for (std::size_t i = 0; !littleEndian && i < image.rowSize(); i += 4) {
      std::reverse(row + i, row + i + 4);
    }
  }
  return image;
}

}  // namespace lfmeta
