#include "base/file_kind.h"

#include <LumenforgeMetaLib.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

struct Kind {
  const char* name;
  std::string_view signature;
};

constexpr std::array kKinds{
    Kind{"a packet of settings alone", "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF"sv},
    Kind{"a TIFF picture as lfmeta writes it", "II*\0"sv},
    Kind{"a stand-alone EXIF block", "II*\0"sv},
    Kind{"a PNG picture", "\x89PNG\r\n\x1A\n"sv},
};

const Kind& entryOf(FileKind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

std::string bytesAt(int descriptor, std::size_t offset, std::size_t size) {
  std::string bytes(size, '\0');
  const ssize_t count = pread(descriptor, bytes.data(), size, static_cast<off_t>(offset));
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

bool hasTag(int descriptor, int tag) {
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(fdopen(copy, "rb"), &std::fclose);
  int count = 0;
  int value = 0;
  return stream && std::fseek(stream.get(), 0, SEEK_SET) == 0 &&
         get_tif_tag(stream.get(), tag, &count, &value) > 0;
}

// Raw photographs are TIFF files, too: their pictures stand in directories below the first.
bool isRaw(int descriptor) {
  constexpr int kSubDirectories = 330;
  return hasTag(descriptor, kSubDirectories) || bytesAt(descriptor, 8, 2) == "CR";
}

}  // namespace

const char* nameOf(FileKind kind) {
  return entryOf(kind).name;
}

bool isOfKind(int descriptor, FileKind kind) {
  constexpr int kImageWidth = 256;
  constexpr int kExifDirectory = 0x8769;
  constexpr int kGpsDirectory = 0x8825;
  const auto& [name, signature] = entryOf(kind);
  if (bytesAt(descriptor, 0, signature.size()) != signature) return false;
  if (kind != FileKind::tiff && kind != FileKind::exifBlock) return true;
  if (isRaw(descriptor)) return false;
  if (kind == FileKind::tiff) return hasTag(descriptor, kImageWidth);
  // A picture that has lost its directory has neither.
  return !hasTag(descriptor, kImageWidth) &&
         (hasTag(descriptor, kExifDirectory) || hasTag(descriptor, kGpsDirectory));
}

}  // namespace lfmeta
