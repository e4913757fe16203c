// Reading a photograph against the least work that could give its metadata: open, one aligned read
// of all the metadata, close. Page cache warm. Each benchmark runs the two in turn and reports the
// ratio of their medians.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "../tests/support/builders.h"
#include "LumenforgeMetaLib.h"

namespace {

using namespace build;

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double>& values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

void reportRatio(benchmark::State& state, const std::function<void()>& subject,
                 const std::function<void()>& limit) {
  std::vector<double> subjects;
  std::vector<double> limits;
  for ([[maybe_unused]] auto _ : state) {
    subjects.push_back(secondsOf(subject));
    limits.push_back(secondsOf(limit));
    state.SetIterationTime(subjects.back());
  }
  const double limitMedian = median(limits);
  state.counters["limit_us"] = limitMedian * 1e6;
  state.counters["ratio"] = median(subjects) / limitMedian;
}

void readAtOnce(const char* path, off_t offset, std::size_t size, void* buffer) {
  const int file = ::open(path, O_RDONLY);
  benchmark::DoNotOptimize(::pread(file, buffer, size, offset));
  ::close(file);
}

std::vector<Entry> cameraExif(const Tiff& t) {
  return {t.fraction(0x829A, 1, 250),
          t.fraction(0x829D, 56, 10),
          t.shortEntry(0x8827, 400),
          Tiff::text(0x9003, "2021:06:05 14:03:59"),
          t.fraction(0x9201, 8, 1),
          t.fraction(0x920A, 50, 1),
          Entry{0x927C, 7, 12000, std::string(12000, 'm')},
          t.fraction(0xA20E, 4000, 3),
          t.shortEntry(0xA210, 3),
          t.shortEntry(0xA405, 75)};
}

std::string cameraTiff(const Tiff& t) {
  return t.file({Tiff::text(0x010F, "NIKON CORPORATION"), Tiff::text(0x0110, "NIKON D850"),
                 t.shortEntry(0x0112, 1), t.fraction(0x011A, 300, 1), t.fraction(0x011B, 300, 1)},
                cameraExif(t),
                {Entry{1, 2, 2, "N"}, t.fraction(2, 48, 1, 3), Entry{3, 2, 2, "E"},
                 t.fraction(4, 7, 1, 3), t.fraction(6, 400, 1), t.fraction(7, 12, 1, 3)},
                {t.longEntry(0x0201, 14000), t.longEntry(0x0202, 9000)});
}

struct Photo {
  std::string bytes;
  int type;
  std::size_t metadataOffset;
  std::size_t metadataSize;
};

Photo cameraJpeg() {
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
Photo bigTiff() {
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

Photo cameraPsd() {
  const std::string resources = resource(0x0404, std::string(200, '\x1C')) +
                                resource(0x040C, thumbnail(160, 120, std::string(5000, 'j'))) +
                                resource(0x0422, cameraTiff(Tiff{ByteOrder::big}));
  std::string bytes = psd(resources);
  const std::size_t size = bytes.size();
  return {bytes + std::string(8'000'000, 'l'), 2, 0, size};
}

void readPhoto(benchmark::State& state, const Photo& photo) {
  TempFile file(photo.bytes);
  std::vector<char> memory(photo.metadataSize + 8192);
  char* const buffer = memory.data() + 4096 - reinterpret_cast<uintptr_t>(memory.data()) % 4096;
  MetadataBuf buf{};
  GpsBuf gps{};
  reportRatio(
      state, [&] { benchmark::DoNotOptimize(get_exif_data(file.path(), photo.type, &buf, &gps)); },
      [&] {
        readAtOnce(file.path(), static_cast<off_t>(photo.metadataOffset / 4096 * 4096),
                   photo.metadataSize + photo.metadataOffset % 4096, buffer);
      });
  state.counters["metadata_kb"] = static_cast<double>(photo.metadataSize) / 1024;
}

BENCHMARK_CAPTURE(readPhoto, jpeg_5MB, cameraJpeg())->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, tiff_6MB, bigTiff())->UseManualTime();
BENCHMARK_CAPTURE(readPhoto, psd_8MB, cameraPsd())->UseManualTime();

}  // namespace
