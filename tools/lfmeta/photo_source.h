// A photograph as the source of metadata: what the library reads from it, and the blocks that its
// record points at.
#pragma once

#include <LumenforgeMetaLib.h>

#include <string>

#include "photo_type.h"
#include "whole_file.h"

struct PhotoRecord {
  PhotoType type;
  ExifInfo info{};
};

// The record alone. Throws Failure when the file is no JPEG, TIFF or PSD image or cannot be read.
PhotoRecord readPhotoRecord(const std::string& path);

// The XMP packet that the record points at; empty when there is none.
Bytes xmpOf(const std::string& path, const PhotoRecord& photo);

struct PhotoSource {
  ExifInfo info{};
  Bytes iptc;  // empty when there is none
  Bytes xmp;
};

// The record and its blocks. Throws as readPhotoRecord does.
PhotoSource readPhotoSource(const std::string& path);

// The records that the host keeps of it.
void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps);
