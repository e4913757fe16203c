// Image description texts in, exposure time and ISO speed out.
#include "support/told_records.h"

namespace {

using namespace build;

// Of `length` bytes of a stream that holds `text` behind three other bytes, added to a record that has values already.
std::string parsed(const std::string& text, int length) {
  MemoryStream stream("xyz" + text, 3);
  return outcomeOf([&](ExifInfo* info) {
    init_exifInfo(info);
    info->exposureTime = 9;
    info->iso = 7;
    info->valueSource = 5;
    return parse_image_description(stream.get(), length, info);
  });
}

const std::string kNothing = " source=5 t=9 iso=7";

TEST(ImageDescription, GivesExposureAndIso) {
  // The items from the seventh on, and what they give.
  const std::pair<std::string, std::string> cases[] = {
      {"1/125s, R60 G60 B60", "60 source=2 t=0.008 iso=800"},
      {"1/125s, R60 G60 B60\0\0"s, "60 source=2 t=0.008 iso=800"},
      {"1/60s, R0 G0 B0", "0 source=5 t=0.016666668 iso=200"},
      {"2s, R10, G40, B25", "25 source=5 t=9 iso=200"},
      // ISO in steps of 200; one that exceeds 32 bits
      {"2s, R0 G58 B29", "29 source=5 t=9 iso=200"},
      {"2s, R0 G60 B29", "29 source=5 t=9 iso=400"},
      {"2s, R90 G91 B90", "90 source=5 t=9 iso=1600"},
      {"2s, R999999 G999999 B999999", "999999 source=5 t=9 iso=4294967200"},
      // exposure times: blanks, full stops, units, several numbers, what is no number
      {"  1/250 s, R30 G30 B30", "30 source=2 t=0.004 iso=400"},
      {"3.5/2.0.8s, R30 G30 B30", "30 source=2 t=0.625 iso=400"},
      {"1/ 250s, R30 G30 B30", "30 source=5 t=9 iso=400"},
      {"s 0 2/8s 5/9s, R30 G30 B30", "30 source=2 t=0.25 iso=400"},
      {"/3 /5s, R30 G30 B30", "30 source=5 iso=400"},
      {"/3 1/5s, R30 G30 B30", "30 source=2 t=0.125 iso=400"},
      {"1/250, R30 G30 B30", "30 source=2 t=0.00040064103 iso=400"},
      {"-1/2s, R30 G30 B30", "30 source=5 t=-14.5 iso=400"},
      {"\xFF/1s, R30 G30 B30", "30 source=2 t=207 iso=400"},
      {"99998/2s, R30 G30 B99998", "99998 source=2 t=49999 iso=4294967200"},
      {"99998/2s, R30 G30 B99999", "99999 source=5 t=49999 iso=4294967200"},
      // six characters are a number, seven end the reading
      {"123456/654321s, R30 G30 B30", "30 source=5 t=0.18867804 iso=400"},
      {"1234567s, R30 G30 B30", "0" + kNothing},
      {"1/2s, R1234567 G30 B30", "0" + kNothing},
      {"1/2s, R30 G30 B1234567", "0 source=5 t=0.5 iso=200"},
      // channels: spread over items, repeated, empty, cut short by the end, missing, too late
      {"1/2s, ,R9,G9.R30.G30 G31,B30, R5", "30 source=2 t=0.5 iso=400"},
      {"1/2s, R G. B,", "0 source=5 t=0.5 iso=200"},
      {"1/2s, R30 G30 B", "0 source=5 t=0.5 iso=200"},
      {"1/2s, R30, G30, x, B99", "30" + kNothing},
      {"1/2s, R-1 G30 B30", "30" + kNothing},
  };
  for (const auto& [items, outcome] : cases) {
    const std::string text = "R1 G1 B1,, 9/9s,1, \0, d.,,e, , f, R2 G2 B2, "s + items;
    EXPECT_EQ(parsed(text, static_cast<int>(text.size())), outcome) << items;
  }
}

TEST(ImageDescription, ReadsTheTextAnnouncedAndNoMore) {
  const std::string text = "a, b, c, d, e, f, g, 1/2s, R30 G30 B3";
  const int size = static_cast<int>(text.size());
  for (const int length : {0, -1, size + 1, INT32_MAX}) EXPECT_EQ(parsed(text, length), "-1" + kNothing);
  EXPECT_EQ(parsed(text + "0", size), "3 source=2 t=0.5 iso=200");
  EXPECT_EQ(parsed("a, b, c, d, e, f, 1/2s, R30 G30 B30", 35), "0" + kNothing);
  EXPECT_EQ(parsed(", b, c, d, e, f, g, 1/2s, R30 G30 B30", 37), "30 source=2 t=0.5 iso=400");
  EXPECT_EQ(parsed("1/2s, R30 G30 B30", 17), "0" + kNothing);
  EXPECT_EQ(parsed("x", 1), "0" + kNothing);

  // A text longer than the first buffer, and the stream left right behind it.
  const std::string longText = "a, b, c, d, e, f, " + std::string(100000, '.') + ", 1s, R30 G30 B3";
  MemoryStream stream(longText + "Z");
  ExifInfo info{};
  EXPECT_EQ(parse_image_description(stream.get(), static_cast<int>(longText.size()), &info), 3);
  EXPECT_EQ(std::fgetc(stream.get()), 'Z');
}

}  // namespace
