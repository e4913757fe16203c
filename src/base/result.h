// Result codes of the boundary, each named once.
#pragma once

namespace lumenforge {

inline constexpr int kOk = 1;
inline constexpr int kCannotRead = -1;
inline constexpr int kWrongSignature = -2;
inline constexpr int kUnsupported = -3;
inline constexpr int kNotTerminated = -3;  // a settings text whose last byte is not NUL
inline constexpr int kNoMemory = -4;
inline constexpr int kOtherMethod = -5;
inline constexpr int kNoMarker = -10;  // a JPEG marker segment that does not begin with FF

// The lookup of a tag.
inline constexpr int kNoSuchTag = -1;
inline constexpr int kCannotSeek = -3;

// Settings in files and in packets held in memory.
inline constexpr int kNoSuchMethod = -2;
inline constexpr int kTooFewBytes = -2;
inline constexpr int kCannotWrite = -3;
inline constexpr int kTooShortForPacket = -34;
inline constexpr int kTooShortForTag = -130;

}  // namespace lumenforge
