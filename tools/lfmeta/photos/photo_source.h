// A photograph as the source of metadata: what the library reads from it, and the blocks that its
// record points at.
#pragma once

#include <LumenforgeMetaLib.h>

#include <optional>
#include <string>

#include "base/whole_file.h"
#include "photos/photo_type.h"

namespace lfmeta {

struct PhotoRecord {
  PhotoType type;
  ExifInfo info{};
  const char* damage = nullptr;  // what ended the reading early, after `info` had been filled
};

// The record alone; none when the file is no JPEG, TIFF or PSD image. Throws Failure when nothing
// can be read from it. Never waits for a pipe or a terminal.
std::optional<PhotoRecord> readPhotoRecord(const std::string& path);

inline constexpr const char* kNoPhoto = "is no JPEG, TIFF or PSD image";

// The XMP packet that the record points at; empty when there is none.
Bytes xmpOf(const std::string& path, const PhotoRecord& photo);

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
