// lfmeta hdr: the brightness of a Radiance picture.
#include <LumenforgeMetaLib.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "base/failure.h"
#include "base/input_file.h"
#include "base/report.h"
#include "commands/commands.h"
#include "pictures/radiance.h"

namespace lfmeta {

namespace {

// The library's brightness counts mantissas as integers, a picture's counts them as 256ths.
constexpr float kMantissaUnit = 1.0F / 256;

struct Brightness {
  int width;
  int height;
  float minimum;  // of the pixels that are not black
  float maximum;  // 0 when all are black
  float mean;

  bool isBlack() const { return !(maximum > 0); }
  double stops() const { return std::log2(static_cast<double>(maximum) / minimum); }
};

Brightness measure(const std::string& path) {
  const InputFile file(path);
  Image picture;
  try {
    picture = readRadiancePlanes({file.stream(), file.size(), memoryFor(file.size(), {})});
  } catch (const std::runtime_error& error) {
    throw Failure(path, error.what());
  }
  std::array<float, 3> result{};
  if (hdrMinMax(picture.width, picture.height, picture.pixels.get(), result.data()) < 0) {
    throw Failure(path, "needs more memory than there is");
  }
  return {picture.width, picture.height, result[0] * kMantissaUnit, result[1] * kMantissaUnit,
          result[2] * kMantissaUnit};
}

void printJson(const std::string& path, const Brightness& found) {
  const bool black = found.isBlack();
  const Json all{{"file", path},
                 {"width", found.width},
                 {"height", found.height},
                 {"minimum", black ? Json() : jsonNumber(found.minimum)},
                 {"maximum", jsonNumber(found.maximum)},
                 {"mean", jsonNumber(found.mean)},
                 {"stops", black ? Json() : Json(found.stops())}};
  std::printf("%s\n", jsonLine(all).c_str());
}

void printText(const std::string& path, const Brightness& found) {
  std::printf("%s\n  Size           %d x %d\n", printable(path).c_str(), found.width, found.height);
  if (found.isBlack()) {
    std::printf("  All pixels are black.\n");
    return;
  }
  std::printf(
      "  Minimum        %.6g\n  Maximum        %.6g\n  Mean           %.6g\n"
      "  Dynamic range  %.2f stops\n",
      static_cast<double>(found.minimum), static_cast<double>(found.maximum),
      static_cast<double>(found.mean), found.stops());
}

struct Options {
  std::string file;
  bool json = false;
};

int measureBrightness(const Options& options) {
  (options.json ? printJson : printText)(options.file, measure(options.file));
  return kSuccess;
}

}  // namespace

void addHdrCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("hdr", "Measure the brightness of a Radiance picture");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE.hdr", options->file, "Radiance picture (RGBE)")
      ->type_name("")
      ->required();
  command->add_flag("--json", options->json, "One JSON object");
  command->footer(
      "The brightness of a pixel is (19 red + 183 green + 54 blue) / 256 in the picture's own "
      "units. "
      "The minimum is that of the pixels that are not black; the dynamic range is from there to "
      "the "
      "maximum.");
  runWhenAsked(*command, chosen, options, measureBrightness);
}

}  // namespace lfmeta
