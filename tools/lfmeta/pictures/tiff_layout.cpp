#include "pictures/tiff_layout.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

namespace lfmeta {

namespace {

constexpr std::array kCompressions{
    COMPRESSION_NONE,     COMPRESSION_LZW,       COMPRESSION_JPEG,     COMPRESSION_ADOBE_DEFLATE,
    COMPRESSION_DEFLATE,  COMPRESSION_PACKBITS,  COMPRESSION_ZSTD,     COMPRESSION_LZMA,
    COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4};

void requireKnownColors(TiffLayout& layout, TIFF* tiff) {
  switch (layout.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_PALETTE:
      return;
    case PHOTOMETRIC_SEPARATED:
      throw std::runtime_error("is a CMYK picture; convert it to RGB first");
    case PHOTOMETRIC_YCBCR:
      if (layout.compression == COMPRESSION_JPEG && !layout.planar) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        layout.photometric = PHOTOMETRIC_RGB;
        return;
      }
      [[fallthrough]];
    default:
      throw std::runtime_error(
          "has colours of a kind that cannot be read; convert it to RGB or gray first");
  }
}

void requireKnownSamples(const TiffLayout& layout) {
  const bool known = layout.isFloat()
                         ? layout.bits == 16 || layout.bits == 32
                         : layout.format == SAMPLEFORMAT_UINT || layout.format == SAMPLEFORMAT_VOID;
  if (!known || layout.bits < 1 || (layout.bits > 16 && !layout.isFloat()) ||
      (layout.isPalette() && (layout.isFloat() || layout.bits > 8))) {
    throw std::runtime_error(
        "has samples of " + std::to_string(layout.bits) +
        " bits of a kind that cannot be read; convert it to 8 or 16 bits or to floats first");
  }
  constexpr uint16_t kMostSamples = 64;
  if (layout.samples > kMostSamples) throw std::runtime_error("has more than 64 samples a pixel");
  if (layout.samples < layout.colors())
    throw std::runtime_error("is a damaged TIFF picture: a colour is missing");
}

}  // namespace

TiffLayout tiffLayoutOf(const TiffReader& reader) {
  TIFF* tiff = reader.get();
  TiffLayout layout{};
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
    throw std::runtime_error("is packed in a way that cannot be read (TIFF compression " +
                             std::to_string(layout.compression) + ")");
  }
  requireKnownColors(layout, tiff);
  requireKnownSamples(layout);
  return layout;
}

}  // namespace lfmeta
