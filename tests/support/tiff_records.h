// The host's records filled, and the TIFF structures that they give.
#pragma once

#include <array>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace build {

inline const Tiff kTiff{ByteOrder::little};

inline const uint8_t* bytesAt(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }

template <typename Record>
std::string bytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

// Little-endian numbers of 16 or 32 bits.
inline std::string numbers(int bits, const std::vector<uint32_t>& values) {
  std::string bytes;
  for (const uint32_t value : values) bytes += number(value, bits / 8, ByteOrder::little);
  return bytes;
}

// An IPTC dataset.
inline std::string dataset(int record, int number, const std::string& data) {
  return "\x1C"s + static_cast<char>(record) + static_cast<char>(number) + u16(static_cast<uint32_t>(data.size())) +
         data;
}

// A camera's records with everything present, and the entries that they give. Fractions behind the
// first may be zero.
inline MetadataBuf cameraMeta() {
  return {
      {100, 5999},           {559, 100}, 0, 70000, 0, {}, {5000, 100}, 0, {}, 0, 0, 0, 0, 0, 0, 0, 0, "Canon EOS 5D",
      "2023:05:06 07:08:09", "EF 50mm"};
}
inline const GpsBuf kCameraGps = {
    {48, 1, 0, 1, 0, 7}, {11, 1, 34, 1, 5678, 100}, {519, 1}, {12, 1, 0, 1, 0, 1}, 'N', 'E', 1, 0, "2023:05:06", 0};
inline const std::vector<Entry> kExif =
    kTiff.entries("829A=100/5999; 829D=559/100; 8827=s4464; 9003='2023:05:06 07:08:09'; 920A=5000/100");
inline const std::vector<Entry> kGps = kTiff.entries(
    "0=1#4@202; 1=2#2'N'; 2=48/1,0/1,0/7; 3=2#2'E'; 4=11/1,34/1,5678/100; 5=2#2'\1'; 6=519/1; 7=12/1,0/1,0/1; "
    "1D='2023:05:06'");

}  // namespace build
