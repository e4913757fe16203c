#include "pictures/brightness_plot.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>

namespace lfmeta {

namespace {

struct Color {
  unsigned char red, green, blue;
};

constexpr Color kPaper{255, 255, 255};
constexpr Color kInk{40, 40, 40};
constexpr Color kGrid{222, 222, 222};
constexpr Color kBar{46, 98, 148};

constexpr int kWidth = 960;
constexpr int kHeight = 540;
constexpr int kLeft = 90;  // of the field that the bars stand in
constexpr int kRight = kWidth - 30;
constexpr int kTop = 60;
constexpr int kBottom = kHeight - 80;

// Letters of five columns, the highest point of each in the lowest bit.
struct Letter {
  char code;
  std::array<unsigned char, 5> columns;
};

constexpr std::array kLetters{
    Letter{'%', {0x23, 0x13, 0x08, 0x64, 0x62}}, Letter{'+', {0x08, 0x08, 0x3E, 0x08, 0x08}},
    Letter{'-', {0x08, 0x08, 0x08, 0x08, 0x08}}, Letter{'.', {0x00, 0x60, 0x60, 0x00, 0x00}},
    Letter{'0', {0x3E, 0x51, 0x49, 0x45, 0x3E}}, Letter{'1', {0x00, 0x42, 0x7F, 0x40, 0x00}},
    Letter{'2', {0x42, 0x61, 0x51, 0x49, 0x46}}, Letter{'3', {0x21, 0x41, 0x45, 0x4B, 0x31}},
    Letter{'4', {0x18, 0x14, 0x12, 0x7F, 0x10}}, Letter{'5', {0x27, 0x45, 0x45, 0x45, 0x39}},
    Letter{'6', {0x3C, 0x4A, 0x49, 0x49, 0x30}}, Letter{'7', {0x01, 0x71, 0x09, 0x05, 0x03}},
    Letter{'8', {0x36, 0x49, 0x49, 0x49, 0x36}}, Letter{'9', {0x06, 0x49, 0x49, 0x29, 0x1E}},
    Letter{'A', {0x7E, 0x11, 0x11, 0x11, 0x7E}}, Letter{'B', {0x7F, 0x49, 0x49, 0x49, 0x36}},
    Letter{'C', {0x3E, 0x41, 0x41, 0x41, 0x22}}, Letter{'D', {0x7F, 0x41, 0x41, 0x22, 0x1C}},
    Letter{'E', {0x7F, 0x49, 0x49, 0x49, 0x41}}, Letter{'F', {0x7F, 0x09, 0x09, 0x09, 0x01}},
    Letter{'G', {0x3E, 0x41, 0x49, 0x49, 0x7A}}, Letter{'H', {0x7F, 0x08, 0x08, 0x08, 0x7F}},
    Letter{'I', {0x00, 0x41, 0x7F, 0x41, 0x00}}, Letter{'K', {0x7F, 0x08, 0x14, 0x22, 0x41}},
    Letter{'L', {0x7F, 0x40, 0x40, 0x40, 0x40}}, Letter{'M', {0x7F, 0x02, 0x0C, 0x02, 0x7F}},
    Letter{'N', {0x7F, 0x04, 0x08, 0x10, 0x7F}}, Letter{'O', {0x3E, 0x41, 0x41, 0x41, 0x3E}},
    Letter{'P', {0x7F, 0x09, 0x09, 0x09, 0x06}}, Letter{'R', {0x7F, 0x09, 0x19, 0x29, 0x46}},
    Letter{'S', {0x46, 0x49, 0x49, 0x49, 0x31}}, Letter{'T', {0x01, 0x01, 0x7F, 0x01, 0x01}},
    Letter{'U', {0x3F, 0x40, 0x40, 0x40, 0x3F}}, Letter{'V', {0x1F, 0x20, 0x40, 0x20, 0x1F}},
    Letter{'X', {0x63, 0x14, 0x08, 0x14, 0x63}}, Letter{'Y', {0x07, 0x08, 0x70, 0x08, 0x07}},
};

constexpr int kPoint = 2;             // of a letter, in pixels
constexpr int kAdvance = 6 * kPoint;  // from letter to letter
constexpr int kTextHeight = 7 * kPoint;

int widthOf(std::string_view text) {
  return static_cast<int>(text.size()) * kAdvance - kPoint;
}

class Canvas {
 public:
  Canvas() { fill(0, 0, kWidth, kHeight, kPaper); }

  // From (left, top) to before (right, bottom).
  void fill(int left, int top, int right, int bottom, Color color) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        const auto pixel = static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x);
        unsigned char* out = &pixels_[3 * pixel];
        out[0] = color.red;
        out[1] = color.green;
        out[2] = color.blue;
      }
    }
  }

  void write(int x, int y, std::string_view text) {
    for (const char c : text) {
      for (const Letter& letter : kLetters) {
        if (letter.code == c) draw(x, y, letter);
      }
      x += kAdvance;
    }
  }

  Bytes asPng() const {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = kWidth;
    image.height = kHeight;
    image.format = PNG_FORMAT_RGB;
    Bytes file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = file.size();
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels_.data(), 0, nullptr) == 0) {
      throw std::bad_alloc();
    }
    file.resize(size);
    return file;
  }

 private:
  void draw(int x, int y, const Letter& letter) {
    for (int column = 0; column < 5; ++column) {
      for (int row = 0; row < 7; ++row) {
        if ((letter.columns[static_cast<std::size_t>(column)] >> row & 1) == 0) continue;
        const int left = x + column * kPoint;
        const int top = y + row * kPoint;
        fill(left, top, left + kPoint, top + kPoint, kInk);
      }
    }
  }

  Bytes pixels_ = Bytes(std::size_t{3} * kWidth * kHeight);
};

// 1, 2 or 5 times a power of ten, so that no more than `most` of them cover the range.
double stepFor(double range, int most) {
  double step = std::pow(10.0, std::floor(std::log10(range / most)));
  for (const double factor : {2.0, 2.5, 2.0}) {
    if (step * most < range) step *= factor;
  }
  return step;
}

std::string textOf(double number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.6g", number);
  return text.data();
}

// Lines across the field with what they stand for; returns the share at the top, in percent.
double drawShares(Canvas& canvas, double largest) {
  const double step = stepFor(largest, 5);
  const double top = std::ceil(largest / step) * step;
  for (int line = 0; line * step <= top * 1.001; ++line) {
    const double share = line * step;
    const int y = kBottom - static_cast<int>(std::lround(share / top * (kBottom - kTop)));
    canvas.fill(kLeft, y, kRight, y + 1, line == 0 ? kInk : kGrid);
    const std::string text = textOf(share) + "%";
    canvas.write(kLeft - 10 - widthOf(text), y - kTextHeight / 2, text);
  }
  return top;
}

void drawBars(Canvas& canvas, const Brightness& brightness) {
  const std::span<const uint64_t> counts = brightness.stops.counts();
  const double pixels = static_cast<double>(brightness.width) * brightness.height;
  const auto shareOf = [&](uint64_t count) { return 100 * static_cast<double>(count) / pixels; };
  const double top = drawShares(canvas, shareOf(*std::max_element(counts.begin(), counts.end())));
  const int bars = static_cast<int>(counts.size());
  const auto edge = [&](int bar) { return kLeft + (kRight - kLeft) * bar / bars; };
  const int gap = (kRight - kLeft) / bars > 8 ? 2 : 0;
  // Labels at the whole steps between stops, as many as find room.
  const int step = std::max(1, static_cast<int>(stepFor(bars, 16)));
  for (int bar = 0; bar < bars; ++bar) {
    const double share = shareOf(counts[static_cast<std::size_t>(bar)]);
    int height = static_cast<int>(std::lround(share / top * (kBottom - kTop)));
    if (share > 0) height = std::max(height, 1);
    canvas.fill(edge(bar) + gap, kBottom - height, edge(bar + 1), kBottom, kBar);
  }
  for (int bar = 0; bar <= bars; ++bar) {
    const int stop = brightness.stops.first() + bar;
    if (stop % step != 0) continue;
    std::string text = std::to_string(stop);
    if (stop > 0) text.insert(text.begin(), '+');
    canvas.fill(edge(bar), kBottom, edge(bar) + 1, kBottom + 6, kInk);
    canvas.write(edge(bar) - widthOf(text) / 2, kBottom + 12, text);
  }
}

}  // namespace

Bytes plotBrightness(const Brightness& brightness) {
  Canvas canvas;
  std::string range = "ALL PIXELS ARE BLACK";
  if (!brightness.isBlack()) {
    drawBars(canvas, brightness);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f", brightness.range());
    range = std::string("DYNAMIC RANGE ") + text.data() + " STOPS";
  }
  constexpr std::string_view kStops = "STOPS FROM BRIGHTNESS 1";
  canvas.write(kLeft, kTop / 2 - kTextHeight, "PIXELS");
  canvas.write(kRight - widthOf(range), kTop / 2 - kTextHeight, range);
  canvas.write((kLeft + kRight - widthOf(kStops)) / 2, kHeight - 30, kStops);
  return canvas.asPng();
}

}  // namespace lfmeta
