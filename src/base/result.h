// Result codes that functions of the boundary share. A code of one function stands with it.
#pragma once

namespace lumenforge {

inline constexpr int kOk = 1;
inline constexpr int kCannotRead = -1;
inline constexpr int kWrongSignature = -2;
inline constexpr int kUnsupported = -3;
inline constexpr int kNoMemory = -4;

}  // namespace lumenforge
