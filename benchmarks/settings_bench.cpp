// Reading and writing settings. Every figure is read as a ratio within one run: reading to one
// memchr over the same text, writing to one snprintf a line and to one std::to_chars a value.
#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "LumenforgeMetaLib.h"
#include "packets.h"

namespace {

using namespace bench;

void oneMemchr(benchmark::State& state) {
  const std::string text = packetOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(std::memchr(text.data(), '\1', text.size()));
}

void queryMethod(benchmark::State& state) {
  const std::string text = packetOf(static_cast<std::size_t>(state.range(0)));
  const int length = static_cast<int>(text.size());
  for (auto _ : state) {
    if (get_settings_from_xmp(-1, length, bytesOf(text), nullptr, nullptr) != kDetailsEnhancer) {
      state.SkipWithError("no method");
    }
  }
}

void readRecord(benchmark::State& state) {
  const std::string text = packetOf(static_cast<std::size_t>(state.range(0)));
  const int length = static_cast<int>(text.size());
  std::array<float, kSettingsParamsSlots> params;
  for (auto _ : state) {
    if (get_settings_from_xmp(kDetailsEnhancer, length, bytesOf(text), nullptr, params.data()) <
        1) {
      state.SkipWithError("no settings");
    }
    benchmark::DoNotOptimize(params);
  }
}

// The lines of a packet with the text of each value cut out, and the values.
struct Template {
  std::vector<std::string> lines;  // printf formats
  std::vector<std::string> texts;  // what stands before each value, and behind the last
  std::vector<float> values;
};

Template settingsTemplate() {
  const std::string packet = settingsPacket();
  Template result;
  std::string line;
  std::string text;
  for (std::size_t at = 0; at < packet.size();) {
    const char before = at > 0 ? packet[at - 1] : ' ';
    const bool startsValue = (before == '>' || before == ',') &&
                             std::strchr("-0123456789", packet[at]) != nullptr &&
                             packet.compare(at, 3, "6.0") != 0;
    if (startsValue) {
      char* end = nullptr;
      result.values.push_back(std::strtof(packet.data() + at, &end));
      line += "%1.1f";
      result.texts.push_back(text);
      text.clear();
      at = static_cast<std::size_t>(end - packet.data());
      continue;
    }
    line += packet[at];
    text += packet[at];
    if (packet[at++] == '\n') {
      result.lines.push_back(line);
      line.clear();
    }
  }
  result.texts.push_back(text);
  return result;
}

void embedMeasureAndWrite(benchmark::State& state) {
  const auto params = someSettings();
  std::array<char, 4096> out;
  for (auto _ : state) {
    embed_xmp(0, kDetailsEnhancer, params.data(), 0, nullptr, nullptr);
    benchmark::DoNotOptimize(embed_xmp(1, kDetailsEnhancer, params.data(), 0, nullptr, out.data()));
    benchmark::ClobberMemory();
  }
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
void snprintfPerLine(benchmark::State& state) {
  const Template source = settingsTemplate();
  std::array<char, 4096> out;
  for (auto _ : state) {
    std::size_t length = 0;
    auto value = source.values.begin();
    for (const std::string& line : source.lines) {
      const auto next = [&] { return value != source.values.end() ? *value++ : 0.0F; };
      char* to = out.data() + length;
      const std::size_t room = out.size() - length;
      const char* format = line.c_str();
      if (line.find('%') == std::string::npos) {
        length += static_cast<std::size_t>(std::snprintf(to, room, "%s", format));
      } else if (line.find(',') == std::string::npos) {
        length += static_cast<std::size_t>(std::snprintf(to, room, format, next()));
      } else {
        float v[8];
        for (float& one : v) one = next();
        length += static_cast<std::size_t>(
            std::snprintf(to, room, format, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]));
      }
    }
    benchmark::DoNotOptimize(out);
  }
}
#pragma GCC diagnostic pop

void toCharsPerValue(benchmark::State& state) {
  const Template source = settingsTemplate();
  std::array<char, 4096> out;
  for (auto _ : state) {
    char* to = out.data();
    for (std::size_t i = 0; i < source.texts.size(); ++i) {
      std::memcpy(to, source.texts[i].data(), source.texts[i].size());
      to += source.texts[i].size();
      if (i == source.values.size()) break;
      to = std::to_chars(to, out.data() + out.size(), source.values[i], std::chars_format::fixed, 1)
               .ptr;
    }
    benchmark::DoNotOptimize(out);
    benchmark::ClobberMemory();
  }
}

constexpr int64_t kSizes[] = {4 << 10, 64 << 10, 4 << 20};

BENCHMARK(oneMemchr)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2]}});
BENCHMARK(queryMethod)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2]}});
BENCHMARK(readRecord)->ArgsProduct({{kSizes[0], kSizes[1], kSizes[2]}});
BENCHMARK(embedMeasureAndWrite);
BENCHMARK(snprintfPerLine);
BENCHMARK(toCharsPerValue);

}  // namespace
