// Number texts against the C library's printf and scanf in the "C" locale.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <vector>

#include "base/number_text.h"

namespace {

using namespace lumenforge;
using namespace std::string_literals;

std::string print(const char* format, double value) {
  char text[200];
  return {text, text + std::snprintf(text, sizeof text, format, value)};
}

void expectAsScanf(const std::string& text) {
  float expected = 0;
  int length = 0;
  if (std::sscanf(text.c_str(), "%f%n", &expected, &length) != 1) expected = 0, length = 0;
  const std::vector<char> copy(text.begin(), text.end());
  const ParsedFloat parsed = parseFloat({copy.data(), copy.size()});
  ASSERT_EQ(parsed.length, static_cast<std::size_t>(length)) << '"' << text << '"';
  ASSERT_EQ(std::bit_cast<uint32_t>(parsed.value), std::bit_cast<uint32_t>(expected)) << text;
}

TEST(NumberText, ParsesAsScanfDoes) {
  const char* const pieces[] = {
      " ", "\t\n", "\v\f\r", "+",  "-",  "0",  "00",   "1",    "7",         "16777217",     ".",
      "e", "E",    "p",      "x",  "0x", "0X", "inf",  "INFI", "nity",      "nan",          "(",
      ",", "a",    "F",      "38", "45", "99", "9999", "1e",   "3.4028236", "000000000001", "5"};
  std::mt19937 random(1);
  for (int i = 0; i < 300'000 && !testing::Test::HasFatalFailure(); ++i) {
    std::string text;
    for (auto n = random() % 7; n > 0; --n) text += pieces[random() % std::size(pieces)];
    expectAsScanf(text);
  }
  // The ends of the range, and what is rounded there.
  const std::string zeros(500, '0');
  for (const std::string& text :
       {"3.4028235677973366e38"s, "3.4028235677973365e38"s, "7.0064923216240853e-46"s, "7.0064923216240854e-46"s,
        "-1e-99999999999999999999"s, "-1e99999999999999999999"s, "0e99999"s, "18446744073709551621"s, "0x1p128"s,
        "0.00000000001"s, "0x0.8p129"s, "0x1p-150"s, "0x1.8p-150"s, "0x.000000001p-119"s, "0." + zeros + "1e501",
        "1" + zeros + "e-500", "1" + zeros + "e-400", "0." + zeros + "1e400"})
    expectAsScanf(text);
}

TEST(NumberText, FormatsAsPrintfDoes) {
  std::mt19937 random(3);
  std::vector<float> values{0.0F,      -0.0F, 1e9F, -999999936.0F, 3.4028235e38F, 1e-45F, INFINITY,
                            -INFINITY, NAN,   -NAN, 0.05F,         0.95F,         -0.04F, 0.0000005F};
  for (int i = -400; i <= 400; ++i) values.push_back(static_cast<float>(i) / 16);  // with all ties
  for (int i = 0; i < 80'000; ++i) {
    values.push_back(std::bit_cast<float>(static_cast<uint32_t>(random())));
    values.push_back(static_cast<float>(static_cast<int>(random())) / 1024);
  }
  for (const float value : values) {
    for (const auto& [decimals, format] : {std::pair(1, "%.1f"), {3, "%.3f"}, {6, "%.6f"}}) {
      char text[kFixedTextSize];
      ASSERT_EQ(std::string(text, formatFixed(value, decimals, text)), print(format, value));
    }
  }
}

}  // namespace
