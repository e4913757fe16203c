// Photographs as cameras and editors write them, with their metadata, and the least work that could
// give these.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "../tests/support/builders.h"
#include "LumenforgeMetaLib.h"
#include "compare.h"

namespace bench {

using namespace build;

inline std::vector<Entry> cameraExif(const Tiff& t) {
  std::vector<Entry> entries = t.entries(
      "829A=1/250; 829D=56/10; 8827=s400; 9003='2021:06:05 14:03:59'; 9201=8/1; 920A=50/1; "
      "A20E=4000/3; A210=s3; A405=s75");
  entries.insert(entries.begin() + 6, {0x927C, 7, 12000, std::string(12000, 'm')});
  return entries;
}

inline std::string cameraTiff(const Tiff& t) {
  return t.file(
      t.entries("10F='NIKON CORPORATION'; 110='NIKON D850'; 112=s1; 11A=300/1; 11B=300/1"),
      cameraExif(t),
      t.entries("1=2#2'N'; 2=48/1,49/1,50/1; 3=2#2'E'; 4=7/1,8/1,9/1; 6=400/1; "
                "7=12/1,13/1,14/1"),
      t.entries("201=l14000; 202=l9000"));
}

struct Photo {
  std::string bytes;
  int type;
  std::size_t metadataOffset;
  std::size_t metadataSize;
};

inline Photo cameraJpeg() {
  const Tiff t{ByteOrder::big};
  const std::string head =
      kSoi + exifSegment(cameraTiff(t) + std::string(9000, 't')) +
      xmpSegment(packet("Tone Balancer", "AF-S 24-70mm f/2.8") + std::string(3000, ' ')) +
      photoshopSegment(resource(0x0404, std::string(200, '\x1C')) +
                       resource(0x040C, thumbnail(160, 120, std::string(5000, 'j')))) +
      segment(0xE2, std::string(3144, 'i'));
  return {head + segment(0xDA, "") + std::string(5'000'000, 's'), 1, 0, head.size()};
}

// As many TIFF writers do it: pixels first, the directories at the end.
inline Photo bigTiff() {
  const Tiff t{ByteOrder::little};
  constexpr std::size_t kPixels = 6'000'000;
  const std::size_t exifAt = kPixels;
  const std::string exif = t.directory(exifAt, cameraExif(t));
  const std::size_t blockAt = exifAt + exif.size();
  const std::string block = resource(0x0404, std::string(200, '\x1C'));
  const std::size_t firstAt = blockAt + block.size();
  const std::string first = t.directory(
      firstAt, {Tiff::text(0x0110, "NIKON D850"), t.shortEntry(0x0112, 1),
                Entry{0x8649, 7, static_cast<uint32_t>(block.size()), u32(blockAt, t.order)},
                t.longEntry(0x8769, exifAt)});
  std::string bytes = t.header(firstAt);
  bytes += std::string(kPixels - bytes.size(), 'p') + exif + block + first;
  const std::size_t size = bytes.size() - kPixels;
  return {std::move(bytes), 0, kPixels, size};
}

inline Photo cameraPsd() {
  const std::string resources = resource(0x0404, std::string(200, '\x1C')) +
                                resource(0x040C, thumbnail(160, 120, std::string(5000, 'j'))) +
                                resource(0x0422, cameraTiff(Tiff{ByteOrder::big}));
  std::string bytes = psd(resources);
  const std::size_t size = bytes.size();
  return {bytes + std::string(8'000'000, 'l'), 2, 0, size};
}

inline void readAtOnce(const char* path, off_t offset, std::size_t size, void* buffer) {
  const int file = ::open(path, O_RDONLY);
  benchmark::DoNotOptimize(::pread(file, buffer, size, offset));
  ::close(file);
}

// `read` against the least work: open, one aligned read of all the metadata, close. The page cache
// is warm.
inline void readPhoto(benchmark::State& state, const Photo& photo,
                      const std::function<void(const Photo&, char* path)>& read) {
  TempFile file(photo.bytes);
  std::vector<char> memory(photo.metadataSize + 8192);
  char* const buffer = memory.data() + 4096 - reinterpret_cast<uintptr_t>(memory.data()) % 4096;
  reportRatio(
      state, 16, [&] { read(photo, file.path()); },
      [&] {
        readAtOnce(file.path(), static_cast<off_t>(photo.metadataOffset / 4096 * 4096),
                   photo.metadataSize + photo.metadataOffset % 4096, buffer);
      });
}

}  // namespace bench
