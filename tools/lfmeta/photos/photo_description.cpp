#include "photos/photo_description.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace lfmeta {

namespace {

constexpr int kImageDescription = 270;
constexpr int kLongestInlineText = 4;  // stands in the entry itself, too short to describe anything
constexpr int kLongestText = 65536;    // eleven short items; nothing behind them matters

}  // namespace

void readDescribedExposure(const std::string& path, ExifInfo& info) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  int length = 0;
  int offset = 0;
  if (file && get_tif_tag(file.get(), kImageDescription, &length, &offset) > 0 &&
      length > kLongestInlineText &&
      std::fseek(file.get(), static_cast<long>(static_cast<unsigned int>(offset)), SEEK_SET) == 0) {
    parse_image_description(file.get(), std::min(length, kLongestText), &info);
  }
}

}  // namespace lfmeta
