// EXIF data that a finished file's EXIF directories have no place for, as XMP properties (XMP
// specification, Exif schema).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "photos/packet_outline.h"

namespace lfmeta {

struct CarriedProperties {
  std::string description;  // an rdf:Description element; empty without any property
  std::string notTaken;     // for a person: what has no property either; empty when there is none
};

// From the EXIF data whose TIFF header is at `base` of the file. Properties that the packet has
// already are left as they are. `make`: the camera's maker as the finished file has it.
CarriedProperties carryExif(const std::string& path, uint64_t base, const PacketOutline& packet,
                            std::string_view make);

}  // namespace lfmeta
