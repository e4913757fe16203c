// lfmeta tiff: a picture becomes a finished TIFF file, with what a photograph says of its taking.
#include <LumenforgeMetaLib.h>

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/replacement_file.h"
#include "base/report.h"
#include "commands/commands.h"
#include "commands/settings_options.h"
#include "photos/icc_profile.h"
#include "photos/photo_source.h"
#include "pictures/sample_depth.h"

namespace lfmeta {

namespace {

constexpr int kDefaultResolution = 300;
constexpr int kHighestResolution = std::numeric_limits<int>::max() / 1000;

struct Options {
  std::string in;
  std::string out;
  std::optional<std::string> depth;
  std::optional<std::string> photo;
  std::vector<std::string> keywords;
  std::optional<std::string> profile;
  int resolution = kDefaultResolution;
  SettingsOptions settings;
};

const std::map<std::string, Sample> kDepths{{"8", Sample::integer8},
                                            {"16", Sample::integer16},
                                            {"half", Sample::half},
                                            {"float", Sample::float32}};

// All that goes into the file beside the pixels.
struct Description {
  MetadataBuf meta{};
  GpsBuf gps{};
  int orientation = 0;
  Bytes iptc;
  Bytes xmp;
  Bytes profile;
  int method = 0;
  SettingsParams settings{};
};

void addKeywords(const Options& options, Bytes& iptc) {
  constexpr std::size_t kMostAdded = 12;  // a new block's first dataset and the keyword's header
  for (const std::string& keyword : options.keywords) {
    Bytes longer(iptc.size() + kMostAdded + keyword.size());
    const int result = add_iptc_keyword(
        static_cast<int>(iptc.size()), iptc.data(), static_cast<int>(keyword.size()),
        reinterpret_cast<const unsigned char*>(keyword.data()), longer.data());
    if (result == -2) throw Failure("--keyword", "takes at most 65535 bytes");
    if (result < 0) {
      throw Failure(*options.photo, "has a damaged IPTC block; no keyword can be added to it");
    }
    longer.resize(longer.size() - (iptc.empty() ? 0 : 7));
    iptc = std::move(longer);
  }
}

Description describe(const Options& options) {
  Description description;
  description.method = options.settings.read(description.settings);
  if (options.photo) {
    PhotoSource photo = readPhotoSource(*options.photo);
    exportRecords(photo.info, description.meta, description.gps);
    description.orientation = static_cast<int>(photo.info.orientation);
    description.iptc = std::move(photo.iptc);
    // A packet that holds settings would win over the settings asked for.
    if (description.method == 0) description.xmp = std::move(photo.xmp);
  }
  addKeywords(options, description.iptc);
  if (options.profile) description.profile = readForLibrary(*options.profile);
  return description;
}

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
  Description with = describe(options);
  Image image = decodeImage(options.in);
  const Sample asked = options.depth ? kDepths.at(*options.depth) : image.sample;
  const bool narrows = image.sample == Sample::integer16 && asked == Sample::integer8;
  if (!narrows) image = withSamples(std::move(image), asked);
  if (!options.profile) with.profile = std::move(image.iccProfile);

  TifImageInfo info{};
  info.width = image.width;
  info.height = image.height;
  info.channels = image.channels;
  info.bitsPerSample =
      asked == Sample::half ? LUMENFORGE_HALF_FLOAT : static_cast<int>(8 * sizeOf(asked));
  info.resolution = options.resolution;
  info.iccLength = static_cast<int>(with.profile.size());
  info.conversion = narrows ? 1 : 0;
  info.orientation = image.orientation > 1 ? image.orientation : with.orientation;
  const std::size_t stride = narrows ? image.rowSize() / 2 : image.rowSize();

  ReplacementFile file(options.out);
  const int result = buf2tif(
      image.pixels.get(), &info, static_cast<int>(stride), with.profile.data(), &with.meta,
      &with.gps, static_cast<int>(with.iptc.size()), with.iptc.data(), with.method, with.settings,
      static_cast<int>(with.xmp.size()), with.xmp.data(), file.path().c_str());
  if (result < 0) throw Failure(options.out, failedStage(result));
  if (options.profile && !readTiffProfile(file.path())) {
    throw Failure(*options.profile, "is no RGB profile; nothing is written");
  }
  file.commit();
  return kSuccess;
}

}  // namespace

void addTiffCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("tiff", "Write a picture as a finished TIFF file");
  const auto options = std::make_shared<Options>();
  command->add_option("IN", options->in, "PNG, JPEG, PNM, PAM, PFM or Radiance picture")
      ->type_name("")
      ->required();
  command->add_option("OUT.tif", options->out, "File to create or replace; may be IN")
      ->type_name("")
      ->required();
  command->add_option("--depth", options->depth, "Samples: 8, 16, half or float (as IN has them)")
      ->check(CLI::IsMember(kDepths).description(""))
      ->type_name("DEPTH");
  command
      ->add_option("--like", options->photo,
                   "Take camera, exposure, time, position, orientation, IPTC and XMP from it")
      ->type_name("PHOTO");
  command->add_option("--keyword", options->keywords, "IPTC keyword; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command->add_option("--icc", options->profile, "File with an RGB profile (that of IN, if any)")
      ->type_name("FILE");
  command->add_option("--resolution", options->resolution, "Pixels per inch (300)")
      ->check(CLI::Range(1, kHighestResolution).description(""))
      ->type_name("N");
  options->settings.addTo(*command);
  command->footer(
      "Between integers and floating point, 0 to 1 stands for the whole range of the integers:\n"
      "floats outside of it are cut off, and no tone curve is applied. 8 bits become 16 times "
      "257;\n"
      "16 bits become 8 by their high byte. Floats become the nearest half, infinite from 65520 "
      "on.\n"
      "Opacity is left out. A gray profile in IN is left out, too. Settings asked for with "
      "--method\n"
      "stand in a packet of their own, instead of the photograph's.");
  runWhenAsked(*command, chosen, options, writeTiff);
}

}  // namespace lfmeta
