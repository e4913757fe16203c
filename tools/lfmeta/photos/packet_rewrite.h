// Another XMP packet for a photograph, every other byte as it was.
#pragma once

#include <string>

#include "base/whole_file.h"
#include "photos/photo_blocks.h"

namespace lfmeta {

// Of the packet in one segment of a JPEG (XMP specification, storage in files).
inline constexpr std::size_t kLongestJpegPacket = 65502;

// Whether the file is a picture that a packet can be put into: a JPEG or a TIFF that is no raw
// photograph.
bool takesPacket(const std::string& path);

// The XMP packet of a photograph, empty when it has none, or the whole of any other file.
Bytes packetOf(const std::string& path);

// Puts the packet in the place of what packetOf reads.
void replacePacketOf(const std::string& path, Bytes packet);

// Puts the packet in the place of the one that the file has; in a JPEG the file is replaced when
// the new one is complete, in a TIFF file the packet is appended and the directory follows. Padding
// keeps a JPEG's segment at its size while it can. Throws Failure with the file as it was: for a
// PSD and a raw photograph, and when the packet is too long for a JPEG.
void replacePacket(const std::string& path, PhotoType type, Bytes packet);

}  // namespace lfmeta
