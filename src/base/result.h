// Result codes of the boundary, each named once.
#pragma once

namespace lumenforge {

inline constexpr int kOk = 1;
inline constexpr int kCannotRead = -1;
inline constexpr int kWrongSignature = -2;
inline constexpr int kUnsupported = -3;
inline constexpr int kNoMemory = -4;
inline constexpr int kNoMarker = -10;  // a JPEG marker segment that does not begin with FF

// The lookup of a tag.
inline constexpr int kNoSuchTag = -1;
inline constexpr int kCannotSeek = -3;

}  // namespace lumenforge
