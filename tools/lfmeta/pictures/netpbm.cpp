// The portable pixel formats: PBM, PGM and PPM as text (P1 to P3) and binary (P4 to P6), PAM (P7),
// and the floating-point PFM (Pf, PF). Samples with another maximum than 255 or 65,535 are scaled
// to it; opacity is left out.
#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "pictures/header_text.h"
#include "pictures/picture.h"

namespace lfmeta {

namespace {

constexpr uint32_t kMaxSide = 0x7FFFFFFF;
constexpr uint32_t kMaxValue = 0xFFFF;

struct Header {
  char kind = 0;  // '1' to '7'
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;
  uint32_t maximum = 0;

  bool isBitmap() const { return kind == '1' || kind == '4'; }
  bool isText() const { return kind <= '3'; }
};

Header readPamHeader(TextReader& text) {
  Header header;
  for (std::string key = text.word(); key != "ENDHDR"; key = text.word()) {
    if (key == "WIDTH") {
      header.width = text.number(kMaxSide);
    } else if (key == "HEIGHT") {
      header.height = text.number(kMaxSide);
    } else if (key == "DEPTH") {
      header.channels = text.number(4);
    } else if (key == "MAXVAL") {
      header.maximum = text.number(kMaxValue);
    } else if (key == "TUPLTYPE") {
      text.line();
    } else {
      throw std::runtime_error("has a damaged header");
    }
  }
  return header;
}

Header readHeader(TextReader& text) {
  const std::string magic = text.word();
  Header header;
  header.kind = magic.back();
  if (header.kind == '7') {
    header = readPamHeader(text);
    header.kind = '7';
  } else {
    header.channels = header.kind == '3' || header.kind == '6' ? 3 : 1;
    header.width = text.number(kMaxSide);
    header.height = text.number(kMaxSide);
    header.maximum = header.isBitmap() ? 1 : text.number(kMaxValue);
  }
  if (header.channels < 1 || header.maximum < 1) throw std::runtime_error("has a damaged header");
  return header;
}

void storeScaled(Image& image, std::size_t index, uint32_t value, uint32_t maximum) {
  if (value > maximum) {
    throw std::runtime_error("has a sample above the maximum that its header names");
  }
  const uint32_t full = image.sample == Sample::integer8 ? 0xFF : 0xFFFF;
  const auto scaled =
      static_cast<uint16_t>(maximum == full ? value : (value * full + maximum / 2) / maximum);
  if (image.sample == Sample::integer8) {
    image.pixels[index] = static_cast<unsigned char>(scaled);
  } else {
    std::memcpy(&image.pixels[2 * index], &scaled, 2);
  }
}

// One row of the file as numbers, opacity with them.
void readTextRow(TextReader& text, const Header& header, std::vector<uint16_t>& row) {
  for (uint16_t& value : row) {
    if (header.isBitmap()) {
      const char bit = text.character();
      if (bit != '0' && bit != '1') throw std::runtime_error("has a character that is no bit");
      value = bit == '0' ? 1 : 0;
    } else {
      value = static_cast<uint16_t>(text.number(kMaxValue));
    }
  }
}

void readBinaryRow(TextReader& text, const Header& header, std::vector<uint16_t>& row,
                   std::vector<unsigned char>& bytes) {
  const bool wide = header.maximum > 0xFF;
  bytes.resize(header.isBitmap() ? (row.size() + 7) / 8 : row.size() * (wide ? 2 : 1));
  text.bytes(bytes);
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (header.isBitmap()) {
      row[i] = (bytes[i / 8] >> (7 - i % 8) & 1) == 0;
    } else {
      row[i] = wide ? static_cast<uint16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]) : bytes[i];
    }
  }
}

// "-1.0" or "1.0": the sign is the byte order, the value a unit that the samples keep.
bool isLittleEndian(const std::string& scale) {
  if (scale.find_first_not_of("+-.0123456789eE") != std::string::npos ||
      scale.find_first_of("123456789") == std::string::npos) {
    throw std::runtime_error("has a damaged header");
  }
  return scale.front() == '-';
}

}  // namespace

Image decodeNetpbm(const PictureFile& file) {
  TextReader text(file.stream);
  const Header header = readHeader(text);
  const uint32_t colors = header.channels < 3 ? 1 : 3;

  Image image;
  allocatePixels(file, image, header.width, header.height, static_cast<int>(colors),
                 header.maximum > 0xFF ? Sample::integer16 : Sample::integer8);
  std::vector<uint16_t> row(std::size_t{header.width} * header.channels);
  std::vector<unsigned char> bytes;
  for (std::size_t y = 0, index = 0; y < header.height; ++y) {
    if (header.isText()) {
      readTextRow(text, header, row);
    } else {
      readBinaryRow(text, header, row, bytes);
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i % header.channels < colors) storeScaled(image, index++, row[i], header.maximum);
    }
  }
  return image;
}

Image decodePfm(const PictureFile& file) {
  TextReader text(file.stream);
  const int channels = text.word() == "PF" ? 3 : 1;
  const uint32_t width = text.number(kMaxSide);
  const uint32_t height = text.number(kMaxSide);
  const bool littleEndian = isLittleEndian(text.word());

  Image image;
  allocatePixels(file, image, width, height, channels, Sample::float32);
  for (int y = image.height - 1; y >= 0; --y) {  // the file begins with the bottom row
    unsigned char* row = image.row(y);
    text.bytes({row, image.rowSize()});
    for (std::size_t i = 0; !littleEndian && i < image.rowSize(); i += 4) {
      std::reverse(row + i, row + i + 4);
    }
  }
  return image;
}

}  // namespace lfmeta
