// Measuring an HDR image against a plain vectorised read of the same memory, and against the loop
// that adds pixel by pixel. Each benchmark runs the three in turn; "per_read" and "per_loop" are
// ratios of the smallest times.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "LumenforgeMetaLib.h"
#include "hdr/brightness.h"

namespace {

using namespace lumenforge;

constexpr int kAvx2 = 0;
constexpr int kSse2 = 1;

struct Image {
  int width;
  int height;
  std::vector<uint8_t> bytes;
};

// Mantissas at random; exponents from `lowest` to `highest`, at random or as a gradient along the
// row. Widths are no multiple of anything, as a cropped picture's.
Image makeImage(double megapixels, int lowest, int highest, int width = 0) {
  Image image;
  image.width = width > 0 ? width : megapixels < 1 ? 611 : megapixels < 50 ? 6011 : 12251;
  image.height = static_cast<int>(megapixels * 1e6) / image.width;
  const auto pixels = static_cast<size_t>(image.width);
  image.bytes.resize(4 * pixels * static_cast<size_t>(image.height));
  std::mt19937_64 random(42);
  const auto span = static_cast<uint64_t>(highest - lowest + 1);
  for (size_t at = 0; at < image.bytes.size(); ++at) {
    const bool isExponent = at / pixels % 4 == 3;
    const uint64_t number = random() >> 32;
    image.bytes[at] =
        static_cast<uint8_t>(isExponent ? static_cast<uint64_t>(lowest) + number % span : number);
  }
  return image;
}

[[gnu::target("avx2")]] uint64_t readMemory(const uint8_t* data, size_t size) {
  __m256i sums[4] = {};
  for (size_t at = 0; at + 128 <= size; at += 128) {
    for (size_t i = 0; i < 4; ++i) {
      const auto* bytes = reinterpret_cast<const __m256i*>(data + at + 32 * i);
      sums[i] = _mm256_add_epi64(sums[i], _mm256_loadu_si256(bytes));
    }
  }
  sums[0] = _mm256_add_epi64(_mm256_add_epi64(sums[0], sums[1]), sums[2]);
  return static_cast<uint64_t>(_mm256_extract_epi64(_mm256_add_epi64(sums[0], sums[3]), 0));
}

void literalLoop(const Image& image, float* result) {
  auto powers = std::make_unique<float[]>(256);
  for (int e = 0; e < 256; ++e) powers[static_cast<size_t>(e)] = std::ldexp(1.0F, e - 128);
  const auto width = static_cast<size_t>(image.width);
  float minimum = 1e11F;
  float maximum = 0;
  double sum = 0;
  uint64_t count = 0;
  const uint8_t* row = image.bytes.data();
  for (int y = 0; y < image.height; ++y, row += 4 * width) {
    for (size_t x = 0; x < width; ++x) {
      const uint8_t exponent = row[3 * width + x];
      if (exponent == 0) continue;
      const int m = (19 * row[x] + 183 * row[width + x] + 54 * row[2 * width + x]) >> 8;
      const float value = static_cast<float>(m) * powers[exponent];
      maximum = maximum > value ? maximum : value;
      if (value > 0) minimum = minimum < value ? minimum : value;
      sum += static_cast<double>(value);
      ++count;
    }
  }
  result[0] = minimum;
  result[1] = maximum;
  result[2] =
      count == 0 ? 0 : static_cast<float>(sum / static_cast<double>(static_cast<float>(count)));
}

void measure(const Image& image, int road, float* result) {
  if (road == kAvx2) {
    hdrMinMax(image.width, image.height, image.bytes.data(), result);
    return;
  }
  double powers[256];
  fillPowers(powers);
  const Brightness b =
      measureImage(image.width, image.height, image.bytes.data(), powers, blockTotalsSse2);
  result[0] = toFloat(b.minimum);
  result[1] = toFloat(b.maximum);
  result[2] = toFloat(b.mean());
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void run(benchmark::State& state, const Image& image, int road) {
  if (!__builtin_cpu_supports("avx2")) return state.SkipWithError("needs AVX2");
  float result[3];
  float expected[3];
  double read = 1e9;
  double loop = 1e9;
  double best = 1e9;
  for ([[maybe_unused]] auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(readMemory(image.bytes.data(), image.bytes.size()));
    read = std::min(read, secondsSince(start));
    start = std::chrono::steady_clock::now();
    measure(image, road, result);
    const double seconds = secondsSince(start);
    state.SetIterationTime(seconds);
    best = std::min(best, seconds);
    start = std::chrono::steady_clock::now();
    literalLoop(image, expected);
    loop = std::min(loop, secondsSince(start));
    if (!std::equal(result, result + 3, expected)) return state.SkipWithError("results differ");
  }
  state.counters["per_read"] = best / read;
  state.counters["per_loop"] = best / loop;
  state.counters["loop_per_read"] = loop / read;
  state.counters["read_GB_per_s"] = static_cast<double>(image.bytes.size()) / read * 1e-9;
}

// Arguments: road, megapixels, lowest and highest exponent.
void BM_Exponents(benchmark::State& state) {
  run(state,
      makeImage(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)),
                static_cast<int>(state.range(3))),
      static_cast<int>(state.range(0)));
}
BENCHMARK(BM_Exponents)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond)
    ->ArgNames({"sse2", "Mpx", "from", "to"})
    ->ArgsProduct({{kAvx2, kSse2}, {24, 100}, {122}, {133, 135, 141}})
    ->ArgsProduct({{kAvx2, kSse2}, {24}, {0, 1}, {248, 255}});

// A picture that the processor's cache holds. Arguments: road, width, lowest and highest exponent.
void BM_InCache(benchmark::State& state) {
  run(state,
      makeImage(0.3, static_cast<int>(state.range(2)), static_cast<int>(state.range(3)),
                static_cast<int>(state.range(1))),
      static_cast<int>(state.range(0)));
}
BENCHMARK(BM_InCache)
    ->UseManualTime()
    ->Iterations(500)
    ->Unit(benchmark::kMicrosecond)
    ->ArgNames({"sse2", "width", "from", "to"})
    ->ArgsProduct({{kAvx2, kSse2}, {611, 640, 6011}, {122}, {133}})
    ->ArgsProduct({{kAvx2}, {611, 640}, {1}, {255}});

// Narrow rows, where the work per stretch weighs most. Arguments: road, width, highest exponent.
void BM_Narrow(benchmark::State& state) {
  run(state, makeImage(24, 122, static_cast<int>(state.range(2)), static_cast<int>(state.range(1))),
      static_cast<int>(state.range(0)));
}
BENCHMARK(BM_Narrow)
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond)
    ->ArgNames({"sse2", "width", "to"})
    ->ArgsProduct({{kAvx2, kSse2}, {1, 31, 33, 64, 95, 128, 300}, {135, 248}});

}  // namespace
