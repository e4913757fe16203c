// 16- and 32-bit numbers in memory, in either byte order. But for the readers of a host's stream
// (reading/byte_order.cpp), where its end enters the arithmetic, nothing else touches byte order.
#pragma once

#include <cstdint>

namespace lumenforge {

enum class ByteOrder : uint8_t { little, big };

constexpr uint16_t load16(const uint8_t* p, ByteOrder order) {
  return order == ByteOrder::little ? static_cast<uint16_t>(p[0] | p[1] << 8)
                                    : static_cast<uint16_t>(p[0] << 8 | p[1]);
}

constexpr uint32_t load32(const uint8_t* p, ByteOrder order) {
  const uint32_t first = load16(p, order);
  const uint32_t second = load16(p + 2, order);
  return order == ByteOrder::little ? second << 16 | first : first << 16 | second;
}

constexpr void store16(uint8_t* p, uint16_t value, ByteOrder order) {
  const auto low = static_cast<uint8_t>(value & 0xFF);
  const auto high = static_cast<uint8_t>(value >> 8);
  p[0] = order == ByteOrder::little ? low : high;
  p[1] = order == ByteOrder::little ? high : low;
}

constexpr void store32(uint8_t* p, uint32_t value, ByteOrder order) {
  const auto low = static_cast<uint16_t>(value & 0xFFFF);
  const auto high = static_cast<uint16_t>(value >> 16);
  store16(p, order == ByteOrder::little ? low : high, order);
  store16(p + 2, order == ByteOrder::little ? high : low, order);
}

}  // namespace lumenforge
