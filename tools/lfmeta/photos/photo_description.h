// Some TIFF files carry their exposure only as text in the image description.
#pragma once

#include <LumenforgeMetaLib.h>

#include <string>

namespace lfmeta {

// Takes exposure time and ISO speed from the description of the little-endian TIFF file at `path`,
// if it has one that holds them; leaves `info` alone otherwise.
void readDescribedExposure(const std::string& path, ExifInfo& info);

}  // namespace lfmeta
