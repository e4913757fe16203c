// The host's records filled, and the TIFF structures that they give.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "LumenforgeMetaLib.h"
#include "support/builders.h"

namespace build {

inline const Tiff kTiff{ByteOrder::little};

inline const uint8_t* bytesAt(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

inline std::string le16(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes += u16(static_cast<uint32_t>(value), ByteOrder::little);
  return bytes;
}

inline Entry fractions(uint16_t tag, std::initializer_list<uint32_t> words) {
  std::string bytes;
  for (const uint32_t word : words) bytes += u32(word, ByteOrder::little);
  return {tag, 5, static_cast<uint32_t>(words.size() / 2), bytes};
}

// Header, what stands between, then the directory with its values, the last of which are the Exif
// and the GPS directory.
inline std::string fileOf(const std::string& pixels, std::vector<Entry> entries,
                          const std::vector<Entry>& exif, const std::vector<Entry>& gps) {
  const uint64_t at = 8 + pixels.size();
  for (const auto& [tag, size] : {std::pair{0x8769, exif.size()}, {0x8825, gps.size()}}) {
    if (size > 0) entries.push_back(kTiff.longEntry(static_cast<uint16_t>(tag), 0));
  }
  const uint64_t exifAt = at + kTiff.directory(at, entries).size();
  const std::string exifBytes = exif.empty() ? "" : kTiff.directory(exifAt, exif);
  const uint64_t gpsAt = exifAt + exifBytes.size();
  for (Entry& entry : entries) {
    if (entry.tag == 0x8769) entry.value = u32(exifAt, ByteOrder::little);
    if (entry.tag == 0x8825) entry.value = u32(gpsAt, ByteOrder::little);
  }
  return kTiff.header(at) + pixels + kTiff.directory(at, entries) + exifBytes +
         (gps.empty() ? "" : kTiff.directory(gpsAt, gps));
}

struct Sizes {
  int exif, exifData, gps, gpsData, model, make, date, gpsDate, lens;
  auto operator<=>(const Sizes&) const = default;
};

inline void PrintTo(const Sizes& s, std::ostream* out) {
  for (const int v : {s.exif, s.exifData, s.gps, s.gpsData, s.model, s.make, s.date, s.gpsDate}) {
    *out << v << ' ';
  }
  *out << s.lens;
}

struct Records {
  MetadataBuf meta{};
  GpsBuf gps{};
  char make[64];

  Sizes measure() {
    Sizes s;
    std::memset(&s, 0xA5, sizeof s);
    std::memset(make, 0xA5, sizeof make);
    const int entries = get_exif_count(&meta, &s.exif, &s.exifData, &gps, &s.gps, &s.gpsData,
                                       &s.model, &s.make, &s.date, &s.gpsDate, &s.lens, make);
    EXPECT_EQ(entries, s.exif + s.gps);
    return s;
  }
  // Into memory that ends with the block.
  int block(const Sizes& s, int orientation, std::vector<char>& out) const {
    return write_exif_buf(s.exif, s.exifData, s.gps, s.gpsData, s.model, s.make, s.date, s.gpsDate,
                          orientation, &meta, &gps, make,
                          reinterpret_cast<unsigned char*>(out.data()));
  }
};

template <std::size_t Size>
void setText(char (&field)[Size], const std::string& text) {
  std::memset(field, 0, Size);
  std::memcpy(field, text.data(), std::min(text.size(), Size));
}

// Everything present; fractions behind the first that are zero or negative do not matter.
inline Records everything() {
  Records r;
  r.meta.exposureTime[0] = 100;
  r.meta.exposureTime[1] = 5999;
  r.meta.fNumber[0] = 559;
  r.meta.fNumber[1] = 100;
  r.meta.iso = 70000;
  r.meta.focalLength[0] = 5000;
  r.meta.focalLength[1] = 100;
  setText(r.meta.model, "Canon EOS 5D");
  setText(r.meta.dateTimeOriginal, "2023:05:06 07:08:09");
  setText(r.meta.lens, "EF 50mm");
  r.gps = {{48, 1, 0, 1, 0, 7},
           {11, 1, 34, 1, 5678, 100},
           {519, 1},
           {12, 1, 0, 1, 0, 1},
           'N',
           'E',
           1,
           0,
           "2023:05:06",
           0};
  return r;
}

inline const std::vector<Entry> kExif = {
    fractions(0x829A, {100, 5999}), fractions(0x829D, {559, 100}), kTiff.shortEntry(0x8827, 4464),
    Tiff::text(0x9003, "2023:05:06 07:08:09"), fractions(0x920A, {5000, 100})};
inline const std::vector<Entry> kGps = {{0, 1, 4, "\2\2\0\0"s},
                                        {1, 2, 2, "N"},
                                        fractions(2, {48, 1, 0, 1, 0, 7}),
                                        {3, 2, 2, "E"},
                                        fractions(4, {11, 1, 34, 1, 5678, 100}),
                                        {5, 2, 2, "\1"},
                                        fractions(6, {519, 1}),
                                        fractions(7, {12, 1, 0, 1, 0, 1}),
                                        Tiff::text(0x1D, "2023:05:06")};

}  // namespace build
