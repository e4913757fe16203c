// The HDR wing: known pixels, then every road against the pixel-by-pixel definition.
#include <gtest/gtest.h>

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
  Image(int columns, int rows)
      : width(columns), height(rows), bytes(static_cast<size_t>(4 * columns * rows)) {}

  void set(int x, int y, const Pixel& pixel) {
    for (int plane = 0; plane < 4; ++plane) {
      bytes[static_cast<size_t>((4 * y + plane) * width + x)] = pixel[static_cast<size_t>(plane)];
    }
  }

  int width;
  int height;
  std::vector<uint8_t> bytes;
};

std::array<uint64_t, 4> bitsOf(const Brightness& b) {
  return {std::bit_cast<uint32_t>(b.minimum), std::bit_cast<uint32_t>(b.maximum),
          std::bit_cast<uint64_t>(b.sum), b.count};
}

void expectSameBits(const Image& image, const char* what) {
  std::array<float, 256> powers;
  fillPowers(powers.data());
  Brightness inOrder;
  const auto width = static_cast<size_t>(image.width);
  addInOrder({image.bytes.data(), width}, width, static_cast<size_t>(image.height), powers.data(),
             inOrder);
  for (const BlockTotalsFunction road : {blockTotalsSse2, blockTotalsAvx2}) {
    if (road == blockTotalsAvx2 && !__builtin_cpu_supports("avx2")) continue;
    const Brightness measured =
        measureImage(image.width, image.height, image.bytes.data(), powers.data(), road);
    ASSERT_EQ(bitsOf(measured), bitsOf(inOrder))
        << what << ", " << image.width << " x " << image.height
        << (road == blockTotalsAvx2 ? ", AVX2" : ", SSE2");
  }
}

TEST(HdrMinMax, MeasuresKnownPixels) {
  constexpr float kNone = 1e11F;
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  struct Case {
    const char* what;
    std::vector<Pixel> pixels;
    std::array<float, 3> result;
  };
  const Case cases[] = {
      {"exponent 0", {{255, 255, 255, 0}, {1, 2, 3, 0}}, {kNone, 0, 0}},
      {"full mantissas", {{255, 255, 255, 128}}, {255, 255, 255}},
      {"each weight", {{255, 0, 0, 128}, {0, 255, 0, 129}, {0, 0, 255, 128}}, {18, 364, 145}},
      {"rounded down", {{128, 64, 10, 128}, {130, 64, 11, 128}}, {57, 57, 57}},
      {"black counts for the mean", {{0, 0, 0, 200}, {255, 255, 255, 129}}, {510, 510, 255}},
      {"all black", {{0, 0, 0, 200}, {1, 0, 0, 255}}, {kNone, 0, 0}},
      {"lowest exponent", {{255, 255, 255, 1}}, {0x1.FEp-120F, 0x1.FEp-120F, 0x1.FEp-120F}},
      {"smallest product", {{14, 0, 0, 1}}, {0x1p-127F, 0x1p-127F, 0x1p-127F}},
      {"above the minimum's start", {{255, 255, 255, 200}}, {kNone, 0x1.FEp79F, 0x1.FEp79F}},
      {"largest exponent", {{14, 0, 0, 255}}, {kNone, 0x1p127F, 0x1p127F}},
      {"overflow", {{27, 0, 0, 255}, {255, 255, 255, 128}}, {255, kInfinity, kInfinity}},
  };
  for (const Case& c : cases) {
    Image image(static_cast<int>(c.pixels.size()), 1);
    for (int x = 0; x < image.width; ++x) image.set(x, 0, c.pixels[static_cast<size_t>(x)]);
    std::array<float, 3> result;
    EXPECT_EQ(hdrMinMax(image.width, 1, image.bytes.data(), result.data()), 1) << c.what;
    EXPECT_EQ(result, c.result) << c.what;
  }
  const std::array<int, 3> empty[] = {{0, 3, 3}, {-4, 3, 3}, {4, 0, 0}, {4, -3, 0}, {-1, -1, 0}};
  for (const auto& [width, height, returned] : empty) {
    std::array<float, 3> result;
    EXPECT_EQ(hdrMinMax(width, height, nullptr, result.data()), returned);
    EXPECT_EQ(result, (std::array{kNone, 0.0F, 0.0F})) << width << " x " << height;
  }
  // 2^24 + 1 pixels become 2^24.
  EXPECT_EQ((Brightness{.sum = 0x1p24, .count = (1 << 24) + 1}.mean()), 1.0F);
}

TEST(HdrMinMax, GivesTheBitsOfTheDefinition) {
  struct Exponents {
    const char* what;
    int lowest;
    int highest;
    int drift;  // the range moves by up to this many from row to row
  };
  const Exponents kinds[] = {
      {"twelve stops", 120, 131, 0},    {"widest in integers", 100, 123, 0},
      {"one too wide", 100, 124, 0},    {"subnormal", 1, 8, 0},
      {"highest base", 224, 247, 0},    {"beyond it", 225, 248, 0},
      {"overflow", 240, 255, 0},        {"every exponent", 0, 255, 0},
      {"drifting narrow", 110, 114, 9}, {"drifting wide", 60, 70, 60},
  };
  std::mt19937 random(7);
  const auto upTo = [&](int most) { return static_cast<int>(random() % (1U + unsigned(most))); };
  const auto check = [&](const Exponents& kind, int width, int height, bool hasZeros) {
    Image image(width, height);
    for (int y = 0; y < height; ++y) {
      const int lowest = kind.lowest + upTo(kind.drift);
      const bool isEmpty = hasZeros && upTo(3) == 0;
      for (int x = 0; x < width; ++x) {
        const int exponent = lowest + upTo(kind.highest - kind.lowest);
        Pixel pixel;
        for (uint8_t& byte : pixel) byte = static_cast<uint8_t>(upTo(9) == 0 ? 0 : random());
        pixel[3] = static_cast<uint8_t>(isEmpty || (hasZeros && upTo(5) == 0) ? 0 : exponent);
        image.set(x, y, pixel);
      }
    }
    expectSameBits(image, kind.what);
  };
  for (const Exponents& kind : kinds) {
    for (int width = 0; width <= 130; ++width) check(kind, width, 5, width % 2 == 1);
    for (const int width : {1023, 1024, 1025, 1130, 2100}) check(kind, width, 9, width == 1025);
  }
}

TEST(HdrMinMax, FindsTheExtremesInEveryLane) {
  const int width = 4 * kBlockPixels + 7;
  for (int x = 0; x < width; ++x) {
    Image image(width, 1);
    for (int other = 0; other < width; ++other) image.set(other, 0, {100, 100, 100, 130});
    image.set(x, 0, {255, 255, 255, 150});
    image.set((x + 1) % width, 0, {14, 0, 0, 127});
    expectSameBits(image, "extremes");
    std::array<float, 3> result;
    hdrMinMax(width, 1, image.bytes.data(), result.data());
    EXPECT_EQ(result[0], 0.5F) << x;
    EXPECT_EQ(result[1], 255 * 0x1p22F) << x;
  }
}

TEST(HdrMinMax, RoundsTheSumAsInPixelOrder) {
  // The first two pixels put the mean halfway between two floats. Each later one is half the sum's
  // last bit: added in order it is lost, and the mean rounds down; added to others first it counts.
  Image image(128, 3);
  image.set(0, 0, {128, 128, 128, 200});
  image.set(127, 0, {128, 128, 128, 176});
  for (int x = 1; x < 127; ++x) image.set(x, 2, {128, 128, 128, 147});
  expectSameBits(image, "halves");
  std::array<float, 3> result;
  hdrMinMax(128, 3, image.bytes.data(), result.data());
  EXPECT_EQ(result[2], 0x1p72F);

  // The sum reaches 2^53 times its lowest bit within one stretch, at every distance.
  for (uint8_t exponent = 170; exponent <= 182; ++exponent) {
    Image stretch(2048, 1);
    for (int x = 0; x < 2048; ++x) {
      stretch.set(x, 0, {255, 255, static_cast<uint8_t>(x % 7 + 200), exponent});
    }
    stretch.set(0, 0, {27, 0, 0, 139});
    stretch.set(3, 0, {14, 0, 0, 138});
    for (int x = 4; x < 1024; ++x) stretch.set(x, 0, {1, 0, 0, 0});
    expectSameBits(stretch, "outgrown");
  }
}

}  // namespace
