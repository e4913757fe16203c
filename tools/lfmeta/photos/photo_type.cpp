#include "photos/photo_type.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/failure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

struct Signature {
  std::string_view bytes;
  PhotoType type;
};

constexpr std::array kSignatures{
    Signature{"\xFF\xD8"sv, PhotoType::jpeg}, Signature{"II*\0"sv, PhotoType::tiff},
    Signature{"MM\0*"sv, PhotoType::tiff},    Signature{"II+\0"sv, PhotoType::tiff},
    Signature{"MM\0+"sv, PhotoType::tiff},    Signature{"8BPS"sv, PhotoType::psd},
};

}  // namespace

const char* nameOf(PhotoType type) {
  constexpr std::array kNames{"TIFF", "JPEG", "PSD"};
  return kNames[static_cast<std::size_t>(type)];
}

std::optional<PhotoType> findPhotoType(PhotoFile& file) {
  for (const Signature& signature : kSignatures) {
    const auto start = file.view(0, signature.bytes.size());
    if (start.empty()) continue;
    const auto same = [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); };
    if (std::equal(start.begin(), start.end(), signature.bytes.begin(), same)) {
      return signature.type;
    }
  }
  return std::nullopt;
}

std::optional<PhotoType> findPhotoType(const std::string& path) {
  try {
    PhotoFile file(path);
    return findPhotoType(file);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

}  // namespace lfmeta
