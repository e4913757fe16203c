// Another XMP packet for a photograph, every other byte as it was.
#pragma once

#include <string>

#include "base/locked_file.h"
#include "base/whole_file.h"

namespace lfmeta {

// Of the packet in one segment of a JPEG (XMP specification, storage in files).
inline constexpr std::size_t kLongestJpegPacket = 65502;

// Whether the file is a picture that a packet can be put into: a JPEG or a TIFF that is no raw
// photograph.
bool takesPacket(const std::string& path);

// The XMP packet of a photograph, empty when it has none, or the whole of any other file.
Bytes packetOf(const std::string& path);

// Puts the packet in the place of what packetOf reads. A JPEG and a file of text are replaced when
// the new file is complete; in a TIFF file the packet is appended and the directory follows.
// Padding keeps a JPEG's segment at its size while it can. Throws Failure with the file as it was:
// for a PSD and a raw photograph, and when the packet is too long for a JPEG.
void replacePacketOf(const LockedFile& file, Bytes packet);

}  // namespace lfmeta
