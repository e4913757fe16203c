// lfmeta hdr: how the brightness of a floating-point picture is distributed.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "base/failure.h"
#include "base/input_file.h"
#include "base/json.h"
#include "base/output.h"
#include "base/replacement_file.h"
#include "base/report.h"
#include "commands/commands.h"
#include "commands/picture_options.h"
#include "pictures/brightness.h"
#include "pictures/brightness_plot.h"

namespace lfmeta {

namespace {

struct Options {
  PictureOptions picture;
  bool json = false;
  Output plot;
};

Brightness measure(const PictureOptions& picture) {
  const InputFile file(picture.in);
  try {
    return measureBrightness(
        {file.stream(), file.size(), memoryFor(file.size(), picture.memoryAsked())});
  } catch (const std::runtime_error& error) {
    throw Failure(picture.in, error.what());
  }
}

void printJson(const std::string& path, const Brightness& found) {
  const bool black = found.isBlack();
  const std::span<const uint64_t> counts = found.stops.counts();
  Json all = jsonOfFile(path);
  all.update({{"width", found.width},
              {"height", found.height},
              {"minimum", black ? Json() : jsonNumber(found.minimum)},
              {"maximum", jsonNumber(found.maximum)},
              {"mean", jsonNumber(found.mean)},
              {"stops", black ? Json() : Json(found.range())},
              {"black", found.black},
              {"notFinite", found.notFinite},
              {"firstStop", black ? Json() : Json(found.stops.first())},
              {"pixelsOfStops", Json(std::vector<uint64_t>(counts.begin(), counts.end()))}});
  std::printf("%s\n", jsonLine(all).c_str());
}

// The brightest stop first; of many empty ones in a row, one line.
void printBars(const Brightness& found) {
  constexpr std::size_t kLongestBar = 44;
  constexpr std::size_t kMostEmpty = 2;
  const std::span<const uint64_t> counts = found.stops.counts();
  const double all = static_cast<double>(found.width) * found.height;
  const auto most = static_cast<double>(*std::max_element(counts.begin(), counts.end()));
  std::printf("\n  Stop  Brightness    Pixels\n");
  std::size_t empty = 0;
  for (std::size_t i = counts.size(); i-- > 0;) {
    empty = counts[i] == 0 ? empty + 1 : 0;
    if (empty > kMostEmpty) {
      if (empty == kMostEmpty + 1) std::printf("   ...\n");
      continue;
    }
    const int stop = found.stops.first() + static_cast<int>(i);
    const auto count = static_cast<double>(counts[i]);
    const auto length = static_cast<std::size_t>(std::ceil(kLongestBar * count / most));
    const std::string bar = (length > 0 ? " " : "") + std::string(length, '#');
    std::printf("  %+4d  %10.4g  %6.2f %%%s\n", stop, std::ldexp(1.0, stop), 100 * count / all,
                bar.c_str());
  }
  if (found.black > 0) {
    std::printf("  black             %6.2f %%\n", 100 * static_cast<double>(found.black) / all);
  }
}

void printText(const std::string& path, const Brightness& found) {
  std::printf("%s\n  Size           %d x %d\n", printable(path).c_str(), found.width, found.height);
  if (found.notFinite > 0) {
    std::printf("  Not finite     %llu pixel%s\n", static_cast<unsigned long long>(found.notFinite),
                found.notFinite == 1 ? "" : "s");
  }
  if (found.isBlack()) {
    std::printf("  All pixels are black.\n");
    return;
  }
  std::printf(
      "  Minimum        %.6g\n  Maximum        %.6g\n  Mean           %.6g\n"
      "  Dynamic range  %.2f stops\n",
      static_cast<double>(found.minimum), static_cast<double>(found.maximum),
      static_cast<double>(found.mean), found.range());
  printBars(found);
}

int showBrightness(const Options& options) {
  const Brightness found = measure(options.picture);
  if (!options.plot.path.empty()) {
    ReplacementFile plot(options.plot, {options.picture.in});
    plot.write(plotBrightness(found));
    plot.commit();
  }
  if (options.plot.path != "-") {
    (options.json ? printJson : printText)(options.picture.in, found);
  }
  return kSuccess;
}

}  // namespace

void addHdrCommand(CLI::App& app, Run& chosen) {
  CLI::App* command =
      app.add_subcommand("hdr", "Measure the brightness of a floating-point picture");
  const auto options = std::make_shared<Options>();
  command
      ->add_option("FILE", options->picture.in,
                   "Radiance, OpenEXR or PFM picture, or a TIFF picture of floats")
      ->type_name("")
      ->required();
  command->add_flag("--json", options->json, "One JSON object");
  options->plot.addTo(*command, "--plot", "OUT.png", "Draw the distribution", FileKind::png);
  options->picture.addTo(*command);
  command->footer(
      "The brightness of a pixel is (19 red + 183 green + 54 blue) / 256 in the picture's own "
      "units; that of a Radiance picture's mantissas is rounded down. Pixels of brightness 0 or "
      "less are black: they count neither for the minimum nor for the mean, and those that are "
      "not finite for nothing at all. The dynamic range is from the minimum to the maximum. Stop "
      "n is the brightness from 2^n to below 2^(n+1).");
  runWhenAsked(*command, chosen, options, showBrightness);
}

}  // namespace lfmeta
