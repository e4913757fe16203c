#include "photos/photo_type.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string_view>

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

std::optional<PhotoType> findPhotoType(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return std::nullopt;
  std::array<char, 4> bytes{};
  const ssize_t length = read(file, bytes.data(), bytes.size());
  close(file);

  const std::string_view start(bytes.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  for (const Signature& signature : kSignatures) {
    if (start.starts_with(signature.bytes)) return signature.type;
  }
  return std::nullopt;
}

const char* readingFailure(PhotoType type, int result) {
  switch (result) {
    case LUMENFORGE_CANNOT_READ:
      return "cannot be read, or ends before its structure does";
    case LUMENFORGE_WRONG_SIGNATURE:
      return type == PhotoType::jpeg ? "holds no EXIF data" : "has a wrong signature or byte order";
    case LUMENFORGE_UNSUPPORTED:
      return type == PhotoType::psd ? "is not an RGB picture"
                                    : "is a variant that is not supported";
    case LUMENFORGE_NO_MEMORY:
      return "needs more memory than there is";
    case LUMENFORGE_NO_MARKER:
      return "has a damaged segment behind its EXIF data";
    default:
      return "cannot be read";
  }
}

}  // namespace lfmeta
