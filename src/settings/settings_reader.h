// The settings of a packet, found by fixed byte sequences in one pass over its text.
#pragma once

#include <cstddef>
#include <string_view>

namespace lumenforge {

inline constexpr int kMethodQuery = -1;
inline constexpr int kLensQuery = 100;

// get_settings_from_xmp on a text of any size; `text` counts the NUL that must end it.
int readSettings(int selector, std::string_view text, char* lensOut, float* params);

// The first place at or after `from` of a settings namespace declaration, or kNowhere.
std::size_t findDeclaration(std::string_view text, std::size_t from);

// The text of aux:Lens (XMP specification, auxiliary schema for camera-specific Exif properties),
// at most 63 bytes into `lensOut`, without a NUL. Returns the place where the search stopped.
int readLens(std::string_view text, char* lensOut);

}  // namespace lumenforge
