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

// TIFF output. The stages of a file being written have a code each.
inline constexpr int kNothingToWrite = -1;  // an EXIF block without any content
inline constexpr int kBrokenIptc = -1;      // a dataset that runs past the end of its block
inline constexpr int kKeywordTooLong = -2;
inline constexpr int kCannotCreate = -1;
inline constexpr int kHeaderNotWritten = -2;
inline constexpr int kPixelsNotWritten = -3;
inline constexpr int kUnsupportedDescription = -6;
inline constexpr int kNoDirectoryMemory = -1;
inline constexpr int kDirectoryNotWritten = -12;
inline constexpr int kNoSuchTag = -1;
inline constexpr int kCannotSeek = -3;
inline constexpr int kNoProfileEntry = 0;
inline constexpr int kCannotUpdate = -2;  // a profile update that was taken back

// Settings in files and in packets held in memory.
inline constexpr int kNoSuchMethod = -2;
inline constexpr int kTooFewBytes = -2;
inline constexpr int kCannotWrite = -3;
inline constexpr int kTooShortForPacket = -34;
inline constexpr int kTooShortForTag = -130;

}  // namespace lumenforge
