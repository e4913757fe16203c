// Image description texts in, exposure time and ISO speed out.
#include <gtest/gtest.h>

#include <cstring>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace {

using namespace std::string_literals;

constexpr float kUnset = 9;
constexpr uint32_t kUnsetIso = 7;
constexpr int kUnsetSource = 5;

ExifInfo untouched() {
  ExifInfo info;
  std::memset(&info, 0xA5, sizeof info);
  info.exposureTime = kUnset;
  info.iso = kUnsetIso;
  info.valueSource = kUnsetSource;
  return info;
}

// Parses `text`, announced as `length` bytes, behind three other bytes of the stream.
void expectParsed(const std::string& text, int length, int result, const ExifInfo& expected) {
  build::MemoryStream stream("xyz" + text, 3);
  ExifInfo info = untouched();
  EXPECT_EQ(parse_image_description(stream.get(), length, &info), result) << text;
  EXPECT_EQ(info.exposureTime, expected.exposureTime) << text;
  EXPECT_EQ(info.iso, expected.iso) << text;
  EXPECT_EQ(info.valueSource, expected.valueSource) << text;
  EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0) << text;
}

struct Case {
  std::string items;  // the seventh and later
  int result;
  float exposureTime;
  uint32_t iso;
  int valueSource;
};

TEST(ImageDescription, GivesExposureAndIso) {
  const Case cases[] = {
      {"1/125s, R60 G60 B60", 60, 0.008F, 800, 2},
      {"1/125s, R60 G60 B60\0\0"s, 60, 0.008F, 800, 2},
      {"1/125s, R60 G60 B60, tail", 60, 0.008F, 800, 2},
      {"2s, R60 G60 B60", 60, kUnset, 800, kUnsetSource},
      {"2s, R10, G40, B25", 25, kUnset, 200, kUnsetSource},
      {"1/60s, R0 G0 B0", 0, 1 / 60.0F, 200, kUnsetSource},
      // ISO in steps of 200; one that exceeds 32 bits
      {"2s, B29 R0 G58", 29, kUnset, kUnsetIso, kUnsetSource},
      {"2s, R0 G58 B29", 29, kUnset, 200, kUnsetSource},
      {"2s, R0 G60 B29", 29, kUnset, 400, kUnsetSource},
      {"2s, R59 G59 B59", 59, kUnset, 600, kUnsetSource},
      {"2s, R90 G91 B90", 90, kUnset, 1600, kUnsetSource},
      {"2s, R999999 G999999 B999999", 999999, kUnset, 4294967200U, kUnsetSource},
      // exposure times: blanks, full stops, unit words, several numbers, what is no number
      {"   1/250 s, R30 G30 B30", 30, 0.004F, 400, 2},
      {"0.5s, R30 G30 B30", 30, kUnset, 400, kUnsetSource},
      {"3.5/2.8s, R30 G30 B30", 30, 0.625F, 400, 2},
      {"1/ 250s, R30 G30 B30", 30, kUnset, 400, kUnsetSource},
      {"1/s250, R30 G30 B30", 30, kUnset, 400, kUnsetSource},
      {"s 0 2/8s 5/9s, R30 G30 B30", 30, 0.25F, 400, 2},
      {"0/250s, R30 G30 B30", 30, 0, 400, kUnsetSource},
      {"/3 /5s, R30 G30 B30", 30, 0, 400, kUnsetSource},
      {"/3 1/5s, R30 G30 B30", 30, 0.125F, 400, 2},
      {"1/250, R30 G30 B30", 30, 1 / 2496.0F, 400, 2},
      {"-1/2s, R30 G30 B30", 30, -14.5F, 400, kUnsetSource},
      {"\xFF/1s, R30 G30 B30", 30, 207, 400, 2},
      {"99999/2s, R30 G30 B30", 30, 49999.5F, 400, kUnsetSource},
      {"99998/2s, R30 G30 B99998", 99998, 49999, 4294967200U, 2},
      {"99998/2s, R30 G30 B99999", 99999, 49999, 4294967200U, kUnsetSource},
      // six characters are a number, seven end the reading
      {"123456/654321s, R30 G30 B30", 30, 123456 / 654321.0F, 400, kUnsetSource},
      {"1234567s, R30 G30 B30", 0, kUnset, kUnsetIso, kUnsetSource},
      {"1/1234567s, R30 G30 B30", 0, kUnset, kUnsetIso, kUnsetSource},
      {"1/2s, R1234567 G30 B30", 0, kUnset, kUnsetIso, kUnsetSource},
      {"1/2s, R30 G30 B1234567", 0, 0.5F, 200, kUnsetSource},
      // channels: spread over items, repeated, empty, cut short by the end, beyond the last item
      {"1/2s, x, G5.R30.G30, B30", 30, 0.5F, 400, 2},
      {"1/2s, ,R30,G30 G31,B30", 30, 0.5F, 400, 2},
      {"1/2s, R G. B,", 0, 0.5F, 200, kUnsetSource},
      {"1/2s, R30 G30 B", 0, 0.5F, 200, kUnsetSource},
      {"1/2s, R30 B30 G30", 30, kUnset, kUnsetIso, kUnsetSource},
      {"1/2s, R30, G40", 40, kUnset, kUnsetIso, kUnsetSource},
      {"1/2s, R30, G30, x, B99", 30, kUnset, kUnsetIso, kUnsetSource},
      {"1/2s, R-1 G30 B30", 30, kUnset, kUnsetIso, kUnsetSource},
      // texts that end early
      {"1/125s", 0, kUnset, kUnsetIso, kUnsetSource},
      {"1/", 0, kUnset, kUnsetIso, kUnsetSource},
      {"", 0, kUnset, kUnsetIso, kUnsetSource},
  };
  for (const Case& c : cases) {
    ExifInfo expected = untouched();
    expected.exposureTime = c.exposureTime;
    expected.iso = c.iso;
    expected.valueSource = c.valueSource;
    const std::string text = "R1 G1 B1,, 9/9s,1, \0, d.,,e, , f, R2 G2 B2, "s + c.items;
    expectParsed(text, static_cast<int>(text.size()), c.result, expected);
  }
}

TEST(ImageDescription, ReadsTheTextAnnouncedAndNoMore) {
  const std::string text = "a, b, c, d, e, f, g, 1/2s, R30 G30 B3";
  const int size = static_cast<int>(text.size());
  expectParsed(text, 0, -1, untouched());
  expectParsed(text, -1, -1, untouched());
  expectParsed(text, size + 1, -1, untouched());
  expectParsed(text, INT32_MAX, -1, untouched());
  // Without the last items, and with the last number cut short.
  expectParsed("a, b, c, d, e, f, 1/2s, R30 G30 B30", 35, 0, untouched());
  ExifInfo expected = untouched();
  expected.exposureTime = 0.5F;
  expected.iso = 200;
  expected.valueSource = 2;
  expectParsed(text + "0", size, 3, expected);

  // A long text, and the stream left right behind it.
  const std::string longText = std::string(100000, '.') + text;
  build::MemoryStream stream(longText + "Z");
  ExifInfo info = untouched();
  EXPECT_EQ(parse_image_description(stream.get(), static_cast<int>(longText.size()), &info), 3);
  EXPECT_EQ(std::fgetc(stream.get()), 'Z');
}

}  // namespace
