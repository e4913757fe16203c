// The kind of an image file, found by its own first bytes, never by its name.
#pragma once

#include <LumenforgeMetaLib.h>

#include <optional>
#include <string>

namespace lfmeta {

// The numbers are the library's file types.
enum class PhotoType { tiff = LUMENFORGE_TIFF, jpeg = LUMENFORGE_JPEG, psd = LUMENFORGE_PSD };

const char* nameOf(PhotoType type);  // "TIFF", "JPEG" or "PSD"

// Nothing for a file of another kind and for one that cannot be opened; a TIFF of 64-bit offsets
// counts as TIFF. Never waits: a pipe or a terminal is of another kind.
std::optional<PhotoType> findPhotoType(const std::string& path);

// What a negative result of the library's reading means for a file of this type.
const char* readingFailure(PhotoType type, int result);

}  // namespace lfmeta
