// A photograph as the source of metadata: what the library reads from it, and the blocks that its
// record points at.
#pragma once

#include <LumenforgeMetaLib.h>

#include <optional>
#include <string>

#include "base/whole_file.h"
#include "photos/photo_file.h"
#include "photos/photo_layout.h"
#include "photos/photo_type.h"

namespace lfmeta {

struct PhotoRecord {
  PhotoType type = PhotoType::jpeg;
  PhotoLayout layout;
  ExifInfo info{};
  int result = 0;                // of the library's reading
  bool blank = false;            // nothing was found for `info`
  const char* damage = nullptr;  // what ended the reading early, after `info` had been filled
};

// The record alone; none when the file is no JPEG, TIFF or PSD image. Throws Failure when nothing
// can be read from it. A sound file without EXIF data has a blank record.
std::optional<PhotoRecord> readPhotoRecord(PhotoFile& file);

inline constexpr const char* kNoPhoto = "is no JPEG, TIFF or PSD image";

// A packet of more bytes is not read: it would hold pictures rather than what is looked for here.
inline constexpr uint32_t kLongestPacket = 16U << 20;

// The XMP packet that the record points at; empty when there is none, or none that is read.
Bytes xmpOf(const PhotoFile& file, const PhotoRecord& photo);

struct PhotoSource {
  ExifInfo info{};
  Bytes iptc;  // empty when there is none
  Bytes xmp;
};

// The record and its blocks. Throws Failure also for a file that is no image or is damaged.
PhotoSource readPhotoSource(const std::string& path);

// The records that the host keeps of it.
void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps);

}  // namespace lfmeta
