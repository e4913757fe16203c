// The kind of an image file, found by its own first bytes, never by its name.
#pragma once

#include <LumenforgeMetaLib.h>

#include <optional>
#include <string>

#include "photos/photo_file.h"

namespace lfmeta {

// The numbers are the library's file types.
enum class PhotoType { tiff = LUMENFORGE_TIFF, jpeg = LUMENFORGE_JPEG, psd = LUMENFORGE_PSD };

const char* nameOf(PhotoType type);  // "TIFF", "JPEG" or "PSD"

// Nothing for a file of another kind; a TIFF of 64-bit offsets counts as TIFF.
std::optional<PhotoType> findPhotoType(PhotoFile& file);
// Nothing also for one that cannot be opened. Never waits: a pipe or a terminal is of another kind.
std::optional<PhotoType> findPhotoType(const std::string& path);

}  // namespace lfmeta
