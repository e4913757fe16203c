// Writing a 24-megapixel image into a memory file system, against a loop of 1 MiB write calls of
// the finished bytes and against libtiff with strips of 1 MiB and with one strip. Each benchmark
// runs all in turn; the counters are ratios of the smallest times. Times are the processor's:
// nothing waits for a memory file system, and what else the machine does counts less.
// "floor_per_write" is the sum of what cannot be avoided where pixels are packed: reading all of
// them once, and writing as many bytes from a block that lies in the cache.
#include <benchmark/benchmark.h>
#include <emmintrin.h>
#include <fcntl.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "LumenforgeMetaLib.h"
#include "compare.h"

namespace {

constexpr std::size_t kMebibyte = 1048576;
const std::string kDirectory = "/dev/shm/lumenforge-bench-";

struct Image {
  TifImageInfo info{};
  int stride = 0;
  std::vector<uint8_t> pixels;

  std::size_t samplesKept() const { return info.channels < 3 ? 1 : 3; }
  std::size_t sampleSize() const { return static_cast<std::size_t>(info.bitsPerSample) / 8; }
  std::size_t fileRowSize() const {
    return static_cast<std::size_t>(info.width) * samplesKept() * sampleSize();
  }
};

Image makeImage(int channels, int bits, int conversion) {
  Image image;
  image.info.width = 6000;
  image.info.height = 4000;
  image.info.channels = channels;
  image.info.bitsPerSample = bits;
  image.info.resolution = 300;
  image.info.conversion = conversion;
  const int rowSamples = image.info.width * channels;
  image.stride = conversion == 1 ? rowSamples : rowSamples * bits / 8;
  image.pixels.resize(static_cast<std::size_t>(rowSamples) * 4000 *
                      (conversion == 1 ? 2 : image.sampleSize()));
  uint32_t noise = 1;
  for (uint8_t& byte : image.pixels) {
    noise = noise * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(noise >> 24);
  }
  return image;
}

bool writeOurs(const Image& image, const std::string& path) {
  const MetadataBuf meta{};
  const GpsBuf gps{};
  return buf2tif(image.pixels.data(), &image.info, image.stride, nullptr, &meta, &gps, 0, nullptr,
                 0, nullptr, 0, nullptr, path.c_str()) > 0;
}

bool writePlain(const std::vector<char>& bytes, const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  bool good = file >= 0;
  for (std::size_t at = 0; good && at < bytes.size(); at += kMebibyte) {
    const std::size_t size = std::min(kMebibyte, bytes.size() - at);
    good = ::write(file, bytes.data() + at, size) == static_cast<ssize_t>(size);
  }
  return ::close(file) == 0 && good;
}

bool writeFromCache(std::size_t size, const std::string& path) {
  static const std::vector<char> kBlock(kMebibyte, 'x');
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  bool good = file >= 0;
  for (std::size_t at = 0; good && at < size; at += kMebibyte) {
    good = ::write(file, kBlock.data(), kMebibyte) > 0;
  }
  return ::close(file) == 0 && good;
}

bool readAll(const std::vector<uint8_t>& pixels) {
  __m128i sums[4] = {};
  for (std::size_t at = 0; at + 64 <= pixels.size(); at += 64) {
    _mm_prefetch(reinterpret_cast<const char*>(pixels.data()) + at + 1024, _MM_HINT_T0);
    for (std::size_t i = 0; i < 4; ++i) {
      const auto* from = reinterpret_cast<const __m128i*>(pixels.data() + at + 16 * i);
      sums[i] = _mm_add_epi8(sums[i], _mm_loadu_si128(from));
    }
  }
  benchmark::DoNotOptimize(sums);
  return true;
}

// The loop that a host without our library would write; where no sample is dropped, one that
// compilers vectorize.
template <typename In, typename Out, std::size_t kChannels, std::size_t kKept>
void packRow(const uint8_t* in, std::size_t width, uint8_t* out) {
  constexpr int kShift = 8 * static_cast<int>(sizeof(In) - sizeof(Out));
  const auto* from = reinterpret_cast<const In*>(in);
  auto* to = reinterpret_cast<Out*>(out);
  if (kChannels == kKept) {
    for (std::size_t i = 0; i < width * kKept; ++i) to[i] = static_cast<Out>(from[i] >> kShift);
    return;
  }
  for (std::size_t x = 0; x < width; ++x, from += kChannels, to += kKept) {
    for (std::size_t s = 0; s < kKept; ++s) to[s] = static_cast<Out>(from[s] >> kShift);
  }
}

void packRowFor(const Image& image, const uint8_t* in, uint8_t* out) {
  const auto pack = image.info.channels == 3     ? packRow<uint16_t, uint8_t, 3, 3>
                    : image.info.conversion == 1 ? packRow<uint16_t, uint8_t, 4, 3>
                    : image.sampleSize() == 1    ? packRow<uint8_t, uint8_t, 4, 3>
                    : image.sampleSize() == 2    ? packRow<uint16_t, uint16_t, 4, 3>
                                                 : packRow<uint32_t, uint32_t, 4, 3>;
  pack(in, static_cast<std::size_t>(image.info.width), out);
}

bool writeLibtiff(const Image& image, std::size_t stripSize, const std::string& path) {
  const std::size_t rowSize = image.fileRowSize();
  const auto height = static_cast<std::size_t>(image.info.height);
  const std::size_t rows = std::clamp<std::size_t>(stripSize / rowSize, 1, height);
  const std::size_t inRow = image.pixels.size() / height;
  TIFF* tiff = TIFFOpen(path.c_str(), "wl");
  if (tiff == nullptr) return false;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.info.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.info.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, image.info.bitsPerSample);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, static_cast<int>(image.samplesKept()));
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(rows));
  if (image.info.bitsPerSample == 32) {
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
  }
  std::vector<uint8_t> strip(inRow == rowSize ? 0 : rows * rowSize);
  bool good = true;
  for (std::size_t row = 0; good && row < height; row += rows) {
    const std::size_t count = std::min(rows, height - row);
    const uint8_t* bytes = image.pixels.data() + row * inRow;
    for (std::size_t i = 0; i < count && !strip.empty(); ++i) {
      packRowFor(image, bytes + i * inRow, strip.data() + i * rowSize);
    }
    if (!strip.empty()) bytes = strip.data();
    const auto size = static_cast<tmsize_t>(count * rowSize);
    good = TIFFWriteEncodedStrip(tiff, static_cast<uint32_t>(row / rows),
                                 const_cast<uint8_t*>(bytes), size) == size;
  }
  TIFFClose(tiff);
  return good;
}

// Time of one run into a file that is not there yet, kept when it is the smallest.
template <typename Write>
bool timeInto(double& best, const Write& write) {
  const std::string path = kDirectory + std::to_string(::getpid());
  const double start = bench::processorSeconds();
  const bool good = write(path);
  best = std::min(best, bench::processorSeconds() - start);
  ::unlink(path.c_str());
  return good;
}

// Arguments: channels, bits per sample in the file, conversion.
void BM_WriteTiff(benchmark::State& state) {
  const Image image = makeImage(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                                static_cast<int>(state.range(2)));
  const std::string path = kDirectory + "finished";
  bool good = writeOurs(image, path);
  std::ifstream in(path, std::ios::binary);
  const std::vector<char> finished{std::istreambuf_iterator<char>(in), {}};
  ::unlink(path.c_str());

  double ours = 1e9;
  double plain = 1e9;
  double strips = 1e9;
  double oneStrip = 1e9;
  double cached = 1e9;
  double read = 1e9;
  for ([[maybe_unused]] auto _ : state) {
    double seconds = 1e9;
    good = good && timeInto(seconds, [&](const auto& to) { return writeOurs(image, to); });
    state.SetIterationTime(seconds);
    ours = std::min(ours, seconds);
    good = good && timeInto(plain, [&](const auto& to) { return writePlain(finished, to); }) &&
           timeInto(strips, [&](const auto& to) { return writeLibtiff(image, kMebibyte, to); }) &&
           timeInto(oneStrip, [&](const auto& to) {
             return writeLibtiff(image, std::numeric_limits<std::size_t>::max(), to);
           });
    good = good && timeInto(read, [&](const auto&) { return readAll(image.pixels); }) &&
           timeInto(cached, [&](const auto& to) { return writeFromCache(finished.size(), to); });
    if (!good) return state.SkipWithError("a file could not be written");
  }
  state.counters["per_write"] = ours / plain;
  state.counters["floor_per_write"] = (read + cached) / plain;
  state.counters["per_libtiff_strips"] = ours / strips;
  state.counters["per_libtiff_one_strip"] = ours / oneStrip;
}
BENCHMARK(BM_WriteTiff)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond)
    ->ArgNames({"channels", "bits", "conversion"})
    ->ArgsProduct({{3, 4}, {8, 16, 32}, {0}})
    ->ArgsProduct({{3, 4}, {8}, {1}});

}  // namespace
