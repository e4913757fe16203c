// Pictures of all formats: what decodes keeps to the memory allowed, and goes to every depth.
#include <zlib.h>

#include "fuzzing.h"
#include "pictures/brightness.h"
#include "pictures/sample_depth.h"

// A PNG picture's checksums are made right, so that what they cover is reached.
static void repairChecksums(std::string& file) {
  using namespace build;
  if (!file.starts_with("\x89PNG")) return;
  for (std::size_t at = 8; at + 12 <= file.size();) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8 | static_cast<uint8_t>(file[at + i]);
    if (size > file.size() - at - 12) return;
    file.replace(at + 8 + size, 4, u32(crc32(0, bytesAt(file) + at + 4, static_cast<uInt>(size + 4))));
    at += 12 + size;
  }
}

void fuzz::check(std::string input) {
  using namespace lfmeta;
  constexpr uint64_t kMemory = 1 << 20;
  const auto depth = static_cast<Sample>(take<uint8_t>(input) % 4);
  if (input.empty()) return;
  repairChecksums(input);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(fmemopen(input.data(), input.size(), "rb"), std::fclose);
  const PictureFile file{stream.get(), input.size(), kMemory};
  try {
    Image image = decodePicture(file);
    require(image.width > 0 && image.height > 0 && (image.channels == 1 || image.channels == 3));
    require(image.pixelsSize() <= kMemory && image.orientation >= 0 && image.orientation <= 8);
    convertSamples(image, depth, 4 * kMemory);
    require(image.sample == depth);
    std::rewind(stream.get());
    const Brightness found = measureBrightness(file);
    uint64_t pixels = found.black + found.notFinite;
    for (const uint64_t count : found.stops.counts()) pixels += count;
    require(pixels == static_cast<uint64_t>(image.width) * static_cast<uint64_t>(image.height));
    require(found.isBlack() || (found.minimum > 0 && found.minimum <= found.maximum && found.mean <= found.maximum));
  } catch (const std::runtime_error& error) {
    require(error.what()[0] != '\0');
  }
}
