// The settings wing: packets written byte for byte, read back, spliced, and kept in files.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <array>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <sstream>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace {

using build::TempFile;
using namespace std::string_literals;
using Params = std::array<float, kSettingsParamsSlots>;
constexpr int kNamedMethods[] = {1, 2, 3, 4, 10, 11, 13, 14, 15};

Params defaultsOf(int method) {
  Params params;
  params.fill(-1);
  EXPECT_EQ(def_param(method, params.data()), 0);
  return params;
}

// Slots as "slot:value slot:value".
Params with(Params params, const char* slots) {
  int slot = 0;
  float value = 0;
  for (int n = 0; std::sscanf(slots, "%d:%f%n", &slot, &value, &n) == 2; slots += n) {
    params[static_cast<std::size_t>(slot)] = value;
  }
  return params;
}

// Bytes that end where memory does: a read beyond them ends the test.
class Guarded {
 public:
  explicit Guarded(const std::string& text) : size_((text.size() / kPage + 2) * kPage) {
    memory_ = static_cast<char*>(mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(memory_ + size_ - kPage, kPage, PROT_NONE);
    begin_ = memory_ + size_ - kPage - text.size();
    std::memcpy(begin_, text.data(), text.size());
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() { munmap(memory_, size_); }
  const unsigned char* bytes() const { return reinterpret_cast<unsigned char*>(begin_); }
  char* chars() { return begin_; }

 private:
  static constexpr std::size_t kPage = 4096;
  std::size_t size_;
  char* memory_;
  char* begin_;
};

int settingsOf(const std::string& text, int selector, Params& params) {
  return get_settings_from_xmp(selector, static_cast<int>(text.size()), Guarded(text).bytes(), nullptr, params.data());
}

std::string written(int setNumber, int method, const Params& params, const char* lens = nullptr) {
  const int length = embed_xmp(0, method, params.data(), lens != nullptr, lens, nullptr);
  std::string text(static_cast<std::size_t>(length) + 1, '#');
  EXPECT_EQ(embed_xmp(setNumber, method, params.data(), lens != nullptr, lens, text.data()), length);
  EXPECT_EQ(text.back(), '#') << "a byte behind the text was written";
  text.pop_back();
  return text;
}

const std::string kOpening =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n";
const std::string kClosing = "</rdf:RDF>\n</x:xmpmeta>\n";
const std::string kDeclaration = "xmlns:lfst='http://ns.lumenforge.org/";

// "Name value|Name value|" as elements, one a line.
std::string elements(const std::string& list) {
  std::string lines;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = list.find('|', at);
    const std::size_t blank = list.find(' ', at);
    const std::string name = list.substr(at, blank - at);
    lines += "<lfst:" + name + ">" + list.substr(blank + 1, end - blank - 1) + "</lfst:" + name + ">\n";
    at = end + 1;
  }
  return lines;
}

std::string block(const std::string& list, const std::string& set = "01") {
  return "<rdf:Description rdf:about=''\n" + kDeclaration + "lumenforge_settings" + set + "'>\n" +
         elements("Version 6.0|" + list) + "</rdf:Description>\n\n";
}

// Every slot holds its own number, so that a value shows where it came from.
void expectPacket(int method, const std::string& own) {
  Params params;
  for (std::size_t i = 0; i < params.size(); ++i) params[i] = static_cast<float>(i);
  params[16] = 1;
  const std::string all = own +
                          "SaturationIndividualColors 21.0,22.0,23.0,24.0,25.0,26.0,27.0,28.0|"
                          "TemperatureIndividualColors 31.0,32.0,33.0,34.0,35.0,36.0,37.0,38.0|"
                          "BrightnessIndividualColors 41.0,42.0,43.0,44.0,45.0,46.0,47.0,48.0|"
                          "BlendingOpacity 51.0|BlendWithEV 52.0|";
  const std::string lens =
      "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n"
      "<aux:Lens>EF 24-70 \"L\"</aux:Lens>\n</rdf:Description>\n\n";
  EXPECT_EQ(written(1, method, params), kOpening + block(all) + kClosing);
  EXPECT_EQ(written(7, 200 + method, params, "EF 24-70 \"L\""), lens + block(all, "07"));
}

TEST(PacketWriter, WritesEveryMethodInItsOrder) {
  expectPacket(1,
               "Method Details Enhancer|Strength 1.0|ToneCompression 0.0|DetailContrast 6.0|"
               "WhiteClip 3.000000|BlackClip 4.000000|SmoothingMode Slider|Smoothing 17.0|"
               "Microsmoothing 7.0|HighlightsSmoothing 9.0|ShadowsSmoothing 10.0|"
               "ShadowsClipping 11.0|SaturationHighlights 13.0|SaturationShadows 14.0|"
               "IsPano360 Yes|Saturation 2.0|ColorTemperature 12.0|Brightness 8.0|");
  expectPacket(2,
               "Method Tone Compressor|Compression 1.0|Contrast 2.0|WhiteClip 3.000000|"
               "BlackClip 4.000000|Saturation 13.0|ColorTemperature 12.0|Brightness 0.0|");
  expectPacket(3,
               "Method Contrast Optimizer|Strength 0.0|ToneCompression 1.0|LightingEffect 2.0|"
               "WhiteClip 6.751|BlackClip 7.415|Luminance 9.0|IsPano360 Yes|Saturation 13.0|"
               "ColorTemperature 12.0|Brightness 8.0|");
  expectPacket(4,
               "Method Tone Balancer|Strength 0.0|Lighting 1.0|Boost 2.0|Microcontrast 5.0|"
               "WhiteClip 6.751|BlackClip 7.415|IsPano360 Yes|Saturation 13.0|"
               "ColorTemperature 12.0|Brightness 8.0|");
  expectPacket(10,
               "Method Fusion/Natural|Strength 0.0|ExposureBalance 1.0|ShadowsContrast 2.0|"
               "WhiteClip 4.000000|BlackClip 5.000000|IsPano360 Yes|Sharpness 8.0|"
               "Saturation 3.0|ColorTemperature 12.0|Brightness 6.0|");
  expectPacket(11,
               "Method Fusion/Intensive|Strength 0.0|Radius 2.0|Saturation 1.0|"
               "ColorTemperature 12.0|Brightness 6.0|");
  expectPacket(13, "Method Fusion/2 images|Saturation 13.0|ColorTemperature 12.0|Brightness 6.0|");
  expectPacket(14, "Method Average|Saturation 13.0|ColorTemperature 12.0|Brightness 6.0|");
  expectPacket(15,
               "Method Fusion/Interior|Highlights 1.0|Shadows 2.0|LocalContrast 8.0|"
               "DepthHighlights 0.0|IsPano360 Yes|Saturation 3.0|ColorTemperature 12.0|"
               "Brightness 6.0|");
  for (const int nameless : {5, 12, 200}) expectPacket(nameless, "");
}

// Read back, a record gives the same packet; as attributes, it gives the same record.
TEST(PacketWriter, WritesWhatReadsBackAsItWasWhateverTheLocale) {
  std::mt19937 random(4);
  const bool german = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
  if (german) {
    EXPECT_EQ(std::to_string(0.5), "0,500000");
  }
  for (int round = 0; round < 500; ++round) {
    const int method = kNamedMethods[static_cast<std::size_t>(round) % std::size(kNamedMethods)];
    Params params = defaultsOf(0);
    for (float& slot : params) slot = static_cast<float>(random() % 20'000) / 100 - 100;
    if (round % 3 == 0) params[21 + random() % 20] = -3.4e38F;
    params[3] = std::fabs(params[3]) / 10;
    params[4] = std::fabs(params[4]) / 10;
    params[5] = static_cast<float>(random() % 5);
    params[16] = static_cast<float>(random() % 2);
    const std::string packet = written(1, method, params);
    std::string attributes = packet;
    for (std::size_t at = 0; (at = attributes.find("<lfst:", at)) != std::string::npos;) {
      attributes[at] = ' ';
      attributes.replace(attributes.find('>', at), 1, "=\"");
      at = attributes.find("</lfst:", at);
      attributes.replace(at, attributes.find('>', at) + 1 - at, "\"");
    }
    Params read;
    Params same;
    ASSERT_EQ(settingsOf(packet + '\0', -1, read), method);
    ASSERT_EQ(settingsOf(packet + '\0', method, read), 229);
    ASSERT_EQ(written(1, method, read), packet);
    ASSERT_GT(settingsOf(attributes + '\0', method, same), 0);
    ASSERT_EQ(same, read) << attributes;
  }
  std::setlocale(LC_NUMERIC, "C");
  if (!german) GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed: only \"C\" was tried";
}

// The text of some slots, on a packet with the method's defaults.
void expectLines(int method, const char* slots, const std::string& lines) {
  const std::string packet = written(1, method, with(defaultsOf(method), slots));
  EXPECT_NE(packet.find(elements(lines)), std::string::npos) << lines << packet;
}

TEST(PacketWriter, WritesEveryValueExactly) {
  expectLines(13, "6:1.25 12:-0.04", "ColorTemperature -0.0|Brightness 1.2|");
  expectLines(13, "6:3.4e38", "Brightness 339999995214436424907732413799364296704.0|");
  expectLines(3, "3:0.6 4:0.25", "WhiteClip 3.992|BlackClip 3.000|");
  expectLines(3, "3:1 4:10", "WhiteClip 4.717|BlackClip 10.000|");
  expectLines(15, "7:nan 15:1", "IsPano360 No |");
  expectLines(1, "16:1.9 17:117", "SmoothingMode Slider|Smoothing 117.0|");
  expectLines(1, "16:-0.9 5:0.5", "SmoothingMode Light|Smoothing Very High|");
  expectLines(1, "16:0 5:1", "SmoothingMode Light|Smoothing High    |");
  expectLines(1, "16:0 5:2.9", "SmoothingMode Light|Smoothing Medium  |");
  expectLines(1, "16:0 5:3", "SmoothingMode Light|Smoothing Low     |");
  expectLines(1, "16:0 5:4.9", "SmoothingMode Light|Smoothing Very Low|");
  expectLines(1, "16:0 5:nan", "SmoothingMode Light|Smoothing Light|");
  for (const char* slots : {"16:2 17:3", "16:-1 5:2", "16:3e38"}) {
    expectLines(1, slots, "SmoothingMode Light|SmoothingMode Light|Microsmoothing 2.0|");
  }
}

TEST(PacketWriter, CountsWhatItWrites) {
  const Params params = defaultsOf(1);
  EXPECT_EQ(embed_xmp(0, 0, nullptr, 0, nullptr, nullptr), 128);
  EXPECT_EQ(written(-5, -3, params, std::string(300, 'x').c_str()).size(), 128 + 119 + 300U);
  EXPECT_EQ(written(-5, 1, params), written(1, 1, params));
  EXPECT_NE(written(10, 1, params).find("_settings10'>\n"), std::string::npos);
  const int length = embed_xmp(0, INT_MAX, params.data(), 0, nullptr, nullptr);
  EXPECT_EQ(length, embed_xmp(0, 216, params.data(), 0, nullptr, nullptr));
  std::string out(static_cast<std::size_t>(length) + 1, '#');
  EXPECT_EQ(embed_xmp(100, 216, params.data(), 0, nullptr, out.data()), length + 1);
  EXPECT_NE(out.find("_settings100'>\n"), std::string::npos);
}

TEST(Defaults, AreTheMethodsOwn) {
  EXPECT_EQ(defaultsOf(1), with({}, "1:70 3:0.25 5:1 7:2 16:1"));
  EXPECT_EQ(defaultsOf(3), with({}, "0:50 2:20 3:0.6 4:0.25"));
  EXPECT_EQ(defaultsOf(4), with({}, "0:50 3:0.60359085"));
  EXPECT_EQ(defaultsOf(10), with({}, "8:2"));
  EXPECT_EQ(defaultsOf(11), with({}, "2:70"));
  EXPECT_EQ(defaultsOf(12), with({}, "8:2 9:1"));
  EXPECT_EQ(defaultsOf(15), defaultsOf(12));
  for (const int other : {0, 2, 9, 13, 14, 16, -1, INT_MIN}) EXPECT_EQ(defaultsOf(other), Params{});
}

const std::string kHead = kDeclaration + "lumenforge_settings01'>";

void expectSettings(int method, const std::string& list, const char* slots) {
  const std::string text = kHead + elements(list) + '\0';
  Params params;
  EXPECT_EQ(settingsOf(text, -1, params), method) << text;
  EXPECT_EQ(settingsOf(text, method, params), text.find("lfst:Method")) << text;
  EXPECT_EQ(params, with(defaultsOf(method), slots)) << text;
}

TEST(Reader, TakesTheFirstElementOfEachNameBehindTheMethod) {
  const std::string one = "Method Details Enhancer|";
  expectSettings(1, "Method Contrast Enhancer and|Luminosity 3|ToneCompression 5|", "0:3");
  expectSettings(1, "Strength 9|" + one + "Luminosity x|ToneCompression 5|", "");
  expectSettings(1, one + "Gamma 2|Brightness 3|", "8:-10");
  expectSettings(1, one + "Brightness 3|Gamma 0.5|", "8:6.6666665");
  expectSettings(1, one + "Brightness 3|Gamma -|", "8:inf");
  expectSettings(1, one + "ColorSaturation 50|Saturation 7|", "2:0");
  expectSettings(1, one + "Saturation 7|ColorSaturation ?|", "2:-10");
  expectSettings(1, one + "DetailContrast 7|Microcontrast 8|NoiseSmoothing 4|", "6:8 7:4");
  expectSettings(1, one + "Smoothing Medium|SmoothingMode Light|", "16:0 5:2");
  expectSettings(1, one + "SmoothingMode Light|Smoothing Very Lower|", "16:0 5:4");
  expectSettings(1, one + "SmoothingMode light|Smoothing 3.5|", "17:3.5");
  expectSettings(1, one + "SmoothingModes Light|SmoothingMode Light|Smoothing 2|", "17:2");
  expectSettings(1, one + "IsPano360 Yesterday|Smoothing Low|", "15:1");
  expectSettings(1, one + "Strength (5|WhiteClip ((5|BlackClip \t-1e-1x|", "1:5 4:-0.1");
  expectSettings(3, "Method Contrast Optimizer|WhiteClip 4.000|BlackClip ?|Midtone 1|",
                 "3:0.60359085 4:1.2342758e-4 8:1");
  expectSettings(2, "Method Smooth Adaptation|Method Average|Saturation inf(|Brightness 0x1p3|", "13:inf 0:8");
  expectSettings(15, "Method Fusion/Real-Estate|Highlights \0 1|Shadows 0\0001|"s, "1:1");
  expectSettings(15, "Method Fusion/Realistic|HighlightsX 1|xHighlights 2|Highlight 3|", "");
  expectSettings(10, "Method Fusion/Adjust|Brightness 1|", "6:1");
  expectSettings(0, "Method average|BlendingOpacity 1e39|BlendWithEV -2|", "51:inf 52:-2");
}

void expectResult(const std::string& text, int selector, int result, Params expected) {
  Params params;
  params.fill(9);
  EXPECT_EQ(settingsOf(text + '\0', selector, params), result) << text;
  EXPECT_EQ(params, expected) << text;
}

TEST(Reader, SaysWhatIsMissing) {
  const std::string method = elements("Method Average|");
  const std::string other = "xmlns:lfst=\"http://ns.lumenforge.org/x";
  Params untouched;
  untouched.fill(9);
  expectResult("", -1, 0, untouched);
  expectResult(kDeclaration.substr(0, 36), -1, 0, untouched);
  expectResult("xmlns:lfst=`" + kDeclaration.substr(12) + method, -1, 0, untouched);
  expectResult(kDeclaration, -1, -5, untouched);
  expectResult(kDeclaration, 0, 37, {});
  expectResult(kDeclaration + "12345678901", 0, 38, {});
  expectResult(kDeclaration + "lfst:Metho", 14, -5, untouched);
  expectResult(method + other, 14, -5, untouched);
  expectResult(other + method, 14, 39, defaultsOf(14));
  expectResult(other + method, 12, -5, untouched);
  expectResult(kDeclaration + "lfst:Method=\"Average\"", -1, 14, untouched);
  expectResult(kDeclaration + "lfst:MethodXAverage", -1, 14, untouched);
  expectResult(kDeclaration + "lfst:Method>Averag", -1, 0, untouched);
  EXPECT_EQ(settingsOf("", 0, untouched), -3);
  EXPECT_EQ(settingsOf(kHead + method, 14, untouched), -3);
}

TEST(Reader, CountsDeclarations) {
  const auto count = [](const std::string& text) {
    return lfsettings_occurences_in_xmp(static_cast<int>(text.size()), Guarded(text).bytes());
  };
  EXPECT_EQ(count(""), -3);
  EXPECT_EQ(count(kDeclaration), -3);
  EXPECT_EQ(count(kDeclaration.substr(0, 36) + '\0'), 0);
  EXPECT_EQ(count(kDeclaration + '\0'), 1);
  EXPECT_EQ(count(kDeclaration + "\0xmlns:lfst=xmlns:lfst=\""s + kDeclaration.substr(12) + '\0'), 2);
}

// The search for one tag after the other is the definition of what the one pass finds.
TEST(Reader, FindsWhatTheSearchForEveryTagFinds) {
  std::istringstream table(
      "0 Accentuation 0 Strength 1 BlendingPoint 1 ExposureBalance 2 ShadowsContrast 2 Shadows "
      "4 WhiteClip 5 BlackClip 7 IsPano360 8 Sharpness 3 Saturation 12 ColorTemperature "
      "6 MidtonesAdjustment 6 Brightness 21 SaturationIndividualColors "
      "31 TemperatureIndividualColors 41 BrightnessIndividualColors 51 BlendingOpacity "
      "52 BlendWithEV");
  std::vector<std::pair<int, std::string>> searches(19);
  for (auto& [slot, name] : searches) table >> slot >> name;
  const char* const values[] = {"1", "-2.5", "Yes", "x", "", "1,2,3,4,5,6,7,8", "lfst:Strength>4"};
  std::mt19937 random(5);
  const auto pick = [&random](const auto& list) { return list[random() % std::size(list)]; };
  for (int round = 0; round < 3'000; ++round) {
    std::string text = kHead + elements("Method Fusion/Natural|");
    const auto method = static_cast<int>(text.find("lfst:Method"));
    for (auto n = random() % 12; n > 0; --n) {
      text += std::string(random() % 400, ' ') + elements(pick(searches).second + " " + pick(values) + "|");
    }
    for (auto n = random() % 3; n > 0; --n) text[80 + random() % (text.size() - 80)] = "<>=l:s\0"[random() % 7];
    text.resize(text.size() - random() % 9);
    text += '\0';
    Params expected = defaultsOf(10);
    std::array<int, kSettingsParamsSlots> found{};
    const Guarded guarded(text);
    for (const auto& [slot, name] : searches) {
      const int kind = slot == 7 ? 1 : slot > 20 && slot < 50 ? 20 : 0;
      searchForTag(slot, ("lfst:" + name).c_str(), kind, guarded.bytes() + method, 1,
                   static_cast<int>(text.size()) - method, found.data(), expected.data());
    }
    Params params;
    if (settingsOf(text, 10, params) == method) {
      ASSERT_EQ(params, expected) << text;
    }
  }
}

// One search into slot 52, all values 9 before; the value after it, or none when nothing is found.
void expectSearch(const std::string& text, const char* tag, int kind, int form, int result,
                  std::optional<float> value) {
  std::array<int, kSettingsParamsSlots> found{};
  Params values;
  values.fill(9);
  const Guarded guarded(text);
  const auto search = [&] {
    return searchForTag(52, tag, kind, guarded.bytes(), form, static_cast<int>(text.size()), found.data(),
                        values.data());
  };
  EXPECT_EQ(search(), result) << text;
  EXPECT_EQ(found[52], value.has_value()) << text;
  EXPECT_EQ(values[52], value.value_or(9)) << text;
  EXPECT_EQ(search(), value.has_value() ? 0 : result) << "what was found is left alone";
}

TEST(SearchForTag, StoresOneValueAndMarksItsSlot) {
  expectSearch("<a:S>70.0</a:S>", "a:S", 0, 1, 1, 70);
  expectSearch(" a:S=\"70.0\" ", "a:S", 0, 2, 1, 70);
  expectSearch(" a:S=\"70.0\" ", "a:S", 0, 1, 8, {});
  expectSearch("<a:S>abc</a:S>", "a:S", 0, 1, 1, 9);
  expectSearch("<a:S>Yes", "a:S", 1, 1, 1, 1);
  expectSearch("<a:S>Ye", "a:S", 1, 1, 1, 0);
  expectSearch("<a:S>1,2,3,4,5,6,7,8", "a:S", 20, 1, 1, 1);
  expectSearch("<a:S>1,2,3,4,5,6,7", "a:S", 20, 1, 1, 9);
  expectSearch("<a:S>1", "a:S", 7, 1, 2, {});
  expectSearch("<a:S>", "a:S", 0, 1, 1, {});
  expectSearch("<a:S>x", "a:S", 0, 1, 1, 9);
  expectSearch("a:S>", "a:S", 0, 1, 0, {});
  expectSearch("<a:S>12", "a:S", 0, 0, 1, 12);
  expectSearch("<a:S>123", "a:S", 0, 3, 1, 3);
  expectSearch("<a:S>1", "a:S", 0, INT_MIN, 1, 9);
  expectSearch("<a:S>1", "a:S", 0, INT_MAX, 1, 9);
  expectSearch("<a:SX>1<a:S>2", "a:S", 0, 1, 8, 2);
  expectSearch("x>>7", "", 0, 1, 1, 7);
}

void expectLens(const std::string& text, int result, const std::string& lens) {
  std::string out(64, '.');
  EXPECT_EQ(
      get_settings_from_xmp(100, static_cast<int>(text.size()) + 1, Guarded(text + '\0').bytes(), out.data(), nullptr),
      result)
      << text;
  EXPECT_EQ(out, lens + std::string(64 - lens.size(), '.')) << text;
}

TEST(Lens, IsCopiedWhenItFits) {
  const std::string aux = "xmlns:aux=\"http://ns.adobe.com/exif/1.0/aux/";  // 44 bytes
  const std::string longest(63, 'L');
  expectLens(std::string(43, ' '), 0, "");
  expectLens(std::string(44, ' '), 1, "");
  expectLens(aux + "1234567", 44, "");
  expectLens(aux + "aux:Lens", 45, "");
  expectLens(aux + "aux:LensID=\"9\" aux:Lens=\"EF\">", 71, "EF");
  expectLens(aux + "aux:Lens=\"\"", 54, "");
  expectLens(aux + "aux:Lens='EF'", 58, "");
  expectLens(aux + "aux:Lens=", 54, "");
  expectLens(aux + "aux:Lens=\"" + longest + "\"", 117, longest);
  expectLens(aux + "aux:Lens=\"" + longest + "L\"", 118, "");
  expectLens(aux + "aux:Lens>EF", 53, "");
  expectLens(aux + "aux:Lens>EF 24</aux:Lens", 58, "EF 24");
  expectLens(aux + "aux:Lens>EF 24</aux:Len", 58, "");
  expectLens(aux + "aux:Lens>" + longest + "</aux:Lens>", 116, longest);
  expectLens(aux + "aux:Lens>" + longest + "LLL</aux:Lens>", 117, "");
}

TEST(Files, HoldPacketsAndTheirRegions) {
  const Params params = with(defaultsOf(4), "8:3.5");
  const std::string packet = written(1, 4, params);
  const auto size = static_cast<int>(packet.size());
  TempFile file("");
  EXPECT_EQ(write_xmp(file.path(), 4, params.data()), 1);
  EXPECT_EQ(file.bytes(), packet);
  Params read;
  EXPECT_EQ(read_xmp(file.path(), 4, read.data()), 229);
  EXPECT_EQ(read, params);
  EXPECT_EQ(read_xmp(file.path(), -1, nullptr), 4);
  EXPECT_EQ(read_xmp(file.path(), 3, read.data()), -5);
  EXPECT_EQ(read_xmp(TempFile("").path(), 0, nullptr), 0);
  EXPECT_EQ(read_xmp("/nonexistent", 4, nullptr), -1);
  EXPECT_EQ(read_xmp("/nonexistent", 100, nullptr), -5);

  for (const int method : {0, 16, 201, -1}) EXPECT_EQ(write_xmp(file.path(), method, params.data()), -2);
  EXPECT_EQ(file.bytes(), packet);
  EXPECT_EQ(write_xmp("/nonexistent/file", 4, params.data()), -1);
  EXPECT_EQ(write_xmp("/dev/full", 4, params.data()), -3);

  const auto extract = [&](int length, int offset, char last = '\0') {
    std::string buffer(static_cast<std::size_t>(std::max(length, 0)) + 1, '#');
    buffer.back() = last;
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
  EXPECT_EQ(extract_xmp(TempFile("").path(), 0, 0, nullptr), -1);

  // A file of more than 2 GiB, with a packet across that border.
  ASSERT_EQ(::truncate(file.path(), INT_MAX), 0);
  std::ofstream(file.path(), std::ios::binary | std::ios::in | std::ios::ate) << packet << packet;
  EXPECT_EQ(extract(size, INT_MAX), std::pair(4, packet.substr(0, 4)));
  EXPECT_EQ(read_xmp(file.path(), -1, nullptr), -1);
}

TEST(Insert, PutsTheBlockBehindTheTagAndMovesTheTail) {
  const Params params = with(defaultsOf(14), "6:2");
  const std::string opening = "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>";
  const std::string meta = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">";
  const std::string uri = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
  const std::string tag = "<rdf:RDF xmlns:rdf=\"" + uri + "\">";
  const std::string before = opening + meta + "<rdf:RDF xmlns:rdf='" + uri + "\">" + tag;
  const std::string inserted = written(2, 214, params);
  const auto size = static_cast<int>(inserted.size());
  EXPECT_EQ(insert_xmp(0, 14, params.data(), 0, 0, nullptr), size);

  const auto insert = [&](int set, int method, const std::string& packet, int length) {
    const std::size_t room = packet.size() + static_cast<std::size_t>(std::max(length, 0));
    Guarded buffer(packet + std::string(room - packet.size(), '#'));
    const int result = insert_xmp(set, method, params.data(), static_cast<int>(packet.size()), length, buffer.chars());
    return std::pair(result, std::string(buffer.chars(), room));
  };
  const auto splice = [&](const std::string& kept, const std::string& moved) {
    EXPECT_EQ(insert(2, 14, before + kept + moved, size), std::pair(size, before + kept + inserted + moved));
    // A block longer than was announced is cut, not written over the tail or beyond it.
    EXPECT_EQ(insert(100, 14, before + kept + moved, 9), std::pair(size + 1, before + kept + "<rdf:Desc" + moved));
  };
  splice("\n", "\n<x/>");
  splice("\n\n", "\n<x/>");
  splice(" \n", "\n\nx");
  splice("x", "\nyz");
  splice("", "abc");
  splice("", "\nab");
  splice("", "\n <x/>");
  splice("\r\n", "\n\0x"s);
  const std::string own = written(1, 14, params);
  const auto refuse = [&](std::string packet, std::size_t length, int result, int method = 14) {
    packet.resize(length, ' ');
    const auto answer = insert(2, method, packet, 0);
    EXPECT_EQ(answer, std::pair(result, packet));
  };
  refuse(before + "\n<x/>", 300, -5, 0);
  refuse(meta, 34, -34);
  refuse(" " + meta, 35, -35);
  refuse(meta, 35, -130);
  refuse(meta, 130, -130);
  refuse(meta, 131, -131);
  refuse(own, own.size(), -static_cast<int>(own.size()));
  refuse(before, before.size(), -static_cast<int>(before.size()));
  refuse(meta + std::string(28, ' ') + tag, 140, -140);
  refuse(before + "\n\n", before.size() + 2, -1);
  refuse(before + "\n\na", before.size() + 3, -1);
  EXPECT_EQ(insert(2, 14, before + "\n<x/>", -1).first, -1);
  EXPECT_EQ(insert_xmp(0, 0, params.data(), 0, 0, nullptr), -5);
  EXPECT_EQ(insert_xmp(0, INT_MAX, params.data(), 0, 0, nullptr),
            embed_xmp(0, 299, params.data(), 0, nullptr, nullptr));
}

}  // namespace
