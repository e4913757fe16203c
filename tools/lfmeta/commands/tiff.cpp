// lfmeta tiff: a picture becomes a finished TIFF file, with what a photograph says of its taking.
#include <LumenforgeMetaLib.h>

#include <CLI/CLI.hpp>
#include <limits>
#include <optional>
#include <string>

#include "base/command_line.h"
#include "base/failure.h"
#include "base/replacement_file.h"
#include "base/report.h"
#include "commands/commands.h"
#include "commands/finished_metadata.h"
#include "commands/picture_options.h"
#include "photos/icc_profile.h"

namespace lfmeta {

namespace {

constexpr int kDefaultResolution = 300;
constexpr int kHighestResolution = std::numeric_limits<int>::max() / 1000;

struct Options {
  PictureOptions picture;
  Output out;
  std::optional<int> resolution;
  FinishedMetadataOptions metadata;
};

const char* failedStage(int result) {
  switch (result) {
    case -1:
      return "cannot be created";
    case LUMENFORGE_HEADER_NOT_WRITTEN:
      return "cannot be written: the header failed; is there room on the disk?";
    case LUMENFORGE_PIXELS_NOT_WRITTEN:
      return "cannot be written: the pixels failed; is there room on the disk?";
    case LUMENFORGE_NO_MEMORY:
      return "cannot be written: no memory for a block of pixels";
    case LUMENFORGE_UNSUPPORTED_IMAGE:
      return "cannot be written: larger than a TIFF file can be";
    case LUMENFORGE_DIRECTORY_NOT_WRITTEN:
      return "cannot be written: the directory behind the pixels failed; is there room on the "
             "disk?";
    default:
      return "cannot be written";
  }
}

int writeTiff(const Options& options) {
  ReplacementFile file(options.out, {options.picture.in, options.metadata.photo.value_or(""),
                                     options.metadata.profile.value_or("")});
  FinishedMetadata with = options.metadata.read();
  Image image = options.picture.read();
  const bool gray = image.channels <= 2;
  options.metadata.fitProfile(with, std::move(image.iccProfile), gray);
  // The library writes RGB profiles; a gray one is added to the file that it has written.
  const Bytes rgbProfile = gray ? Bytes() : with.profile.bytes;

  TifImageInfo info{};
  info.width = image.width;
  info.height = image.height;
  info.channels = image.channels;
  info.bitsPerSample = image.sample == Sample::half ? LUMENFORGE_HALF_FLOAT
                                                    : static_cast<int>(8 * sizeOf(image.sample));
  const int known = image.resolution > 0 ? image.resolution : kDefaultResolution;
  info.resolution = options.resolution.value_or(known);
  info.iccLength = static_cast<int>(rgbProfile.size());
  info.orientation = image.orientation > 1 ? image.orientation : with.orientation;

  const int result = buf2tif(
      image.pixels.get(), &info, static_cast<int>(image.rowSize()), rgbProfile.data(), &with.meta,
      &with.gps, static_cast<int>(with.iptc.size()), with.iptc.data(), with.method, with.settings,
      static_cast<int>(with.xmp.size()), with.xmp.data(), file.path().c_str());
  if (result < 0) throw Failure(options.out.path, failedStage(result));
  if (gray && !with.profile.bytes.empty()) {
    setTiffProfile(file.path(), with.profile,
                   options.metadata.profile.value_or(options.picture.in));
  }
  file.commit();
  if (!with.notTaken.empty()) printFailure(*options.metadata.photo, "not taken: " + with.notTaken);
  return kSuccess;
}

}  // namespace

void addTiffCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("tiff", "Write a picture as a finished TIFF file");
  const auto options = std::make_shared<Options>();
  command
      ->add_option("IN", options->picture.in,
                   "PNG, JPEG, TIFF, OpenEXR, PNM, PAM, PFM or Radiance picture")
      ->type_name("")
      ->required();
  options->out.addTo(*command, "OUT.tif", FileKind::tiff)->required();
  options->picture.addDepthTo(*command);
  options->metadata.addTo(*command);
  command->add_option("--resolution", options->resolution, "Pixels per inch (that of IN, else 300)")
      ->transform(wholeNumber(1, kHighestResolution))
      ->type_name("N");
  options->picture.addTo(*command);
  command->footer(
      "Between integers and floating point, 0 to 1 stands for the whole range of the integers: "
      "floats outside of it are cut off, and no tone curve is applied. 8 bits become 16 times 257; "
      "16 bits become 8 by their high byte. Floats become the nearest half, infinite from 65520 "
      "on. Opacity is left out. Settings asked for with --method take the place of those in the "
      "photograph's packet. Pixels may take 64 MiB, or 1032 bytes for each byte of IN, and 2 GiB "
      "at most; --max-memory sets another limit. "
      "A progressive JPEG takes up to three times as much again while it is read.");
  runWhenAsked(*command, chosen, options, writeTiff);
}

}  // namespace lfmeta
