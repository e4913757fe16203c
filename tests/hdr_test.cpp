// The HDR wing: known pixels, then every road against the pixel-by-pixel definition.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <array>
#include <bit>
#include <random>
#include <vector>

#include "LumenforgeMetaLib.h"
#include "hdr/brightness.h"

namespace {

using namespace lumenforge;

using Pixel = std::array<uint8_t, 4>;  // mantissas, exponent

struct Image {
  void set(size_t x, size_t y, const Pixel& pixel) {
    for (size_t plane = 0; plane < 4; ++plane) bytes[(4 * y + plane) * width + x] = pixel[plane];
  }

  size_t width;
  size_t height;
  std::vector<uint8_t> bytes = std::vector<uint8_t>(4 * width * height);
};

std::array<uint64_t, 4> bitsOf(const Brightness& b) {
  return {std::bit_cast<uint64_t>(b.minimum), std::bit_cast<uint64_t>(b.maximum), std::bit_cast<uint64_t>(b.sum),
          b.count};
}

// As in a host that has subnormal numbers taken for zero.
template <typename Function>
auto withoutSubnormals(const Function& function) {
  constexpr unsigned kFlushToZero = 0x8000, kSubnormalsAreZero = 0x40;
  const unsigned mode = _mm_getcsr();
  _mm_setcsr(mode | kFlushToZero | kSubnormalsAreZero);
  const auto result = function();
  _mm_setcsr(mode);
  return result;
}

void expectSameBits(const Image& image, int lowestExponent) {
  std::array<double, 256> powers;
  fillPowers(powers.data());
  Brightness inOrder;
  for (size_t y = 0; y < image.height; ++y) {
    const uint8_t* row = image.bytes.data() + 4 * image.width * y;
    addInOrder({row, image.width}, image.width, 1, powers.data(), inOrder);
  }
  for (const bool isAvx2 : {false, true}) {
    if (isAvx2 && !__builtin_cpu_supports("avx2")) continue;
    const auto measured = withoutSubnormals([&] {
      return measureImage(int(image.width), int(image.height), image.bytes.data(), powers.data(),
                          isAvx2 ? blockTotalsAvx2 : blockTotalsSse2);
    });
    ASSERT_EQ(bitsOf(measured), bitsOf(inOrder))
        << "width " << image.width << ", exponents from " << lowestExponent << (isAvx2 ? ", AVX2" : ", SSE2");
  }
}

// What hdrMinMax gives for one row, whether or not there are subnormal numbers.
std::array<float, 3> measureRow(const std::vector<Pixel>& pixels) {
  Image image{pixels.size(), 1};
  for (size_t x = 0; x < image.width; ++x) image.set(x, 0, pixels[x]);
  std::array<float, 3> result, flushed;
  EXPECT_EQ(hdrMinMax(int(image.width), 1, image.bytes.data(), result.data()), 1);
  withoutSubnormals([&] { return hdrMinMax(int(image.width), 1, image.bytes.data(), flushed.data()); });
  EXPECT_EQ(flushed, result);
  return result;
}

TEST(HdrMinMax, MeasuresKnownPixels) {
  using Result = std::array<float, 3>;
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(measureRow({{255, 255, 255, 0}, {1, 2, 3, 0}}), (Result{1e11F, 0, 0}));
  EXPECT_EQ(measureRow({{255, 0, 0, 128}, {0, 255, 0, 129}, {0, 0, 255, 128}}), (Result{18, 364, 145}));
  EXPECT_EQ(measureRow({{128, 64, 10, 128}, {130, 64, 11, 128}}), (Result{57, 57, 57}));
  EXPECT_EQ(measureRow({{0, 0, 0, 200}, {255, 255, 255, 129}}), (Result{510, 510, 255}));
  EXPECT_EQ(measureRow({{0, 0, 0, 200}, {1, 0, 0, 255}}), (Result{1e11F, 0, 0}));
  EXPECT_EQ(measureRow({{14, 0, 0, 1}}), (Result{0x1p-127F, 0x1p-127F, 0x1p-127F}));
  EXPECT_EQ(measureRow({{28, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 9}}),
            (Result{0x1p-126F, 0x1p-126F, static_cast<float>(0x1p-126 / 3)}));
  EXPECT_EQ(measureRow({{14, 0, 0, 255}}), (Result{1e11F, 0x1p127F, 0x1p127F}));
  EXPECT_EQ(measureRow({{27, 0, 0, 255}, {255, 255, 255, 128}}), (Result{255, kInfinity, kInfinity}));
  EXPECT_EQ(measureRow(std::vector<Pixel>(256, {14, 0, 0, 128})), (Result{1, 1, 1}));
  for (const auto& [width, height, returned] : {std::array{0, 3, 3}, {-4, 3, 3}, {4, 0, 0}, {4, -1, 0}}) {
    Result result;
    EXPECT_EQ(hdrMinMax(width, height, nullptr, result.data()), returned);
    EXPECT_EQ(result, (Result{1e11F, 0, 0}));
  }
  // 2^24 + 1 pixels become 2^24.
  EXPECT_EQ((Brightness{.sum = 0x1p24, .count = (1 << 24) + 1}.mean()), 1.0F);
}

TEST(HdrMinMax, GivesTheBitsOfTheDefinition) {
  std::mt19937 random(7);
  const auto below = [&](size_t end) { return random() % end; };
  // Lowest exponent, how many of them, and how far the range may move from row to row: ordinary
  // images, the widest that are integers and one wider, the lowest and the highest exponents, all
  // of them, rows in which the sum outgrows the unit.
  const std::array<size_t, 3> kinds[] = {{120, 12, 1}, {100, 24, 1}, {100, 25, 1}, {1, 8, 1},    {224, 24, 1},
                                         {225, 24, 1}, {240, 16, 1}, {0, 256, 1},  {110, 5, 10}, {60, 11, 61}};
  for (const auto& [lowest, count, drift] : kinds) {
    for (size_t width = 0; width <= 2100; width += width <= 130 ? 1 : 197) {
      Image image{width, 6};
      for (size_t y = 0; y < image.height; ++y) {
        const size_t rowLowest = lowest + below(drift);
        const size_t zeros = width % 2 == 0 ? 0 : below(4);  // of three exponents
        const bool isBlack = below(10) == 0;
        for (size_t x = 0; x < width; ++x) {
          Pixel pixel;
          for (uint8_t& byte : pixel) byte = static_cast<uint8_t>(isBlack ? 0 : random());
          const bool isZero = below(3) < zeros;
          pixel[3] = static_cast<uint8_t>(isZero ? 0 : rowLowest + below(count));
          image.set(x, y, pixel);
        }
      }
      expectSameBits(image, static_cast<int>(lowest));
    }
  }
}

TEST(HdrMinMax, RoundsTheSumAsInPixelOrder) {
  // The first two pixels put the mean halfway between two floats. Each later one is half the sum's
  // last bit: added in order it is lost, and the mean rounds down; added to others first it counts.
  Image image{128, 3};
  image.set(0, 0, {128, 128, 128, 200});
  image.set(127, 0, {128, 128, 128, 176});
  for (size_t x = 1; x < 127; ++x) image.set(x, 2, {14, 0, 0, 154});
  expectSameBits(image, 154);
  std::array<float, 3> result;
  hdrMinMax(128, 3, image.bytes.data(), result.data());
  EXPECT_EQ(result[2], 0x1p72F);
}

}  // namespace
