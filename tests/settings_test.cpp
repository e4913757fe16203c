// The settings wing: packets written byte for byte, read back, spliced, and kept in files.
#include <gtest/gtest.h>
#include <sys/mman.h>

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
using Slots = std::vector<std::pair<std::size_t, float>>;

// The method's defaults, some slots changed.
Params record(int method, const Slots& changes = {}) {
  Params params;
  params.fill(-1);
  EXPECT_EQ(def_param(method, params.data()), 0);
  for (const auto& [slot, value] : changes) params[slot] = value;
  return params;
}

// "Name=value, Name=value" as elements, one a line.
std::string elements(const std::string& list) {
  std::string lines;
  for (std::size_t at = 0, end = 0; at < list.size(); at = end + 2) {
    end = std::min(list.find(", ", at), list.size());
    const std::size_t equals = list.find('=', at);
    const std::string name = "lfst:" + list.substr(at, equals - at) + ">";
    lines += "<" + name + list.substr(equals + 1, end - equals - 1) + "</" + name + "\n";
  }
  return lines;
}

// The text, until the next call, where memory ends behind it: a step beyond it ends the test.
unsigned char* guarded(const std::string& text) {
  constexpr std::size_t kRoom = 1 << 16;
  static void* const memory = mmap(nullptr, 2 * kRoom, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* const end = static_cast<unsigned char*>(memory) + kRoom;
  mprotect(end, kRoom, PROT_NONE);
  return static_cast<unsigned char*>(std::memcpy(end - text.size(), text.data(), text.size()));
}

// Of the text and a NUL behind it.
int settingsOf(const std::string& text, int selector, Params& params, char* lens = nullptr) {
  const auto length = static_cast<int>(text.size() + 1);
  return get_settings_from_xmp(selector, length, guarded(text + '\0'), lens, params.data());
}

std::string written(int setNumber, int method, const Params& params, const char* lens = nullptr) {
  const int length = embed_xmp(0, method, params.data(), lens != nullptr, lens, nullptr) + (setNumber > 99 ? 1 : 0);
  auto* const out = reinterpret_cast<char*>(guarded(std::string(static_cast<std::size_t>(length), '#')));
  EXPECT_EQ(embed_xmp(setNumber, method, params.data(), lens != nullptr, lens, out), length);
  return {out, out + length};
}

const std::string kDeclaration = "xmlns:lfst='http://ns.lumenforge.org/";
const std::string kHead = kDeclaration + "lumenforge_settings01'>\n";

// The blocks of all methods stand in a file, of a record whose slots hold their own numbers: a value shows its slot.
TEST(PacketWriter, WritesEveryMethodInItsOrder) {
  const std::string opening =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'>\n<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n";
  const std::string lens =
      "<rdf:Description rdf:about=''\nxmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>\n"
      "<aux:Lens>EF 24-70 \"L\"</aux:Lens>\n</rdf:Description>\n\n";
  Params params;
  for (std::size_t i = 0; i < params.size(); ++i) params[i] = static_cast<float>(i);
  params[16] = 1;
  std::string blocks;
  for (const int method : {1, 2, 3, 4, 5, 9, 10, 11, 12, 13, 14, 15, 16, 200}) {
    std::string block = written(1, 200 + method, params);
    blocks += block;
    EXPECT_EQ(written(1, method, params), opening + block + "</rdf:RDF>\n</x:xmpmeta>\n");
    block.replace(block.find("01'"), 2, "07");
    EXPECT_EQ(written(7, 200 + method, params, "EF 24-70 \"L\""), lens + block);
  }
  EXPECT_EQ(blocks, build::contentsOf("tests/settings_blocks.xmp"));
  EXPECT_EQ(embed_xmp(0, 0, nullptr, 0, nullptr, nullptr), 128);
  EXPECT_EQ(written(-5, -3, params, std::string(300, 'x').c_str()).size(), 128 + 119 + 300U);
  EXPECT_EQ(written(-5, INT_MAX, params), written(1, 216, params));
  for (const auto& [set, digits] : {std::pair(9, "09"), {10, "10"}, {100, "100"}})
    EXPECT_NE(written(set, 216, params).find("_settings"s + digits + "'>\n"), std::string::npos);
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
    ASSERT_EQ(settingsOf(packet, method, read), 229);
    ASSERT_EQ(written(1, method, read), packet);
    ASSERT_GT(settingsOf(attributes, method, same), 0);
    ASSERT_EQ(same, read) << attributes;
  }
  std::setlocale(LC_NUMERIC, "C");
  if (!german) GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed: only \"C\" was tried";
}

TEST(Defaults, OfEveryMethod) {
  const std::pair<int, Slots> cases[] = {{1, {{1, 70}, {3, 0.25F}, {5, 1}, {7, 2}, {16, 1}}},
                                         {3, {{0, 50}, {2, 20}, {3, 0.6F}, {4, 0.25F}}},
                                         {4, {{0, 50}, {3, 0.60359085F}}},
                                         {10, {{8, 2}}},
                                         {11, {{2, 70}}},
                                         {12, {{8, 2}, {9, 1}}},
                                         {15, {{8, 2}, {9, 1}}}};
  for (const auto& [method, slots] : cases) {
    Params expected{};
    for (const auto& [slot, value] : slots) expected[slot] = value;
    EXPECT_EQ(record(method), expected);
  }
  for (const int method : {0, 2, 5, 6, 7, 8, 9, 13, 14, 16, 200, -1, INT_MIN}) EXPECT_EQ(record(method), Params{});
}

struct RecordCase {
  int method;
  Slots slots;  // beside the method's defaults
  std::string elements;
};

TEST(PacketWriter, WritesEveryValueExactly) {
  std::vector<RecordCase> cases = {{13, {{6, 1.25F}, {12, -0.04F}}, "ColorTemperature=-0.0, Brightness=1.2"},
                                   {13, {{6, 3.4e38F}}, "Brightness=339999995214436424907732413799364296704.0"},
                                   {15, {{7, NAN}, {15, 1}}, "IsPano360=No "},
                                   {3, {{3, 0.6F}, {4, 0.25F}}, "WhiteClip=3.992, BlackClip=3.000"},
                                   {3, {{3, 1}, {4, 10}}, "WhiteClip=4.717, BlackClip=10.000"},
                                   {1, {{16, 1.9F}, {17, 117}}, "SmoothingMode=Slider, Smoothing=117.0"}};
  const std::pair<float, std::string> levels[] = {{0.5F, "Very High"}, {1, "High    "},    {2.9F, "Medium  "},
                                                  {3, "Low     "},     {4.9F, "Very Low"}, {5, "Light"},
                                                  {NAN, "Light"}};
  for (const auto& [level, word] : levels)
    cases.push_back({1, {{16, -0.9F}, {5, level}}, "SmoothingMode=Light, Smoothing=" + word + ", Microsmoothing=2.0"});
  for (const float mode : {2.0F, -1.0F, NAN})
    cases.push_back({1, {{16, mode}}, "SmoothingMode=Light, SmoothingMode=Light, Microsmoothing=2.0"});
  for (const auto& [method, slots, list] : cases) {
    const std::string packet = written(1, method, record(method, slots));
    EXPECT_NE(packet.find(elements(list)), std::string::npos) << list << packet;
  }
}

TEST(Reader, TakesTheFirstElementOfEachNameBehindTheMethod) {
  const std::string details = "Method=Details Enhancer, ";
  const std::vector<RecordCase> cases = {
      {1, {{0, 3}}, "Method=Contrast Enhancer and, Luminosity=3, ToneCompression=5"},
      {1, {}, "Strength=9, Method=Details Enhancer, Luminosity=x, ToneCompression=5"},
      {1, {}, details + "Smoothing=Low"},
      {1,
       {{8, -10}, {2, 0}, {7, 4}},
       details + "Gamma=2, Brightness=3, ColorSaturation=50, Saturation=7, NoiseSmoothing=4"},
      {1, {{8, 6.6666665F}, {2, -10}}, details + "Brightness=3, Gamma=0.5, Saturation=7, ColorSaturation=?"},
      {1, {{6, 8}}, details + "Microcontrast=8"},
      {1, {{6, 8}}, details + "DetailContrast=7, Microcontrast=8"},
      {1, {{8, INFINITY}, {16, 0}, {5, 2}}, details + "Brightness=3, Gamma=-, Smoothing=Medium, SmoothingMode=Light"},
      {1, {{15, 1}, {16, 0}, {5, 4}}, details + "IsPano360=Yesterday, SmoothingMode=Light, Smoothing=Very Lower"},
      {1, {{16, 0}}, details + "SmoothingMode=Light, Smoothing=Extreme"},
      {1, {{17, 3.5F}}, details + "SmoothingMode=Ligh, Smoothing=3.5"},
      {1, {{1, 5}, {4, -0.1F}}, details + "Strength=(5, WhiteClip=((5, BlackClip=   -1e-1x"},
      {1, {{17, 2}}, details + "SmoothingModes=Light, SmoothingMode=Light, Smoothing=2"},
      {2, {{13, INFINITY}, {0, 8}}, "Method=Smooth Adaptation, Method=Average, Saturation=inf(, Brightness=0x1p3"},
      {3,
       {{3, 0.60359085F}, {4, 1.2342758e-4F}, {8, 1}},
       "Method=Contrast Optimizer, WhiteClip=4.000, BlackClip=?, Midtone=1, Brightness=2"},
      {3, {}, "Method=Contrast Optimizer"},
      {4, {}, "Method=Tone Balancer"},
      {10, {{6, 1}}, "Method=Fusion/Adjust, Brightness=1"},
      {15, {{1, 1}}, "Method=Fusion/Real-Estate, Highlights=\0 1, Shadows=0\0001"s},
      {15, {}, "Method=Fusion/Realistic, HighlightsX=1, xHighlights=2, Highlight=3"},
      {0, {{51, INFINITY}, {52, -2}}, "Method=average, BlendingOpacity=1e39, BlendWithEV=-2"},
  };
  for (const auto& [method, slots, list] : cases) {
    const std::string text = kHead + elements(list);
    Params params;
    EXPECT_EQ(settingsOf(text, -1, params), method) << text;
    EXPECT_EQ(settingsOf(text, method, params), text.find("lfst:Method")) << text;
    EXPECT_EQ(params, record(method, slots)) << text;
  }
}

TEST(Reader, SaysWhatIsMissing) {
  constexpr int kUntouched = -1;
  struct Case {
    std::string text;
    int declarations, selector, result;
    int stored = kUntouched;  // the method whose defaults the record then holds
  };
  const std::vector<Case> cases = {{"", 0, -1, 0},
                                   {"xmlns:lfst='http://ns.lumenforge.org", 0, -1, 0},
                                   {"xmlns:lfst=`http://ns.lumenforge.org/lfst:Method>A", 0, -1, 0},
                                   {kDeclaration, 1, -1, -5},
                                   {kDeclaration, 1, 0, 37, 0},
                                   {kDeclaration + "12345678901", 1, 0, 38, 0},
                                   {kDeclaration + "\0xmlns:lfst=xmlns:lfst=\"http://ns.lumenforge.org/"s, 2, -1, -5},
                                   {kDeclaration + "lfst:Metho", 1, 14, -5},
                                   {"lfst:Method>Average" + kDeclaration, 1, 14, -5},
                                   {kDeclaration + "xlfst:Method>Average", 1, 14, 38, 14},
                                   {kDeclaration + "<lfst:Method>Average", 1, 12, -5},
                                   {kDeclaration + "lfst:Method=\"Average\"", 1, -1, 14},
                                   {kDeclaration + "lfst:MethodXAverage", 1, -1, 14},
                                   {kDeclaration + "lfst:Method>Averag", 1, -1, 0}};
  Params untouched;
  untouched.fill(9);
  for (const auto& [text, declarations, selector, result, stored] : cases) {
    Params params = untouched;
    EXPECT_EQ(settingsOf(text, selector, params), result) << text;
    EXPECT_EQ(params, stored == kUntouched ? untouched : record(stored)) << text;
    const auto length = static_cast<int>(text.size() + 1);
    EXPECT_EQ(lfsettings_occurences_in_xmp(length, guarded(text + '\0')), declarations) << text;
  }
  for (const int length : {INT_MIN, 0, 7}) {
    for (const int selector : {-1, 0, 14, 100})
      EXPECT_EQ(get_settings_from_xmp(selector, length, guarded("Average"), nullptr, nullptr), -3);
    EXPECT_EQ(lfsettings_occurences_in_xmp(length, guarded("Average")), -3);
  }
}

TEST(Reader, CopiesTheLensThatFits) {
  const std::string declaration = "xmlns:aux=\"http://ns.adobe.com/exif/1.0/aux/";
  const std::string longest(63, 'L');
  struct Case {
    std::string text;  // behind the declaration
    int result;        // counted from there
    std::string lens;
  };
  const std::vector<Case> cases = {{"1234567", 0, ""},
                                   {"aux:Lens", 1, ""},
                                   {"aux:LensID=\"9\" aux:Lens=\"EF\">", 27, "EF"},
                                   {"aux:Lens=\"\"", 10, ""},
                                   {"aux:Lens='EF'", 14, ""},
                                   {"aux:Lens='EF' a=\"", 16, "EF' a="},
                                   {"aux:Lens=", 10, ""},
                                   {"aux:Lens=\"" + longest + "\"", 73, longest},
                                   {"aux:Lens=\"" + longest + "L\"", 74, ""},
                                   {"aux:Lens>EF", 9, ""},
                                   {"aux:Lens>EF 24</aux:Lens", 14, "EF 24"},
                                   {"aux:Lens>EF 24</aux:Len", 14, ""},
                                   {"aux:Lens>" + longest + "</aux:Lens>", 72, longest},
                                   {"aux:Lens>" + longest + "LLL</aux:Lens>", 73, ""}};
  const auto lensOf = [](const std::string& text) {
    std::string out(64, '.');
    Params params;
    const int result = settingsOf(text, 100, params, out.data());
    return std::pair(result, out);
  };
  for (const auto& [text, result, lens] : cases)
    EXPECT_EQ(lensOf(declaration + text), std::pair(44 + result, lens + std::string(64 - lens.size(), '.'))) << text;
  const std::string none(64, '.');
  EXPECT_EQ(lensOf(declaration.substr(0, 43)), std::pair(0, none));
  EXPECT_EQ(lensOf(declaration.substr(0, 43) + "x"), std::pair(1, none));
}

// The search for one tag after the other is the definition of what the one pass finds.
TEST(Reader, FindsWhatTheSearchForEveryTagFinds) {
  std::istringstream listed(
      "0 Accentuation 0 Strength 1 BlendingPoint 1 ExposureBalance 2 ShadowsContrast 2 Shadows 3 Saturation "
      "4 WhiteClip 5 BlackClip 6 MidtonesAdjustment 6 Brightness 7 IsPano360 8 Sharpness 12 ColorTemperature "
      "21 SaturationIndividualColors 31 TemperatureIndividualColors 41 BrightnessIndividualColors "
      "51 BlendingOpacity 52 BlendWithEV");
  std::vector<std::pair<int, std::string>> tags;  // with their slots
  for (std::pair<int, std::string> tag; listed >> tag.first >> tag.second;) tags.push_back(tag);
  const auto kindOf = [](int slot) { return slot == 7 ? 1 : slot > 20 && slot < 50 ? 20 : 0; };
  const char* const values[] = {"1", "-2.5", "Yes", "x", "", "1,2,3,4,5,6,7,8", "lfst:Strength>4"};
  std::mt19937 random(5);
  const auto pick = [&random](const auto& list) { return list[random() % std::size(list)]; };
  for (int round = 0; round < 3'000; ++round) {
    std::string text = kHead + elements("Method=Fusion/Natural");
    const auto method = static_cast<int>(text.find("lfst:Method"));
    for (auto n = random() % 12; n > 0; --n)
      text += std::string(random() % 400, ' ') + elements(pick(tags).second + "=" + pick(values));
    for (auto n = random() % 3; n > 0; --n) text[80 + random() % (text.size() - 80)] = "<>=l:s\0"[random() % 7];
    text.resize(text.size() - random() % 9);
    Params params, expected = record(10);
    if (settingsOf(text, 10, params) != method) continue;
    text += '\0';
    std::array<int, kSettingsParamsSlots> found{};
    for (const auto& [slot, name] : tags) {
      searchForTag(slot, ("lfst:" + name).c_str(), kindOf(slot), guarded(text) + method, 1,
                   static_cast<int>(text.size()) - method, found.data(), expected.data());
    }
    ASSERT_EQ(params, expected) << text;
  }
}

TEST(SearchForTag, StoresOneValueAndMarksItsSlot) {
  constexpr float kBefore = 9;
  struct Case {
    int kind, form;
    std::string text;
    int result;
    std::optional<float> stored = {};  // none: the tag is not found
    const char* tag = "a:S";
  };
  const std::vector<Case> cases = {{0, 1, "<a:S>70.0</a:S>", 1, 70},
                                   {0, 2, "<a:S=\"70.0\" ", 1, 70},
                                   {0, 1, "<a:S=\"70.0\" ", 8},
                                   {1, 1, "<a:S>Yes", 1, 1},
                                   {1, 1, "<a:S>Ye", 1, 0},
                                   {0, 1, "<a:S>x", 1, kBefore},
                                   {20, 1, "<a:S>1,2,3,4,5,6,7,8", 1, 1},
                                   {20, 1, "<a:S>1,2,3,4,5,6,7", 1, kBefore},
                                   {7, 1, "<a:S>1", 2},
                                   {0, 1, "<a:S>", 1},
                                   {0, 1, "a:S>", 0},
                                   {0, 0, "<a:S>12", 1, 12},
                                   {0, 3, "<a:S>123", 1, 3},
                                   {0, INT_MIN, "<a:S>1", 1, kBefore},
                                   {0, INT_MAX, "<a:S>1", 1, kBefore},
                                   {0, 1, "<a:SX>1<a:S>2", 8, 2},
                                   {0, 1, "<a:S b=''>1</a:S>2", 13, 2},
                                   {0, 1, "x>>7", 1, 7, ""}};
  for (const auto& [kind, form, text, result, stored, tag] : cases) {
    std::array<int, kSettingsParamsSlots> found{};
    Params values;
    values.fill(kBefore);
    for (const int expected : {result, stored ? 0 : result}) {  // what was found is left alone
      EXPECT_EQ(expected, searchForTag(52, tag, kind, guarded(text), form, static_cast<int>(text.size()), found.data(),
                                       values.data()));
      EXPECT_EQ(found[52], stored.has_value()) << text;
      EXPECT_EQ(values[52], stored.value_or(kBefore)) << text;
    }
  }
}

TEST(Files, HoldPacketsAndTheirRegions) {
  Params params = record(4, {{8, 3.5F}}), read;
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

  // What is read before the declaration is given up again, wherever that begins.
  for (const std::size_t blanks : {65536U - 171, 65536U - 170, 65536U - 150, 65536U - 134, 65536U, 262144U}) {
    std::ofstream(file.path()) << std::string(blanks, ' ') << packet << std::string(70000, ' ');
    EXPECT_EQ(read_xmp(file.path(), 4, read.data()), static_cast<int>(blanks) + 229);
    EXPECT_EQ(read, params);
  }

  // A file of more than 2 GiB, with a packet across that border.
  ASSERT_EQ(::truncate(file.path(), INT_MAX), 0);
  std::ofstream(file.path(), std::ios::binary | std::ios::in | std::ios::ate) << packet << packet;
  EXPECT_EQ(extract(size, INT_MAX), std::pair(4, packet.substr(0, 4)));
  EXPECT_EQ(read_xmp(file.path(), -1, nullptr), -1);
}

TEST(Insert, PutsTheBlockBehindTheTagAndMovesTheTail) {
  const Params params = record(14, {{6, 2}});
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
