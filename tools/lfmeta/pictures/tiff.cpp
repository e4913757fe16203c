// TIFF pictures, through libtiff: black and white, gray, palettes and RGB, in strips or tiles, in
// up to 16 bits or in floating point. What is packed is unpacked by libtiff; strips that are not
// packed are read here, since libtiff would hold a strip, which may be the whole picture, twice.
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "pictures/picture.h"

namespace lfmeta {

namespace {

[[noreturn]] void refuse(const std::string& what) {
  throw std::runtime_error(what);
}

// Of a directory's values libtiff holds all that the file delivers, whether they matter or not, and
// passes over what it cannot read.
constexpr uint64_t kMostOfDirectory = 64U << 20;

struct Source {
  PictureFile file;
  uint64_t readable = kMostOfDirectory;
};

Source& sourceOf(thandle_t handle) {
  return *static_cast<Source*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* out, tmsize_t size) {
  Source& source = sourceOf(handle);
  const auto wanted = static_cast<uint64_t>(size);
  if (wanted > source.readable) return 0;
  source.readable -= wanted;
  return static_cast<tmsize_t>(std::fread(out, 1, wanted, source.file.stream));
}
tmsize_t writeBytes(thandle_t, void*, tmsize_t) {
  return -1;
}
toff_t seek(thandle_t handle, toff_t offset, int from) {
  std::FILE* stream = sourceOf(handle).file.stream;
  if (fseeko(stream, static_cast<off_t>(offset), from) != 0) return static_cast<toff_t>(-1);
  return static_cast<toff_t>(ftello(stream));
}
int leaveOpen(thandle_t) {
  return 0;
}
toff_t sizeOfFile(thandle_t handle) {
  return sourceOf(handle).file.size;
}

// The first message is kept: later ones follow from it.
int keepMessage(TIFF*, void* target, const char*, const char* format, va_list values) {
  auto& message = *static_cast<std::string*>(target);
  std::array<char, 200> text{};
  std::vsnprintf(text.data(), text.size(), format, values);
  if (message.empty()) message = text.data();
  return 1;
}
int ignore(TIFF*, void*, const char*, const char*, va_list) {
  return 1;
}

// Libtiff's picture and its last words.
class Reader {
 public:
  explicit Reader(const PictureFile& file) : source_{file} {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, keepMessage, &message_);
    TIFFOpenOptionsSetWarningHandlerExtR(options, ignore, nullptr);
    // The largest of what it holds at a time is a packed strip or the list of all of them.
    TIFFOpenOptionsSetMaxSingleMemAlloc(options,
                                        static_cast<tmsize_t>(std::max(file.size, file.memory)));
    tiff_.reset(TIFFClientOpenExt("picture", "rmO", &source_, readBytes, writeBytes, seek,
                                  leaveOpen, sizeOfFile, nullptr, nullptr, options));
    TIFFOpenOptionsFree(options);
    if (!tiff_) fail();
    source_.readable = UINT64_MAX;  // pixels and the list of strips have bounds of their own
  }

  TIFF* get() const { return tiff_.get(); }
  template <typename Value>
  Value field(uint32_t tag) const {
    Value value{};
    TIFFGetFieldDefaulted(tiff_.get(), tag, &value);
    return value;
  }
  [[noreturn]] void fail() const {
    refuse("is a damaged TIFF picture: " + (message_.empty() ? "it cannot be read" : message_));
  }

 private:
  Source source_;
  std::string message_;
  std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff_{nullptr, TIFFClose};
};

constexpr std::array kCompressions{
    COMPRESSION_NONE,     COMPRESSION_LZW,       COMPRESSION_JPEG,     COMPRESSION_ADOBE_DEFLATE,
    COMPRESSION_DEFLATE,  COMPRESSION_PACKBITS,  COMPRESSION_ZSTD,     COMPRESSION_LZMA,
    COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4};

struct Layout {
  uint32_t width;
  uint32_t height;
  uint16_t bits;
  uint16_t samples;  // of a pixel in the file
  uint16_t photometric;
  uint16_t compression;
  uint16_t format;
  bool planar;
  bool tiled;

  int colors() const { return photometric == PHOTOMETRIC_RGB ? 3 : 1; }
  bool isPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
  bool isFloat() const { return format == SAMPLEFORMAT_IEEEFP; }
  std::size_t samplesTogether() const { return planar ? 1 : samples; }
  std::size_t bytesOf(std::size_t pixels) const {
    return (pixels * samplesTogether() * bits + 7) / 8;
  }
  Sample sample() const {
    if (isFloat()) return bits == 16 ? Sample::half : Sample::float32;
    return bits > 8 && !isPalette() ? Sample::integer16 : Sample::integer8;
  }
};

void requireKnownColors(Layout& layout, TIFF* tiff) {
  switch (layout.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_PALETTE:
      return;
    case PHOTOMETRIC_SEPARATED:
      refuse("is a CMYK picture; convert it to RGB first");
    case PHOTOMETRIC_YCBCR:
      if (layout.compression == COMPRESSION_JPEG && !layout.planar) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        layout.photometric = PHOTOMETRIC_RGB;
        return;
      }
      [[fallthrough]];
    default:
      refuse("has colours of a kind that cannot be read; convert it to RGB or gray first");
  }
}

void requireKnownSamples(const Layout& layout) {
  const bool known = layout.isFloat()
                         ? layout.bits == 16 || layout.bits == 32
                         : layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID;
  if (!known || layout.bits < 1 || (layout.bits > 16 && !layout.isFloat()) ||
      (layout.isPalette() && (layout.isFloat() || layout.bits > 8))) {
    refuse("has samples of " + std::to_string(layout.bits) +
           " bits of a kind that cannot be read; convert it to 8 or 16 bits or to floats first");
  }
  constexpr uint16_t kMostSamples = 64;
  if (layout.samples > kMostSamples) refuse("has more than 64 samples a pixel");
  if (layout.samples < layout.colors()) refuse("is a damaged TIFF picture: a colour is missing");
}

// Strips or tiles that share their bytes could take any time to unpack.
void requireOwnBytes(const Reader& reader, uint64_t fileSize) {
  TIFF* tiff = reader.get();
  const uint32_t count =
      TIFFIsTiled(tiff) != 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  uint64_t all = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t size = TIFFGetStrileByteCount(tiff, i);
    if (size > fileSize - all) {
      refuse("is a damaged TIFF picture: its strips take more bytes than the file has");
    }
    all += size;
  }
}

Layout layoutOf(const Reader& reader) {
  TIFF* tiff = reader.get();
  Layout layout{};
  layout.width = reader.field<uint32_t>(TIFFTAG_IMAGEWIDTH);
  layout.height = reader.field<uint32_t>(TIFFTAG_IMAGELENGTH);
  layout.bits = reader.field<uint16_t>(TIFFTAG_BITSPERSAMPLE);
  layout.samples = reader.field<uint16_t>(TIFFTAG_SAMPLESPERPIXEL);
  layout.compression = reader.field<uint16_t>(TIFFTAG_COMPRESSION);
  layout.format = reader.field<uint16_t>(TIFFTAG_SAMPLEFORMAT);
  layout.planar =
      layout.samples > 1 && reader.field<uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
  layout.tiled = TIFFIsTiled(tiff) != 0;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric) == 0) {
    layout.photometric = layout.samples < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
  }
  if (std::find(kCompressions.begin(), kCompressions.end(), layout.compression) ==
      kCompressions.end()) {
    refuse("is packed in a way that cannot be read (TIFF compression " +
           std::to_string(layout.compression) + ")");
  }
  requireKnownColors(layout, tiff);
  requireKnownSamples(layout);
  return layout;
}

// The bits of one sample, the highest first, at any place of a row.
uint32_t bitsAt(const unsigned char* row, std::size_t bit, std::size_t count) {
  uint32_t value = 0;
  for (std::size_t end = bit + count; bit < end; ++bit) {
    value = value << 1 | (row[bit / 8] >> (7 - bit % 8) & 1);
  }
  return value;
}

// Puts runs of the file's pixels where the image has them.
class Writer {
 public:
  Writer(const Reader& reader, const Layout& layout, Image& image)
      : layout_(layout), image_(image), size_(sizeOf(image.sample)) {
    if (!layout.isPalette()) return;
    std::array<uint16_t*, 3> colors{};
    if (TIFFGetField(reader.get(), TIFFTAG_COLORMAP, colors.data(), &colors[1], &colors[2]) == 0) {
      refuse("is a damaged TIFF picture: it has no palette");
    }
    for (const uint16_t* color : colors) palette_.emplace_back(color, color + (1U << layout.bits));
  }

  // `plane` is the channel of planar pictures, else 0.
  void write(const unsigned char* row, uint32_t x, uint32_t y, uint32_t count, uint16_t plane) {
    const auto channels = static_cast<std::size_t>(image_.channels);
    unsigned char* out = image_.row(static_cast<int>(y)) + x * channels * size_;
    if (isAsInFile()) {
      std::memcpy(out, row, count * channels * size_);
      return;
    }
    for (uint32_t i = 0; i < count; ++i, out += channels * size_) {
      const std::size_t first = i * layout_.samplesTogether();
      if (layout_.isPalette()) {
        const uint32_t index = bitsAt(row, first * layout_.bits, layout_.bits);
        for (std::size_t c = 0; c < channels; ++c) {
          out[c] = static_cast<unsigned char>(palette_[c][index] >> 8);
        }
      } else if (layout_.planar) {
        writeSample(row, first, out + plane * size_);
      } else {
        for (std::size_t c = 0; c < channels; ++c) writeSample(row, first + c, out + c * size_);
      }
    }
  }

 private:
  bool isAsInFile() const {
    return 8U * size_ == layout_.bits && !layout_.planar && layout_.samples == image_.channels &&
           layout_.photometric != PHOTOMETRIC_MINISWHITE && !layout_.isPalette();
  }

  void writeSample(const unsigned char* row, std::size_t index, unsigned char* out) const {
    if (layout_.bits == 32) {
      std::memcpy(out, row + index * 4, 4);
      return;
    }
    uint16_t value = 0;
    if (layout_.bits == 16) {
      std::memcpy(&value, row + index * 2, 2);
    } else {
      const uint32_t full = size_ == 1 ? 0xFF : 0xFFFF;
      const uint32_t largest = (1U << layout_.bits) - 1;
      value = static_cast<uint16_t>(
          (bitsAt(row, index * layout_.bits, layout_.bits) * full + largest / 2) / largest);
    }
    if (layout_.photometric == PHOTOMETRIC_MINISWHITE && !layout_.isFloat()) {
      value = static_cast<uint16_t>(~value);
    }
    std::memcpy(out, &value, size_);  // the low byte comes first
  }

  const Layout& layout_;
  Image& image_;
  std::size_t size_;
  std::vector<std::vector<uint16_t>> palette_;
};

class Decoder {
 public:
  Decoder(const PictureFile& file, const Reader& reader, const Layout& layout, Image& image)
      : file_(file),
        reader_(reader),
        tiff_(reader.get()),
        layout_(layout),
        writer_(reader, layout, image) {}

  void run() {
    const uint16_t planes = layout_.planar ? static_cast<uint16_t>(layout_.colors()) : uint16_t{1};
    for (uint16_t plane = 0; plane < planes; ++plane) {
      if (layout_.tiled) {
        readTiles(plane);
      } else {
        readRows(plane);
      }
    }
  }

 private:
  void readTiles(uint16_t plane) {
    const auto width = reader_.field<uint32_t>(TIFFTAG_TILEWIDTH);
    const auto height = reader_.field<uint32_t>(TIFFTAG_TILELENGTH);
    const uint64_t rowSize = layout_.bytesOf(width);
    if (TIFFTileRowSize64(tiff_) != rowSize || TIFFTileSize64(tiff_) != rowSize * height) {
      refuse("is a damaged TIFF picture: its tiles have another size");
    }
    requireMemory(rowSize * height, file_.memory);
    std::vector<unsigned char> tile(rowSize * height);
    for (uint64_t y = 0; y < layout_.height; y += height) {
      for (uint64_t x = 0; x < layout_.width; x += width) {
        const auto left = static_cast<uint32_t>(x);
        const auto top = static_cast<uint32_t>(y);
        if (TIFFReadTile(tiff_, tile.data(), left, top, 0, plane) < 0) reader_.fail();
        const uint32_t columns = std::min(width, layout_.width - left);
        for (uint32_t row = 0; row < std::min(height, layout_.height - top); ++row) {
          writer_.write(&tile[rowSize * row], left, top + row, columns, plane);
        }
      }
    }
  }

  void readRows(uint16_t plane) {
    const std::size_t size = layout_.bytesOf(layout_.width);
    if (TIFFScanlineSize64(tiff_) != size) {
      refuse("is a damaged TIFF picture: its rows have another size");
    }
    requireMemory(size, file_.memory);
    std::vector<unsigned char> row(size);
    const bool plain = layout_.compression == COMPRESSION_NONE &&
                       reader_.field<uint16_t>(TIFFTAG_FILLORDER) == FILLORDER_MSB2LSB;
    for (uint32_t y = 0; y < layout_.height; ++y) {
      if (plain) {
        readPlainRow(row, y, plane);
      } else if (TIFFReadScanline(tiff_, row.data(), y, plane) < 0) {
        reader_.fail();
      }
      writer_.write(row.data(), 0, y, layout_.width, plane);
    }
  }

  void readPlainRow(std::vector<unsigned char>& row, uint32_t y, uint16_t plane) const {
    const uint32_t rows = std::min(reader_.field<uint32_t>(TIFFTAG_ROWSPERSTRIP), layout_.height);
    const uint32_t strip = TIFFComputeStrip(tiff_, y, plane);
    const uint64_t from = uint64_t{y % rows} * row.size();
    const uint64_t start = TIFFGetStrileOffset(tiff_, strip);
    if (TIFFGetStrileByteCount(tiff_, strip) < from + row.size() || start > file_.size ||
        fseeko(file_.stream, static_cast<off_t>(start + from), SEEK_SET) != 0 ||
        std::fread(row.data(), 1, row.size(), file_.stream) != row.size()) {
      refuse("ends before its pixels do");
    }
    if (TIFFIsByteSwapped(tiff_) == 0) return;
    if (layout_.bits == 16) {
      TIFFSwabArrayOfShort(reinterpret_cast<uint16_t*>(row.data()),
                           static_cast<tmsize_t>(row.size() / 2));
    } else if (layout_.bits == 32) {
      TIFFSwabArrayOfLong(reinterpret_cast<uint32_t*>(row.data()),
                          static_cast<tmsize_t>(row.size() / 4));
    }
  }

  const PictureFile& file_;
  const Reader& reader_;
  TIFF* tiff_;
  const Layout& layout_;
  Writer writer_;
};

// Profile, resolution and orientation.
void readDescription(const Reader& reader, Image& image) {
  TIFF* tiff = reader.get();
  uint32_t size = 0;
  const unsigned char* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &profile) != 0) {
    image.iccProfile.assign(profile, profile + size);
  }
  uint16_t orientation = 0;
  if (TIFFGetField(tiff, TIFFTAG_ORIENTATION, &orientation) != 0 && orientation <= 8) {
    image.orientation = orientation;
  }
  float resolution = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &resolution) != 0) {
    const auto unit = reader.field<uint16_t>(TIFFTAG_RESOLUTIONUNIT);
    const double inches = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
    image.resolution = resolutionFrom(inches * static_cast<double>(resolution));
  }
}

}  // namespace

Image decodeTiff(const PictureFile& file) {
  const Reader reader(file);
  const Layout layout = layoutOf(reader);
  Image image;
  readDescription(reader, image);
  allocatePixels(file, image, layout.width, layout.height, layout.isPalette() ? 3 : layout.colors(),
                 layout.sample());
  requireOwnBytes(reader, file.size);
  Decoder(file, reader, layout, image).run();
  return image;
}

}  // namespace lfmeta
