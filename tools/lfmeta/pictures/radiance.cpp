#include "pictures/radiance.h"

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "pictures/header_text.h"
#include "pictures/picture.h"

namespace lfmeta {

namespace {

constexpr uint32_t kMaxSide = 0x7FFFFFFF;
constexpr int kPlanes = 4;

using Pixel = std::array<unsigned char, kPlanes>;

[[noreturn]] void refuse(const char* what) {
  throw std::runtime_error(what);
}

struct Cursor {
  std::span<const unsigned char> rest;

  unsigned char byte() {
    if (rest.empty()) refuse("ends before its scanlines do");
    const unsigned char value = rest.front();
    rest = rest.subspan(1);
    return value;
  }
};

// The axes of the resolution line, that of the scanlines first, and the TIFF code of each layout.
struct Layout {
  std::string_view rows;
  std::string_view columns;
  int orientation;
};

constexpr std::array kLayouts{
    Layout{"-Y", "+X", 1}, Layout{"-Y", "-X", 2}, Layout{"+Y", "-X", 3}, Layout{"+Y", "+X", 4},
    Layout{"+X", "-Y", 5}, Layout{"-X", "-Y", 6}, Layout{"-X", "+Y", 7}, Layout{"+X", "+Y", 8},
};

void skipHeader(TextCursor& text) {
  constexpr std::string_view kFormat = "FORMAT=";
  text.line();  // "#?RADIANCE", or the name of another program
  for (std::string_view line = text.line(); !line.empty(); line = text.line()) {
    if (line.starts_with(kFormat) && line.substr(kFormat.size()) != "32-bit_rle_rgbe") {
      refuse("is no RGB picture; convert it to FORMAT=32-bit_rle_rgbe first");
    }
  }
}

RadiancePicture readResolution(TextCursor& text) {
  const std::string_view rows = text.word();
  const uint32_t height = text.number(kMaxSide);
  const std::string_view columns = text.word();
  const uint32_t width = text.number(kMaxSide);
  for (const Layout& layout : kLayouts) {
    if (layout.rows == rows && layout.columns == columns) {
      Image memory;
      allocatePixels(memory, width, height, kPlanes, Sample::integer8);
      return {memory.width, memory.height, layout.orientation, std::move(memory.pixels)};
    }
  }
  refuse("has no resolution line such as \"-Y 480 +X 640\"");
}

// One plane after the other; a code above 128 repeats the next byte, another counts literal bytes.
void readPlanes(Cursor& file, std::span<unsigned char> scanline, std::size_t width) {
  for (std::size_t plane = 0; plane < kPlanes; ++plane) {
    std::span<unsigned char> rest = scanline.subspan(plane * width, width);
    while (!rest.empty()) {
      const unsigned char code = file.byte();
      const bool repeats = code > 128;
      const std::size_t count = repeats ? code - 128U : code;
      if (count == 0 || count > rest.size()) refuse("has a damaged run-length scanline");
      unsigned char value = repeats ? file.byte() : 0;
      for (unsigned char& out : rest.first(count)) out = value = repeats ? value : file.byte();
      rest = rest.subspan(count);
    }
  }
}

// Pixel by pixel; mantissas of 1, 1, 1 repeat the pixel before them, and several of these in a row
// are the bytes of one count, the lowest first.
void readPixels(Cursor& file, std::span<unsigned char> scanline, std::size_t width, Pixel pixel) {
  Pixel last{};
  unsigned int shift = 0;
  for (std::size_t x = 0; x < width;) {
    uint64_t count = 1;
    const bool repeats = pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1;
    if (repeats) {
      count = shift < 32 ? uint64_t{pixel[3]} << shift : width;
      shift += 8;
    } else {
      last = pixel;
      shift = 0;
    }
    if (count > width - x || (repeats && x == 0)) refuse("has a damaged run-length scanline");
    for (std::size_t plane = 0; plane < kPlanes; ++plane) {
      std::memset(&scanline[plane * width + x], last[plane], count);
    }
    x += count;
    if (x < width) {
      for (unsigned char& component : pixel) component = file.byte();
    }
  }
}

void readScanline(Cursor& file, std::span<unsigned char> scanline) {
  constexpr std::size_t kShortestInPlanes = 8;
  constexpr std::size_t kLongestInPlanes = 0x7FFF;
  const std::size_t width = scanline.size() / kPlanes;
  Pixel start;
  for (unsigned char& component : start) component = file.byte();
  if (width < kShortestInPlanes || width > kLongestInPlanes || start[0] != 2 || start[1] != 2 ||
      start[2] > 127) {
    readPixels(file, scanline, width, start);
  } else if ((std::size_t{start[2]} << 8 | start[3]) == width) {
    readPlanes(file, scanline, width);
  } else {
    refuse("has a scanline of another width than the picture's");
  }
}

}  // namespace

RadiancePicture readRadiance(std::span<const unsigned char> file) {
  TextCursor text(file);
  skipHeader(text);
  RadiancePicture picture = readResolution(text);
  Cursor cursor{text.rest()};
  const std::size_t rowSize = kPlanes * static_cast<std::size_t>(picture.width);
  for (int y = 0; y < picture.height; ++y) {
    readScanline(cursor, {&picture.planes[rowSize * static_cast<std::size_t>(y)], rowSize});
  }
  return picture;
}

Image decodeRadiance(std::span<const unsigned char> file) {
  constexpr int kExponentOfOne = 128 + 8;  // of a mantissa of 1
  std::array<float, 256> units{};          // an exponent of 0 is black
  for (int exponent = 1; exponent < 256; ++exponent) {
    units[static_cast<std::size_t>(exponent)] = std::ldexp(1.0F, exponent - kExponentOfOne);
  }

  const RadiancePicture picture = readRadiance(file);
  Image image;
  allocatePixels(image, static_cast<uint64_t>(picture.width), static_cast<uint64_t>(picture.height),
                 3, Sample::float32);
  image.orientation = picture.orientation;
  const auto width = static_cast<std::size_t>(picture.width);
  for (int y = 0; y < picture.height; ++y) {
    const unsigned char* planes = &picture.planes[kPlanes * width * static_cast<std::size_t>(y)];
    unsigned char* out = image.row(y);
    for (std::size_t x = 0; x < width; ++x) {
      for (std::size_t channel = 0; channel < 3; ++channel, out += sizeof(float)) {
        const float value =
            static_cast<float>(planes[channel * width + x]) * units[planes[3 * width + x]];
        std::memcpy(out, &value, sizeof value);
      }
    }
  }
  return image;
}

}  // namespace lfmeta
