#include "photos/icc_profile.h"

#include <LumenforgeMetaLib.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.h"

namespace lfmeta {

std::optional<Bytes> readTiffProfile(const std::string& path) {
  constexpr int kProfileTag = 34675;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (!file) throw Failure(path, std::string("cannot be opened: ") + std::strerror(errno));
  int size = 0;
  int offset = 0;
  const int result = get_tif_tag(file.get(), kProfileTag, &size, &offset);
  if (result == -1) return std::nullopt;
  if (result < 0) {
    throw Failure(path, "is no little-endian TIFF file, the only kind whose profile is handled");
  }
  Bytes profile = readRegion(path, static_cast<uint32_t>(offset), static_cast<uint32_t>(size));
  if (profile.empty()) {
    throw Failure(path, "has a profile entry that points outside of the file; --set replaces it");
  }
  return profile;
}

}  // namespace lfmeta
