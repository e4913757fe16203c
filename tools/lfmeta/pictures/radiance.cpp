#include "pictures/radiance.h"

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace lfmeta {

namespace {

constexpr uint32_t kMaxSide = 0x7FFFFFFF;
[[noreturn]] void refuse(const char* what) {
  throw std::runtime_error(what);
}

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

void skipHeader(TextReader& text) {
  constexpr std::string_view kFormat = "FORMAT=";
  text.line();  // "#?RADIANCE", or the name of another program
  for (std::string line = text.line(); !line.empty(); line = text.line()) {
    if (line.starts_with(kFormat) && line.substr(kFormat.size()) != "32-bit_rle_rgbe") {
      refuse("is no RGB picture; convert it to FORMAT=32-bit_rle_rgbe first");
    }
  }
}

}  // namespace

RadianceReader::RadianceReader(std::FILE* stream) : text_(stream) {
  skipHeader(text_);
  const std::string rows = text_.word();
  height_ = text_.number(kMaxSide);
  const std::string columns = text_.word();
  width_ = text_.number(kMaxSide);
  for (const Layout& layout : kLayouts) {
    if (layout.rows == rows && layout.columns == columns) orientation_ = layout.orientation;
  }
  if (orientation_ == 0) refuse("has no resolution line such as \"-Y 480 +X 640\"");
}

// One plane after the other; a code above 128 repeats the next byte, another counts literal bytes.
void RadianceReader::readPlanes(std::span<unsigned char> planes) {
  for (std::size_t plane = 0; plane < kPlanes; ++plane) {
    std::span<unsigned char> rest = planes.subspan(plane * width_, width_);
    while (!rest.empty()) {
      const unsigned char code = text_.byte();
      const bool repeats = code > 128;
      const std::size_t count = repeats ? code - 128U : code;
      if (count == 0 || count > rest.size()) refuse("has a damaged run-length scanline");
      if (repeats) {
        std::memset(rest.data(), text_.byte(), count);
      } else {
        text_.bytes(rest.first(count));
      }
      rest = rest.subspan(count);
    }
  }
}

// Pixel by pixel; mantissas of 1, 1, 1 repeat the pixel before them, and several of these in a row
// are the bytes of one count, the lowest first.
void RadianceReader::readPixels(std::span<unsigned char> planes, Pixel pixel) {
  Pixel last{};
  unsigned int shift = 0;
  for (std::size_t x = 0; x < width_;) {
    if (pixel[0] != 1 || pixel[1] != 1 || pixel[2] != 1) {
      last = pixel;
      shift = 0;
      for (std::size_t plane = 0; plane < kPlanes; ++plane)
        planes[plane * width_ + x] = pixel[plane];
      ++x;
    } else {
      const std::size_t count = shift < 32 ? std::size_t{pixel[3]} << shift : width_;
      if (count > width_ - x || x == 0) refuse("has a damaged run-length scanline");
      for (std::size_t plane = 0; plane < kPlanes; ++plane) {
        std::memset(&planes[plane * width_ + x], last[plane], count);
      }
      shift += 8;
      x += count;
    }
    if (x < width_) text_.bytes(pixel);
  }
}

void RadianceReader::readScanline(std::span<unsigned char> planes) {
  constexpr std::size_t kShortestInPlanes = 8;
  constexpr std::size_t kLongestInPlanes = 0x7FFF;
  Pixel start;
  text_.bytes(start);
  if (width_ < kShortestInPlanes || width_ > kLongestInPlanes || start[0] != 2 || start[1] != 2 ||
      start[2] > 127) {
    readPixels(planes, start);
  } else if ((std::size_t{start[2]} << 8 | start[3]) == width_) {
    readPlanes(planes);
  } else {
    refuse("has a scanline of another width than the picture's");
  }
}

Image readRadiancePlanes(const PictureFile& file) {
  RadianceReader reader(file.stream);
  Image image;
  allocatePixels(file, image, reader.width(), reader.height(), RadianceReader::kPlanes,
                 Sample::integer8);
  image.orientation = reader.orientation();
  for (int y = 0; y < image.height; ++y) reader.readScanline({image.row(y), image.rowSize()});
  return image;
}

bool isRadiance(const PictureFile& file) {
  std::array<char, 2> start{};
  const std::size_t count = std::fread(start.data(), 1, start.size(), file.stream);
  std::rewind(file.stream);
  return count == start.size() && start[0] == '#' && start[1] == '?';
}

Image decodeRadiance(const PictureFile& file) {
  constexpr int kExponentOfOne = 128 + 8;  // of a mantissa of 1
  std::array<float, 256> units{};          // an exponent of 0 is black
  for (int exponent = 1; exponent < 256; ++exponent) {
    units[static_cast<std::size_t>(exponent)] = std::ldexp(1.0F, exponent - kExponentOfOne);
  }
  RadianceReader reader(file.stream);
  const std::size_t width = reader.width();
  Image image;
  allocatePixels(file, image, width, reader.height(), 3, Sample::float32);
  image.orientation = reader.orientation();
  std::vector<unsigned char> planes(RadianceReader::kPlanes * width);
  for (int y = 0; y < image.height; ++y) {
    reader.readScanline(planes);
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
