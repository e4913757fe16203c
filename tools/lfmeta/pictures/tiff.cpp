// TIFF pictures, through libtiff: black and white, gray, palettes and RGB, in strips or tiles, in
// up to 16 bits or in floating point. What is packed is unpacked by libtiff; strips that are not
// packed are read here, since libtiff would hold a strip, which may be the whole picture, twice.
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "pictures/picture.h"
#include "pictures/tiff_layout.h"
#include "pictures/tiff_reader.h"

namespace lfmeta {

namespace {

// Strips or tiles that share their bytes could take any time to unpack.
void requireOwnBytes(const TiffReader& reader, uint64_t fileSize) {
  TIFF* tiff = reader.get();
  const uint32_t count =
      TIFFIsTiled(tiff) != 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
  uint64_t all = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t size = TIFFGetStrileByteCount(tiff, i);
    if (size > fileSize - all) {
      throw std::runtime_error(
          "is a damaged TIFF picture: its strips take more bytes than the file has");
    }
    all += size;
  }
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
  Writer(const TiffReader& reader, const TiffLayout& layout, Image& image)
      : layout_(layout), image_(image), size_(sizeOf(image.sample)) {
    if (!layout.isPalette()) return;
    std::array<uint16_t*, 3> colors{};
    if (TIFFGetField(reader.get(), TIFFTAG_COLORMAP, colors.data(), &colors[1], &colors[2]) == 0) {
      throw std::runtime_error("is a damaged TIFF picture: it has no palette");
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

  const TiffLayout& layout_;
  Image& image_;
  std::size_t size_;
  std::vector<std::vector<uint16_t>> palette_;
};

class Decoder {
 public:
  Decoder(const PictureFile& file, const TiffReader& reader, const TiffLayout& layout, Image& image)
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
      throw std::runtime_error("is a damaged TIFF picture: its tiles have another size");
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
      throw std::runtime_error("is a damaged TIFF picture: its rows have another size");
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
      throw std::runtime_error("ends before its pixels do");
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
  const TiffReader& reader_;
  TIFF* tiff_;
  const TiffLayout& layout_;
  Writer writer_;
};

// Profile, resolution and orientation.
void readDescription(const TiffReader& reader, Image& image) {
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
  const TiffReader reader(file);
  const TiffLayout layout = tiffLayoutOf(reader);
  Image image;
  readDescription(reader, image);
  allocatePixels(file, image, layout.width, layout.height, layout.isPalette() ? 3 : layout.colors(),
                 layout.sample());
  requireOwnBytes(reader, file.size);
  Decoder(file, reader, layout, image).run();
  return image;
}

}  // namespace lfmeta
