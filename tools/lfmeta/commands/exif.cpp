// lfmeta exif: what a photograph says about its taking, as an EXIF block of its own.
#include <LumenforgeMetaLib.h>

#include <CLI/CLI.hpp>
#include <array>
#include <string>

#include "base/failure.h"
#include "base/replacement_file.h"
#include "base/report.h"
#include "commands/commands.h"
#include "photos/photo_source.h"

namespace lfmeta {

namespace {

// Three directories of at most 5, 5 and 9 entries, their texts and fractions: less than half of it.
constexpr std::size_t kRoomForBlock = 1024;

struct Options {
  std::string photo;
  Output out;
};

int writeExif(const Options& options) {
  MetadataBuf meta;
  GpsBuf gps;
  const ExifInfo info = readPhotoSource(options.photo).info;
  exportRecords(info, meta, gps);

  int exifCount = 0;
  int exifDataSize = 0;
  int gpsCount = 0;
  int gpsDataSize = 0;
  int modelLength = 0;
  int makeLength = 0;
  int dateTimeLength = 0;
  int gpsDateLength = 0;
  int lensLength = 0;
  std::array<char, 64> make{};
  get_exif_count(&meta, &exifCount, &exifDataSize, &gps, &gpsCount, &gpsDataSize, &modelLength,
                 &makeLength, &dateTimeLength, &gpsDateLength, &lensLength, make.data());
  std::array<unsigned char, kRoomForBlock> block{};
  const int size = write_exif_buf(
      exifCount, exifDataSize, gpsCount, gpsDataSize, modelLength, makeLength, dateTimeLength,
      gpsDateLength, static_cast<int>(info.orientation), &meta, &gps, make.data(), block.data());
  if (size < 0) throw Failure(options.photo, "says nothing that an EXIF block could hold");
  ReplacementFile file(options.out, {options.photo});
  file.write(std::span(block).first(static_cast<std::size_t>(size)));
  file.commit();
  return kSuccess;
}

}  // namespace

void addExifCommand(CLI::App& app, Run& chosen) {
  CLI::App* command = app.add_subcommand("exif", "Write a stand-alone EXIF block");
  const auto options = std::make_shared<Options>();
  command->add_option("PHOTO", options->photo, "JPEG, TIFF or PSD image")
      ->type_name("")
      ->required();
  options->out.addTo(*command, "OUT.bin", FileKind::exifBlock)->required();
  runWhenAsked(*command, chosen, options, writeExif);
}

}  // namespace lfmeta
