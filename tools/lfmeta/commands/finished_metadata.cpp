#include "commands/finished_metadata.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

#include "base/failure.h"
#include "photos/carried_properties.h"
#include "photos/iptc_keywords.h"
#include "photos/packet_edit.h"
#include "photos/photo_blocks.h"
#include "photos/photo_source.h"
#include "photos/settings_vocabulary.h"

namespace lfmeta {

namespace {

// Where the library's reading does not come to it: in a PSD, and in a JPEG without EXIF data.
Bytes iptcBeside(const std::string& path, const PhotoBlocks& blocks) {
  Bytes block;
  if (blocks.iptc) block = readRegion(path, blocks.iptc->offset, blocks.iptc->size);
  if (blocks.photoshop) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    ExifInfo info{};
    if (file && fseeko(file.get(), static_cast<off_t>(blocks.photoshop->offset), SEEK_SET) == 0) {
      parse_photoshop_data(file.get(), static_cast<int>(blocks.photoshop->size), &info);
    }
    block = readRegion(path, info.iptcOffset, info.iptcLength);
  }
  return !block.empty() && block.front() == 0x1C ? block : Bytes();
}

std::string makeOf(const MetadataBuf& meta, const GpsBuf& gps) {
  std::array<char, 64> make{};
  std::array<int, 9> n{};
  get_exif_count(&meta, &n[0], &n[1], &gps, &n[2], &n[3], &n[4], &n[5], &n[6], &n[7], &n[8],
                 make.data());
  return make.data();
}

void addNote(std::string& notes, const std::string& note) {
  if (!note.empty()) notes += (notes.empty() ? "" : ", ") + note;
}

// The photograph's packet, whole, with what its EXIF data says beyond the finished file's.
void takePacket(const std::string& path, const PhotoBlocks& blocks, FinishedMetadata& finished) {
  const Bytes given = readPacket(path, blocks);
  const Bytes packet = given.empty() ? newPacket() : given;
  if (blocks.hasExtendedXmp) addNote(finished.notTaken, "the extended part of its XMP");
  const auto outline = outlineOf(packet);
  if (!outline) {
    if (finished.method > 0) {
      addNote(finished.notTaken, "its XMP packet, which is no well-formed XML");
    } else {
      finished.xmp = given;
    }
    return;
  }
  std::vector<PacketEdit> edits;
  if (blocks.exif) {
    CarriedProperties carried =
        carryExif(path, *blocks.exif, *outline, makeOf(finished.meta, finished.gps));
    addNote(finished.notTaken, carried.notTaken);
    if (!carried.description.empty()) {
      edits.push_back(insertLast(*outline, std::move(carried.description)));
    }
  }
  if (given.empty() && edits.empty()) return;
  if (finished.method > 0) {  // the settings asked for take the place of those in the packet
    for (const SettingsSet& set : settingsSets(*outline)) {
      for (PacketEdit& edit : replaceSettings(packet, outline->descriptions[set.description])) {
        edits.push_back(std::move(edit));
      }
    }
    edits.push_back(
        insertFirst(packet, *outline, settingsBlock(finished.method, finished.settings)));
    finished.method = 0;
  }
  finished.xmp = edited(packet, std::move(edits));
}

void takeFrom(const std::string& path, FinishedMetadata& finished) {
  PhotoSource source = readPhotoSource(path);
  exportRecords(source.info, finished.meta, finished.gps);
  finished.orientation = static_cast<int>(source.info.orientation);
  const auto type = findPhotoType(path);
  const PhotoBlocks blocks = type ? findBlocks(path, *type) : PhotoBlocks{};
  finished.iptc = source.iptc.empty() ? iptcBeside(path, blocks) : std::move(source.iptc);
  takePacket(path, blocks, finished);
  if (finished.xmp.empty()) return;
  // The packet is written as it is when it ends in NUL and there is no lens beside it to write.
  finished.xmp.push_back('\0');
  std::fill(std::begin(finished.meta.lens), std::end(finished.meta.lens), '\0');
}

}  // namespace

void FinishedMetadataOptions::addTo(CLI::App& command) {
  command
      .add_option("--like", photo,
                  "Take camera, exposure, time, position, orientation, IPTC and XMP from it")
      ->type_name("PHOTO");
  command.add_option("--keyword", keywords, "IPTC keyword; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command.add_option("--icc", profile, "File with an ICC profile (that of IN, if any)")
      ->type_name("FILE");
  settings.addTo(command);
}

FinishedMetadata FinishedMetadataOptions::read() const {
  FinishedMetadata finished;
  finished.method = settings.read(finished.settings);
  if (photo) takeFrom(*photo, finished);
  addKeywords(keywords, photo.value_or("--keyword"), finished.iptc);
  if (profile) finished.profile = readProfile(*profile);
  return finished;
}

void FinishedMetadataOptions::fitProfile(FinishedMetadata& finished, Bytes ofPicture,
                                         bool gray) const {
  if (!profile) finished.profile.bytes = std::move(ofPicture);
  const bool fits = profileFault(finished.profile.bytes) == nullptr &&
                    finished.profile.colourSpace() == (gray ? "GRAY" : "RGB ");
  if (fits) return;
  if (profile) {
    throw Failure(*profile, "is a profile for " + std::string(finished.profile.colourSpace()) +
                                ", and the picture is " + (gray ? "gray" : "RGB"));
  }
  finished.profile.bytes.clear();
}

}  // namespace lfmeta
