// Image description texts in, exposure time and ISO speed out.
#include <gtest/gtest.h>

#include <cstring>

#include "support/tiff_records.h"

namespace {

using namespace build;

constexpr float kOldTime = 9;

ExifInfo record(float exposureTime = kOldTime, uint32_t iso = 7, int valueSource = 5) {
  ExifInfo info;
  std::memset(&info, 0xA5, sizeof info);
  info.exposureTime = exposureTime;
  info.iso = iso;
  info.valueSource = valueSource;
  return info;
}

// Parses `length` bytes of a stream that holds `text` behind three other bytes.
void expectParsed(const std::string& text, int length, int result, const ExifInfo& expected) {
  MemoryStream stream("xyz" + text, 3);
  ExifInfo info = record();
  EXPECT_EQ(parse_image_description(stream.get(), length, &info), result) << text;
  EXPECT_TRUE(bytesOf(info) == bytesOf(expected))
      << text << ": " << info.exposureTime << ", " << info.iso << ", " << info.valueSource;
}

TEST(ImageDescription, GivesExposureAndIso) {
  struct Case {
    std::string items;  // from the seventh on
    int result;
    ExifInfo info;
  };
  const Case cases[] = {
      {"1/125s, R60 G60 B60", 60, record(0.008F, 800, 2)},
      {"1/125s, R60 G60 B60\0\0"s, 60, record(0.008F, 800, 2)},
      {"1/60s, R0 G0 B0", 0, record(1 / 60.0F, 200)},
      {"2s, R10, G40, B25", 25, record(kOldTime, 200)},
      // ISO in steps of 200; one that exceeds 32 bits
      {"2s, R0 G58 B29", 29, record(kOldTime, 200)},
      {"2s, R0 G60 B29", 29, record(kOldTime, 400)},
      {"2s, R90 G91 B90", 90, record(kOldTime, 1600)},
      {"2s, R999999 G999999 B999999", 999999, record(kOldTime, 4294967200U)},
      // exposure times: blanks, full stops, units, several numbers, what is no number
      {"  1/250 s, R30 G30 B30", 30, record(0.004F, 400, 2)},
      {"3.5/2.0.8s, R30 G30 B30", 30, record(0.625F, 400, 2)},
      {"1/ 250s, R30 G30 B30", 30, record(kOldTime, 400)},
      {"s 0 2/8s 5/9s, R30 G30 B30", 30, record(0.25F, 400, 2)},
      {"/3 /5s, R30 G30 B30", 30, record(0, 400)},
      {"/3 1/5s, R30 G30 B30", 30, record(0.125F, 400, 2)},
      {"1/250, R30 G30 B30", 30, record(1 / 2496.0F, 400, 2)},
      {"-1/2s, R30 G30 B30", 30, record(-14.5F, 400)},
      {"\xFF/1s, R30 G30 B30", 30, record(207, 400, 2)},
      {"99998/2s, R30 G30 B99998", 99998, record(49999, 4294967200U, 2)},
      {"99998/2s, R30 G30 B99999", 99999, record(49999, 4294967200U)},
      // six characters are a number, seven end the reading
      {"123456/654321s, R30 G30 B30", 30, record(123456 / 654321.0F, 400)},
      {"1234567s, R30 G30 B30", 0, record()},
      {"1/2s, R1234567 G30 B30", 0, record()},
      {"1/2s, R30 G30 B1234567", 0, record(0.5F, 200)},
      // channels: spread over items, repeated, empty, cut short by the end, missing, too late
      {"1/2s, ,R9,G9.R30.G30 G31,B30, R5", 30, record(0.5F, 400, 2)},
      {"1/2s, R G. B,", 0, record(0.5F, 200)},
      {"1/2s, R30 G30 B", 0, record(0.5F, 200)},
      {"1/2s, R30, G30, x, B99", 30, record()},
      {"1/2s, R-1 G30 B30", 30, record()},
  };
  for (const Case& c : cases) {
    const std::string text = "R1 G1 B1,, 9/9s,1, \0, d.,,e, , f, R2 G2 B2, "s + c.items;
    expectParsed(text, static_cast<int>(text.size()), c.result, c.info);
  }
}

TEST(ImageDescription, ReadsTheTextAnnouncedAndNoMore) {
  const std::string text = "a, b, c, d, e, f, g, 1/2s, R30 G30 B3";
  const int size = static_cast<int>(text.size());
  for (const int length : {0, -1, size + 1, INT32_MAX}) expectParsed(text, length, -1, record());
  expectParsed(text + "0", size, 3, record(0.5F, 200, 2));
  expectParsed("a, b, c, d, e, f, 1/2s, R30 G30 B30", 35, 0, record());
  expectParsed(", b, c, d, e, f, g, 1/2s, R30 G30 B30", 37, 30, record(0.5F, 400, 2));
  expectParsed("1/2s, R30 G30 B30", 17, 0, record());
  expectParsed("x", 1, 0, record());

  // A text longer than the first buffer, and the stream left right behind it.
  const std::string longText = "a, b, c, d, e, f, " + std::string(100000, '.') + ", 1s, R30 G30 B3";
  MemoryStream stream(longText + "Z");
  ExifInfo info = record();
  EXPECT_EQ(parse_image_description(stream.get(), static_cast<int>(longText.size()), &info), 3);
  EXPECT_EQ(std::fgetc(stream.get()), 'Z');
}

}  // namespace
