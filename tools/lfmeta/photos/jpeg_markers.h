// Marker codes of JPEG (ITU-T T.81 annex B), the byte behind FF.
#pragma once

namespace lfmeta {

inline constexpr unsigned char kEndOfImage = 0xD9;
inline constexpr unsigned char kStartOfScan = 0xDA;
inline constexpr unsigned char kApp0 = 0xE0;
inline constexpr unsigned char kApp1 = 0xE1;
inline constexpr unsigned char kApp2 = 0xE2;
inline constexpr unsigned char kApp13 = 0xED;

}  // namespace lfmeta
