// Positions and lengths are computed in 64 bits and recorded in 32: what does not fit is not
// recorded.
#pragma once

#include <cstdint>
#include <limits>

namespace lumenforge {

inline bool fits32(uint64_t number) {
  return number <= std::numeric_limits<uint32_t>::max();
}

inline void setIfFits(uint64_t number, uint32_t& field) {
  if (fits32(number)) field = static_cast<uint32_t>(number);
}

}  // namespace lumenforge
