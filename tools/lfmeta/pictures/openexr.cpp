// OpenEXR pictures, through OpenEXR: the first part's gray or RGB channels in half or single
// precision, flat scanlines or the full size of tiles. The pixels are those of the data window.
// Chromaticities, where the picture has them, become a linear profile.
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfChromaticities.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfInputPart.h>
#include <OpenEXR/ImfMultiPartInputFile.h>
#include <OpenEXR/ImfPartType.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfTileDescription.h>

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "pictures/linear_profile.h"
#include "pictures/openexr_header.h"

namespace lfmeta {

namespace {

class Stream : public Imf::IStream {
 public:
  explicit Stream(std::FILE* stream) : Imf::IStream("picture"), stream_(stream) {}
  bool read(char out[], int size) override {
    if (size < 0 || std::fread(out, 1, static_cast<std::size_t>(size), stream_) !=
                        static_cast<std::size_t>(size)) {
      throw std::runtime_error("it ends too early");
    }
    return true;
  }
  uint64_t tellg() override { return static_cast<uint64_t>(ftello(stream_)); }
  void seekg(uint64_t offset) override {
    if (fseeko(stream_, static_cast<off_t>(offset), SEEK_SET) != 0) {
      throw std::runtime_error("it cannot be sought in");
    }
  }
  void clear() override { std::clearerr(stream_); }

 private:
  std::FILE* stream_;
};

// What OpenEXR throws, said of the picture; refusals of our own do not pass through here.
template <typename Call>
auto guarded(const Call& call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("is a damaged OpenEXR picture: ") + error.what());
  }
}

[[noreturn]] void refuse(const char* what) {
  throw std::runtime_error(what);
}

std::vector<const char*> colorsOf(const Imf::ChannelList& channels) {
  if (channels.findChannel("R") != nullptr && channels.findChannel("G") != nullptr &&
      channels.findChannel("B") != nullptr) {
    return {"R", "G", "B"};
  }
  if (channels.findChannel("Y") == nullptr) {
    refuse("has no channels R, G and B, and no Y; name the layer that is meant so first");
  }
  if (channels.findChannel("RY") != nullptr || channels.findChannel("BY") != nullptr) {
    refuse("has its colours as differences (RY, BY); convert it to RGB first");
  }
  return {"Y"};
}

// A block of scanlines or a row of tiles is held with all its channels.
void requireMemoryOfBlocks(const PictureFile& file, const Imf::Header& header, uint64_t width) {
  constexpr uint64_t kMostLines = 256;  // of a block, in the format that packs the most together
  uint64_t pixelSize = 0;
  for (auto i = header.channels().begin(); i != header.channels().end(); ++i) {
    pixelSize += i.channel().type == Imf::HALF ? 2 : 4;
  }
  uint64_t lines = header.compression() == Imf::DWAB_COMPRESSION ? kMostLines : 32;
  if (header.hasTileDescription()) {
    const Imf::TileDescription& tiles = header.tileDescription();
    lines = std::min<uint64_t>(tiles.ySize, 1 << 20);
    width += tiles.xSize;
  }
  requireMemory(width * pixelSize, file.memory);  // which is far from what 64 bits hold
  requireMemory(width * pixelSize * lines, file.memory);
}

Imf::PixelType pixelTypeOf(const Imf::ChannelList& channels,
                           const std::vector<const char*>& colors) {
  Imf::PixelType type = Imf::HALF;
  for (const char* name : colors) {
    const Imf::Channel& channel = *channels.findChannel(name);
    if (channel.type != Imf::HALF) type = Imf::FLOAT;
    if (channel.type == Imf::UINT) refuse("has integer samples; convert it to half or float first");
    if (channel.xSampling != 1 || channel.ySampling != 1) {
      refuse("has channels of fewer samples than pixels; convert it to RGB first");
    }
  }
  return type;
}

Bytes profileFrom(const Imf::Chromaticities& colors) {
  const auto pointOf = [](const Imath::V2f& v) {
    return Chromaticity{static_cast<double>(v.x), static_cast<double>(v.y)};
  };
  return linearProfile(
      {pointOf(colors.red), pointOf(colors.green), pointOf(colors.blue), pointOf(colors.white)});
}

}  // namespace

Image decodeOpenExr(const PictureFile& file) {
  requireSoundOpenExrHeaders(file);
  Stream stream(file.stream);
  const auto opened =
      guarded([&] { return std::make_unique<Imf::MultiPartInputFile>(stream, 0, false); });
  const Imf::Header& header = opened->header(0);
  if (header.hasType() && Imf::isDeepData(header.type())) {
    refuse("is a deep OpenEXR picture; flatten it first");
  }
  const std::vector<const char*> colors = colorsOf(header.channels());
  const Imf::PixelType type = pixelTypeOf(header.channels(), colors);
  const Imath::Box2i& window = header.dataWindow();
  const auto width = static_cast<uint64_t>(int64_t{window.max.x} - window.min.x + 1);
  const auto height = static_cast<uint64_t>(int64_t{window.max.y} - window.min.y + 1);

  Image image;
  allocatePixels(file, image, width, height, static_cast<int>(colors.size()),
                 type == Imf::HALF ? Sample::half : Sample::float32);
  requireMemoryOfBlocks(file, header, width);
  if (colors.size() == 3 && Imf::hasChromaticities(header)) {
    image.iccProfile = profileFrom(Imf::chromaticities(header));
  }
  if (Imf::hasXDensity(header)) {
    image.resolution = resolutionFrom(static_cast<double>(Imf::xDensity(header)));
  }
  Imf::FrameBuffer frame;
  for (std::size_t i = 0; i < colors.size(); ++i) {
    frame.insert(colors[i],
                 Imf::Slice::Make(type, image.row(0) + i * sizeOf(image.sample), window,
                                  colors.size() * sizeOf(image.sample), image.rowSize()));
  }
  guarded([&] {
    Imf::InputPart part(*opened, 0);
    part.setFrameBuffer(frame);
    part.readPixels(window.min.y, window.max.y);
  });
  return image;
}

}  // namespace lfmeta
