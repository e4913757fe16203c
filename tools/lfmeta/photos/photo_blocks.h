// Where a photograph keeps its metadata: the EXIF data, the XMP packet and the IPTC block, wherever
// they stand (ITU-T T.81 annex B, TIFF 6.0, Photoshop file format, XMP storage in files).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/whole_file.h"
#include "photos/photo_type.h"

namespace lfmeta {

struct Region {
  uint64_t offset = 0;
  uint64_t size = 0;
};

struct JpegSegment {
  unsigned char marker = 0;
  uint64_t start = 0;  // of the marker, behind fill bytes
  Region data;         // behind the length
};

struct PhotoBlocks {
  std::optional<uint64_t> exif;     // of the TIFF header
  std::optional<Region> xmp;        // the packet
  bool hasExtendedXmp = false;      // a JPEG's packet goes on in other segments
  std::optional<Region> photoshop;  // a JPEG's image resources
  std::optional<Region> iptc;       // that of a PSD
};

// Throws Failure when the file cannot be read; what is damaged is not found.
PhotoBlocks findBlocks(const std::string& path, PhotoType type);

// The segments before the picture; empty when the file is no JPEG or ends before the picture.
std::vector<JpegSegment> jpegSegments(const std::string& path);

inline constexpr std::string_view kXmpSignature{"http://ns.adobe.com/xap/1.0/\0", 29};
inline constexpr std::string_view kExifSignature{"Exif\0\0", 6};

// Whether the segment is an APP1 (say) that begins with these bytes.
bool isSegment(const std::string& path, const JpegSegment& segment, unsigned char marker,
               std::string_view signature);

// The packet; empty when there is none. One of more than 16 MiB is a Failure.
Bytes readPacket(const std::string& path, const PhotoBlocks& blocks);

}  // namespace lfmeta
