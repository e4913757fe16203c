// A photograph as the source of metadata: what the library reads from it, and the blocks that its
// record points at.
#pragma once

#include <LumenforgeMetaLib.h>

#include <string>

#include "whole_file.h"

struct PhotoSource {
  ExifInfo info{};
  Bytes iptc;  // empty when there is none
  Bytes xmp;
};

// Throws Failure when the file is no JPEG, TIFF or PSD image or cannot be read.
PhotoSource readPhotoSource(const std::string& path);

// The records that the host keeps of it.
void exportRecords(const ExifInfo& info, MetadataBuf& meta, GpsBuf& gps);
