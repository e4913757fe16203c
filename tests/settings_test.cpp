// The settings wing: packets written byte for byte, read back, spliced, and kept in files.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <climits>
#include <clocale>
#include <random>
#include <sstream>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace {

using namespace std::string_literals;
using Params = std::array<float, kSettingsParamsSlots>;

// The method's defaults, some slots changed: "slot:value slot:value".
Params record(int method, const std::string& changes = "") {
  Params params;
  params.fill(-1);
  EXPECT_EQ(def_param(method, params.data()), 0);
  const char* text = changes.c_str();
  float value = 0;
  for (int n = 0, slot = 0; std::sscanf(text, "%d:%f%n", &slot, &value, &n) == 2; text += n)
    params[static_cast<std::size_t>(slot)] = value;
  return params;
}

// The text, until the next call, where memory ends behind it: a step beyond it ends the test.
unsigned char* guarded(const std::string& text) {
  constexpr std::size_t kRoom = 1 << 16;
  static void* const memory = mmap(nullptr, 2 * kRoom, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* const end = static_cast<unsigned char*>(memory) + kRoom;
  mprotect(end, kRoom, PROT_NONE);
  return static_cast<unsigned char*>(std::memcpy(end - text.size(), text.data(), text.size()));
}

int settingsOf(const std::string& text, int selector, Params& params, char* lens = nullptr) {
  return get_settings_from_xmp(selector, static_cast<int>(text.size()), guarded(text), lens, params.data());
}

std::string written(int setNumber, int method, const Params& params, const char* lens = nullptr) {
  const int length = embed_xmp(0, method, params.data(), lens != nullptr, lens, nullptr) + (setNumber > 99 ? 1 : 0);
  auto* const out = reinterpret_cast<char*>(guarded(std::string(static_cast<std::size_t>(length), '#')));
  EXPECT_EQ(embed_xmp(setNumber, method, params.data(), lens != nullptr, lens, out), length);
  return {out, out + length};
}

// "Name value|Name value|" as elements, one a line.
std::string elements(const std::string& list) {
  std::string lines, name, value;
  for (std::istringstream in(list); in >> name && std::getline(in.ignore(), value, '|');)
    lines += "<lfst:" + name + ">" + value + "</lfst:" + name + ">\n";
  return lines;
}

const std::string kDeclaration = "xmlns:lfst='http://ns.lumenforge.org/";
const std::string kHead = kDeclaration + "lumenforge_settings01'>\n";
const std::string kSigns = "~@%^&";
const std::string kMeanings[] = {"\0"s, kDeclaration, "xmlns:aux=\"http://ns.adobe.com/exif/1.0/aux",
                                 std::string(63, 'L'), "Method Details Enhancer|"};

// Rows of so many cells, each before a semicolon; a sign stands for its meaning.
std::vector<std::vector<std::string>> table(std::size_t cells, const std::string& text) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream in(text);
  for (std::string cell; std::getline(in >> std::ws, cell, ';'); rows.back().push_back(cell)) {
    if (rows.empty() || rows.back().size() == cells) rows.emplace_back();
    for (std::size_t at = 0; (at = cell.find_first_of(kSigns, at)) != std::string::npos; ++at)
      cell.replace(at, 1, kMeanings[kSigns.find(cell[at])]);
  }
  return rows;
}

// Method, defaults, and the elements of a record whose slots hold their own numbers: a value shows its slot.
TEST(PacketWriter, WritesEveryMethodInItsOrder) {
  const auto rows = table(3, R"(
1; 1:70 3:0.25 5:1 7:2 16:1; Method Details Enhancer|Strength 1.0|ToneCompression 0.0|DetailContrast 6.0|
WhiteClip 3.000000|BlackClip 4.000000|SmoothingMode Slider|Smoothing 17.0|Microsmoothing 7.0|HighlightsSmoothing 9.0|
ShadowsSmoothing 10.0|ShadowsClipping 11.0|SaturationHighlights 13.0|SaturationShadows 14.0|IsPano360 Yes|
Saturation 2.0|ColorTemperature 12.0|Brightness 8.0|;
2;; Method Tone Compressor|Compression 1.0|Contrast 2.0|WhiteClip 3.000000|BlackClip 4.000000|Saturation 13.0|
ColorTemperature 12.0|Brightness 0.0|;
3; 0:50 2:20 3:0.6 4:0.25; Method Contrast Optimizer|Strength 0.0|ToneCompression 1.0|LightingEffect 2.0|
WhiteClip 6.751|BlackClip 7.415|Luminance 9.0|IsPano360 Yes|Saturation 13.0|ColorTemperature 12.0|Brightness 8.0|;
4; 0:50 3:0.60359085; Method Tone Balancer|Strength 0.0|Lighting 1.0|Boost 2.0|Microcontrast 5.0|WhiteClip 6.751|
BlackClip 7.415|IsPano360 Yes|Saturation 13.0|ColorTemperature 12.0|Brightness 8.0|;
10; 8:2; Method Fusion/Natural|Strength 0.0|ExposureBalance 1.0|ShadowsContrast 2.0|WhiteClip 4.000000|
BlackClip 5.000000|IsPano360 Yes|Sharpness 8.0|Saturation 3.0|ColorTemperature 12.0|Brightness 6.0|;
11; 2:70; Method Fusion/Intensive|Strength 0.0|Radius 2.0|Saturation 1.0|ColorTemperature 12.0|Brightness 6.0|;
13;; Method Fusion/2 images|Saturation 13.0|ColorTemperature 12.0|Brightness 6.0|;
14;; Method Average|Saturation 13.0|ColorTemperature 12.0|Brightness 6.0|; 5;;; 9;;; 12; 8:2 9:1;; 16;;; 200;;;
15; 8:2 9:1; Method Fusion/Interior|Highlights 1.0|Shadows 2.0|LocalContrast 8.0|DepthHighlights 0.0|IsPano360 Yes|
Saturation 3.0|ColorTemperature 12.0|Brightness 6.0|;)");
  const std::string common = R"(SaturationIndividualColors 21.0,22.0,23.0,24.0,25.0,26.0,27.0,28.0|
TemperatureIndividualColors 31.0,32.0,33.0,34.0,35.0,36.0,37.0,38.0|
BrightnessIndividualColors 41.0,42.0,43.0,44.0,45.0,46.0,47.0,48.0|BlendingOpacity 51.0|BlendWithEV 52.0|)";
  const std::string opening =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n";
  const std::string lens =
      "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n"
      "<aux:Lens>EF 24-70 \"L\"</aux:Lens>\n</rdf:Description>\n\n";
  Params params;
  for (std::size_t i = 0; i < params.size(); ++i) params[i] = static_cast<float>(i);
  params[16] = 1;
  for (const auto& row : rows) {
    const int method = std::stoi(row[0]);
    std::string block = "<rdf:Description rdf:about=''\n" + kHead + elements("Version 6.0|" + row[2] + common) +
                        "</rdf:Description>\n\n";
    EXPECT_EQ(record(method), record(0, row[1]));
    EXPECT_EQ(written(1, method, params), opening + block + "</rdf:RDF>\n</x:xmpmeta>\n");
    block.replace(block.find("01'"), 2, "07");
    EXPECT_EQ(written(7, 200 + method, params, "EF 24-70 \"L\""), lens + block);
  }
  for (const int other : {0, -1, INT_MIN}) EXPECT_EQ(record(other), Params{});
  EXPECT_EQ(embed_xmp(0, 0, nullptr, 0, nullptr, nullptr), 128);
  EXPECT_EQ(written(-5, -3, params, std::string(300, 'x').c_str()).size(), 128 + 119 + 300U);
  EXPECT_EQ(written(-5, INT_MAX, params), written(1, 216, params));
  for (const int set : {10, 100})
    EXPECT_NE(written(set, 216, params).find("_settings" + std::to_string(set) + "'>\n"), std::string::npos);
}

// Read back, a record gives the same packet; as attributes, it gives the same record.
TEST(PacketWriter, WritesWhatReadsBackAsItWasWhateverTheLocale) {
  constexpr int kNamedMethods[] = {1, 2, 3, 4, 10, 11, 13, 14, 15};
  const bool german = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
  std::mt19937 random(4);
  for (std::size_t round = 0; round < 500; ++round) {
    const int method = kNamedMethods[round % std::size(kNamedMethods)];
    Params params, read, same;
    for (float& slot : params) slot = static_cast<float>(random() % 20'000) / 100 - 100;
    if (round % 3 == 0) params[21 + random() % 20] = -3.4e38F;
    for (const std::size_t clip : {3U, 4U}) params[clip] = static_cast<float>(random() % 1'000) / 100;
    params[5] = static_cast<float>(random() % 5);
    params[16] = static_cast<float>(random() % 2);
    const std::string packet = written(1, method, params);
    std::string attributes, line;
    for (std::istringstream in(packet); std::getline(in, line); attributes += line + '\n')
      if (line.starts_with("<lfst:"))
        line.replace(line.rfind('<'), line.npos, "\"").replace(line.find('>'), 1, "=\"")[0] = ' ';
    ASSERT_EQ(settingsOf(packet + '\0', method, read), 229);
    ASSERT_EQ(written(1, method, read), packet);
    ASSERT_GT(settingsOf(attributes + '\0', method, same), 0);
    ASSERT_EQ(same, read) << attributes;
  }
  std::setlocale(LC_NUMERIC, "C");
  if (!german) GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed: only \"C\" was tried";
}

// Method, slots beside its defaults, and elements in the packet.
TEST(PacketWriter, WritesEveryValueExactly) {
  for (const auto& row : table(3, R"(13; 6:1.25 12:-0.04; ColorTemperature -0.0|Brightness 1.2|;
      13; 6:3.4e38; Brightness 339999995214436424907732413799364296704.0|; 15; 7:nan 15:1; IsPano360 No |;
      3; 3:0.6 4:0.25; WhiteClip 3.992|BlackClip 3.000|; 3; 3:1 4:10; WhiteClip 4.717|BlackClip 10.000|;
      1; 16:-0.9 5:0.5; SmoothingMode Light|Smoothing Very High|; 1; 16:0 5:1; Smoothing High    |;
      1; 16:0 5:2.9; Smoothing Medium  |; 1; 16:0 5:3; Smoothing Low     |; 1; 16:0 5:4.9; Smoothing Very Low|;
      1; 16:0 5:nan; SmoothingMode Light|Smoothing Light|; 1; 16:1.9 17:117; SmoothingMode Slider|Smoothing 117.0|;
      1; 16:2 17:3; SmoothingMode Light|SmoothingMode Light|Microsmoothing 2.0|;
      1; 16:-1 5:2; SmoothingMode Light|SmoothingMode Light|Microsmoothing 2.0|;)")) {
    const std::string packet = written(1, std::stoi(row[0]), record(std::stoi(row[0]), row[1]));
    EXPECT_NE(packet.find(elements(row[2])), std::string::npos) << row[2] << packet;
  }
}

// Method, the slots that differ from its defaults, and a packet's elements; & is method 1.
TEST(Reader, TakesTheFirstElementOfEachNameBehindTheMethod) {
  for (const auto& row : table(3, R"(1; 0:3; Method Contrast Enhancer and|Luminosity 3|ToneCompression 5|;
      1;; Strength 9|&Luminosity x|ToneCompression 5|; 1;; &Smoothing Low|; 10; 6:1; Method Fusion/Adjust|Brightness 1|;
      1; 8:-10 2:0 6:8 7:4; &Gamma 2|Brightness 3|ColorSaturation 50|Saturation 7|Microcontrast 8|NoiseSmoothing 4|;
      1; 8:6.6666665 2:-10 6:8; &Brightness 3|Gamma 0.5|Saturation 7|ColorSaturation ?|DetailContrast 7|Microcontrast 8|;
      1; 8:inf 16:0 5:2; &Brightness 3|Gamma -|Smoothing Medium|SmoothingMode Light|;
      1; 15:1 16:0 5:4; &IsPano360 Yesterday|SmoothingMode Light|Smoothing Very Lower|;
      1; 17:3.5 1:5 4:-0.1; &SmoothingMode light|Smoothing 3.5|Strength (5|WhiteClip ((5|BlackClip   -1e-1x|;
      1; 17:2; &SmoothingModes Light|SmoothingMode Light|Smoothing 2|; 15; 1:1; Method Fusion/Real-Estate|Highlights ~ 1|
      Shadows 0~1|; 15;; Method Fusion/Realistic|HighlightsX 1|xHighlights 2|Highlight 3|;
      3; 3:0.60359085 4:1.2342758e-4 8:1; Method Contrast Optimizer|WhiteClip 4.000|BlackClip ?|Midtone 1|Brightness 2|;
      2; 13:inf 0:8; Method Smooth Adaptation|Method Average|Saturation inf(|Brightness 0x1p3|;
      0; 51:inf 52:-2; Method average|BlendingOpacity 1e39|BlendWithEV -2|;)")) {
    const int method = std::stoi(row[0]);
    const std::string text = kHead + elements(row[2]) + '\0';
    Params params;
    EXPECT_EQ(settingsOf(text, -1, params), method) << text;
    EXPECT_EQ(settingsOf(text, method, params), text.find("lfst:Method")) << text;
    EXPECT_EQ(params, record(method, row[1])) << text;
  }
}

// Selector, result, declarations, what was stored (a lens, or the defaults of a method), and the text.
TEST(Reader, SaysWhatIsMissingAndCopiesTheLensThatFits) {
  for (const auto& row : table(5, R"(0; -3; -3;;; 14; -3; -3;; @<lfst:Method>Average; -1; 0; 0;; ~;
      -1; 0; 0;; xmlns:lfst='http://ns.lumenforge.org~; -1; 0; 0;; xmlns:lfst=`http://ns.lumenforge.org/lfst:Method>A~;
      -1; -5; 1;; @~; -1; -5; 2;; @~xmlns:lfst=xmlns:lfst="http://ns.lumenforge.org/~; 0; 37; 1; 0; @~;
      0; 38; 1; 0; @12345678901~; 14; -5; 1;; @lfst:Metho~; 14; -5; 1;; lfst:Method>Average@~;
      14; 38; 1; 14; @xlfst:Method>Average~; 12; -5; 1;; @lfst:Method>Average~; -1; 14; 1;; @lfst:Method="Average"~;
      -1; 14; 1;; @lfst:MethodXAverage~; -1; 0; 1;; @lfst:Method>Averag~;
      100; 0; 0;; %~; 100; 1; 0;; %x~; 100; 44; 0;; %/1234567~; 100; 45; 0;; %/aux:Lens~;
      100; 71; 0; EF; %/aux:LensID="9" aux:Lens="EF">~; 100; 54; 0;; %/aux:Lens=""~; 100; 58; 0;; %/aux:Lens='EF'~;
      100; 54; 0;; %/aux:Lens=~; 100; 117; 0; ^; %/aux:Lens="^"~; 100; 118; 0;; %/aux:Lens="^L"~;
      100; 53; 0;; %/aux:Lens>EF~; 100; 58; 0; EF 24; %/aux:Lens>EF 24</aux:Lens~; 100; 58; 0;; %/aux:Lens>EF 24</aux:Len~;
      100; 116; 0; ^; %/aux:Lens>^</aux:Lens>~; 100; 117; 0;; %/aux:Lens>^LLL</aux:Lens>~;)")) {
    const std::string &text = row[4], &stored = row[3];
    std::string out(64, '.');
    Params untouched;
    untouched.fill(9);
    Params params = untouched;
    const bool isLens = row[0] == "100";
    EXPECT_EQ(settingsOf(text, std::stoi(row[0]), params, out.data()), std::stoi(row[1])) << text;
    EXPECT_EQ(params, isLens || stored.empty() ? untouched : record(std::stoi(stored))) << text;
    EXPECT_EQ(out, isLens ? stored + std::string(64 - stored.size(), '.') : std::string(64, '.')) << text;
    EXPECT_EQ(lfsettings_occurences_in_xmp(static_cast<int>(text.size()), guarded(text)), std::stoi(row[2])) << text;
  }
}

// The search for one tag after the other is the definition of what the one pass finds.
TEST(Reader, FindsWhatTheSearchForEveryTagFinds) {
  const auto searches = table(3, R"(0;0;Accentuation; 0;0;Strength; 1;0;BlendingPoint; 1;0;ExposureBalance;
      2;0;ShadowsContrast; 2;0;Shadows; 4;0;WhiteClip; 5;0;BlackClip; 7;1;IsPano360; 8;0;Sharpness; 3;0;Saturation;
      12;0;ColorTemperature; 6;0;MidtonesAdjustment; 6;0;Brightness; 21;20;SaturationIndividualColors;
      31;20;TemperatureIndividualColors; 41;20;BrightnessIndividualColors; 51;0;BlendingOpacity; 52;0;BlendWithEV;)");
  const char* const values[] = {"1", "-2.5", "Yes", "x", "", "1,2,3,4,5,6,7,8", "lfst:Strength>4"};
  std::mt19937 random(5);
  const auto pick = [&random](const auto& list) { return list[random() % std::size(list)]; };
  for (int round = 0; round < 3'000; ++round) {
    std::string text = kHead + elements("Method Fusion/Natural|");
    const auto method = static_cast<int>(text.find("lfst:Method"));
    for (auto n = random() % 12; n > 0; --n)
      text += std::string(random() % 400, ' ') + elements(pick(searches)[2] + " " + pick(values) + "|");
    for (auto n = random() % 3; n > 0; --n) text[80 + random() % (text.size() - 80)] = "<>=l:s\0"[random() % 7];
    text.resize(text.size() - random() % 9);
    text += '\0';
    Params params, expected = record(10);
    if (settingsOf(text, 10, params) != method) continue;
    std::array<int, kSettingsParamsSlots> found{};
    for (const auto& row : searches) {
      searchForTag(std::stoi(row[0]), ("lfst:" + row[2]).c_str(), std::stoi(row[1]), guarded(text) + method, 1,
                   static_cast<int>(text.size()) - method, found.data(), expected.data());
    }
    ASSERT_EQ(params, expected) << text;
  }
}

// Kind, form, result, the value after it (all are 9 before; none when nothing is found), tag and text.
TEST(SearchForTag, StoresOneValueAndMarksItsSlot) {
  for (const auto& row : table(6, R"(0; 1; 1; 70; a:S; <a:S>70.0</a:S>; 0; 2; 1; 70; a:S; <a:S="70.0" ;
      0; 1; 8;; a:S; <a:S="70.0" ; 1; 1; 1; 1; a:S; <a:S>Yes; 1; 1; 1; 0; a:S; <a:S>Ye; 0; 1; 1; 9; a:S; <a:S>x;
      20; 1; 1; 1; a:S; <a:S>1,2,3,4,5,6,7,8; 20; 1; 1; 9; a:S; <a:S>1,2,3,4,5,6,7; 7; 1; 2;; a:S; <a:S>1;
      0; 1; 1;; a:S; <a:S>; 0; 1; 0;; a:S; a:S>; 0; 0; 1; 12; a:S; <a:S>12; 0; 3; 1; 3; a:S; <a:S>123;
      0; -2147483648; 1; 9; a:S; <a:S>1; 0; 2147483647; 1; 9; a:S; <a:S>1; 0; 1; 8; 2; a:S; <a:SX>1<a:S>2;
      0; 1; 1; 7;; x>>7;)")) {
    std::array<int, kSettingsParamsSlots> found{};
    Params values;
    values.fill(9);
    const bool isFound = !row[3].empty();
    for (const int result : {std::stoi(row[2]), isFound ? 0 : std::stoi(row[2])}) {  // what was found is left alone
      const auto length = static_cast<int>(row[5].size());
      EXPECT_EQ(result, searchForTag(52, row[4].c_str(), std::stoi(row[0]), guarded(row[5]), std::stoi(row[1]), length,
                                     found.data(), values.data()));
      EXPECT_EQ(found[52], isFound) << row[5];
      EXPECT_EQ(values[52], isFound ? std::stof(row[3]) : 9) << row[5];
    }
  }
}

TEST(Files, HoldPacketsAndTheirRegions) {
  Params params = record(4, "8:3.5"), read;
  const std::string packet = written(1, 4, params);
  const auto size = static_cast<int>(packet.size());
  build::TempFile file("");
  EXPECT_EQ(write_xmp(file.path(), 4, params.data()), 1);
  for (const int method : {0, 16, 201, -1}) EXPECT_EQ(write_xmp(file.path(), method, params.data()), -2);
  EXPECT_EQ(file.bytes(), packet);
  EXPECT_EQ(write_xmp("/nonexistent/file", 4, params.data()), -1);
  EXPECT_EQ(write_xmp("/dev/full", 4, params.data()), -3);
  EXPECT_EQ(read_xmp(file.path(), 4, read.data()), 229);
  EXPECT_EQ(read, params);
  EXPECT_EQ(read_xmp(build::TempFile("").path(), 0, nullptr), 0);
  EXPECT_EQ(read_xmp("/nonexistent", 4, nullptr), -1);
  EXPECT_EQ(read_xmp("/nonexistent", 100, nullptr), -5);

  const auto extract = [&](int length, int offset, char last = '\0') {
    std::string buffer = std::string(static_cast<std::size_t>(std::max(length, 0)), '#') + last;
    const int result = extract_xmp(file.path(), length, offset, reinterpret_cast<unsigned char*>(buffer.data()));
    return std::pair(result, buffer.substr(0, 4));
  };
  EXPECT_EQ(extract(size - 21, 20), std::pair(4, packet.substr(20, 4)));
  EXPECT_EQ(extract(size - 21, 20, 'x').first, -3);
  EXPECT_EQ(extract(size - 20, 20), std::pair(0, "####"s));
  EXPECT_EQ(extract(4, -1), std::pair(0, "####"s));
  EXPECT_EQ(extract(-1, 4).first, 0);
  EXPECT_EQ(extract_xmp(file.path(), INT_MAX, INT_MAX, nullptr), 0);
  EXPECT_EQ(extract_xmp("/nonexistent", 1, 0, nullptr), -1);
  EXPECT_EQ(extract_xmp(build::TempFile("").path(), 0, 0, nullptr), -1);

  // A file of more than 2 GiB, with a packet across that border.
  ASSERT_EQ(::truncate(file.path(), INT_MAX), 0);
  std::ofstream(file.path(), std::ios::binary | std::ios::in | std::ios::ate) << packet << packet;
  EXPECT_EQ(extract(size, INT_MAX), std::pair(4, packet.substr(0, 4)));
  EXPECT_EQ(read_xmp(file.path(), -1, nullptr), -1);
}

TEST(Insert, PutsTheBlockBehindTheTagAndMovesTheTail) {
  const Params params = record(14, "6:2");
  const std::string meta = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">";
  const std::string tag = "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">";
  const std::string before = "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>" + meta +
                             "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#\">" + tag;
  const std::string block = written(2, 214, params);
  const auto size = static_cast<int>(block.size());
  const auto insert = [&](int set, int method, const std::string& packet, int length) {
    const std::size_t room = packet.size() + static_cast<std::size_t>(std::max(length, 0));
    auto* const xmp = reinterpret_cast<char*>(guarded(packet + std::string(room - packet.size(), '#')));
    const int result = insert_xmp(set, method, params.data(), static_cast<int>(packet.size()), length, xmp);
    return std::pair(result, std::string(xmp, room));
  };
  const std::pair<std::string, std::string> places[] = {{"\n", "\n<x/>"}, {"\n\n", "\n<x/>"}, {" \n", "\n\nx"},
                                                        {"x", "\nyz"},    {"", "abc"},        {"", "\nab"},
                                                        {"", "\n <x/>"},  {"\r\n", "\n\0x"s}};
  for (const auto& [kept, moved] : places) {
    EXPECT_EQ(insert(2, 14, before + kept + moved, size), std::pair(size, before + kept + block + moved));
    // A block longer than was announced is cut, not written over the tail or beyond it.
    EXPECT_EQ(insert(100, 14, before + kept + moved, 9), std::pair(size + 1, before + kept + "<rdf:Desc" + moved));
  }
  const auto refuse = [&](std::string packet, std::size_t length, int result) {
    packet.resize(length, ' ');
    EXPECT_EQ(insert(2, 14, packet, 0), std::pair(result, packet));
  };
  for (const auto& [length, result] : {std::pair(34U, -34), {35, -130}, {130, -130}, {131, -131}})
    refuse(meta, length, result);
  refuse(" " + meta, 35, -35);
  refuse(meta + std::string(28, ' ') + tag, 140, -140);
  for (const auto& packet : {written(1, 14, params), before})
    refuse(packet, packet.size(), -static_cast<int>(packet.size()));
  for (const char* tail : {"\n\n", "\n\na"}) refuse(before + tail, before.size() + std::strlen(tail), -1);
  EXPECT_EQ(insert(2, 0, before + "\n<x/>", 0), std::pair(-5, before + "\n<x/>"));
  EXPECT_EQ(insert(2, 14, before + "\n<x/>", -1).first, -1);
  EXPECT_EQ(insert_xmp(0, 0, params.data(), 0, 0, nullptr), -5);
  EXPECT_EQ(insert_xmp(0, 14, params.data(), 0, 0, nullptr), size);
  EXPECT_EQ(insert_xmp(0, INT_MAX, params.data(), 0, 0, nullptr),
            embed_xmp(0, 299, params.data(), 0, nullptr, nullptr));
}

}  // namespace
