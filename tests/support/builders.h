// Photographs and their parts built in memory from a few readable lines, in either byte order.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

namespace build {

using lumenforge::ByteOrder;
using namespace std::string_literals;

inline std::string u16(uint32_t value, ByteOrder order = ByteOrder::big) {
  uint8_t bytes[2];
  lumenforge::store16(bytes, static_cast<uint16_t>(value), order);
  return {reinterpret_cast<char*>(bytes), 2};
}

inline std::string u32(uint64_t value, ByteOrder order = ByteOrder::big) {
  uint8_t bytes[4];
  lumenforge::store32(bytes, static_cast<uint32_t>(value), order);
  return {reinterpret_cast<char*>(bytes), 4};
}

// One directory entry. A value of up to four bytes stands in the value field, a longer one behind
// the directory.
struct Entry {
  uint16_t tag;
  uint16_t type;
  uint32_t count;
  std::string value;
};

// TIFF structures of one byte order.
struct Tiff {
  ByteOrder order;

  Entry shortEntry(uint16_t tag, uint32_t value) const { return {tag, 3, 1, u16(value, order)}; }
  Entry longEntry(uint16_t tag, uint64_t value) const { return {tag, 4, 1, u32(value, order)}; }
  Entry fraction(uint16_t tag, int64_t numerator, int64_t denominator, uint32_t count = 1) const {
    std::string value;
    for (uint32_t i = 0; i < count; ++i) {
      value += u32(static_cast<uint64_t>(numerator + i), order) + u32(static_cast<uint64_t>(denominator), order);
    }
    return {tag, 5, count, value};
  }
  static Entry text(uint16_t tag, const std::string& value) {
    return {tag, 2, static_cast<uint32_t>(value.size() + 1), value + '\0'};
  }

  // Entries from a line: "829A=1/250; 8827=s400; A405=l75; 2=48/1,49/1,50/1; 110='E-M1'", and for
  // what no honest writer writes, type, count and the four value bytes: "8827=3#2@00070009" (a
  // number in the byte order) or "110=2#4'X10'".
  std::vector<Entry> entries(std::string line) const {
    std::vector<Entry> list;
    for (std::size_t end = 0; !line.empty(); line.erase(0, end == line.npos ? end : end + 2)) {
      end = line.find("; ");
      const std::string item = line.substr(0, end);
      const std::size_t equals = item.find('=');
      const auto tag = static_cast<uint16_t>(std::stoul(item.substr(0, equals), nullptr, 16));
      list.push_back(entry(tag, item.substr(equals + 1)));
    }
    return list;
  }

  Entry entry(uint16_t tag, const std::string& text) const {
    if (text[0] == '\'') return Tiff::text(tag, text.substr(1, text.size() - 2));
    if (text[0] == 's') return shortEntry(tag, static_cast<uint32_t>(std::stoul(text.substr(1))));
    if (text[0] == 'l') return longEntry(tag, std::stoul(text.substr(1)));
    unsigned type = 0;
    unsigned count = 0;
    int at = 0;
    if (std::sscanf(text.c_str(), "%u#%u%n", &type, &count, &at) == 2) {
      const std::string value = text.substr(static_cast<std::size_t>(at) + 1);
      return {tag, static_cast<uint16_t>(type), count,
              text[static_cast<std::size_t>(at)] == '@' ? u32(std::stoul(value, nullptr, 16), order)
                                                        : value.substr(0, value.size() - 1)};
    }
    Entry fractions{tag, 5, 0, ""};
    for (const char* p = text.c_str(); *p != '\0'; p += *p == ',' ? 1 : 0) {
      char* end = nullptr;
      fractions.value += u32(static_cast<uint64_t>(std::strtol(p, &end, 10)), order);
      fractions.value += u32(static_cast<uint64_t>(std::strtol(end + 1, &end, 10)), order);
      p = end;
      ++fractions.count;
    }
    return fractions;
  }

  // A directory that stands at `at`, its values behind it.
  std::string directory(uint64_t at, const std::vector<Entry>& entries, uint64_t next = 0) const {
    std::string head = u16(static_cast<uint32_t>(entries.size()), order);
    std::string values;
    for (const Entry& entry : entries) {
      head += u16(entry.tag, order) + u16(entry.type, order) + u32(entry.count, order);
      if (entry.value.size() <= 4) {
        head += entry.value + std::string(4 - entry.value.size(), '\0');
      } else {
        head += u32(at + 2 + 12 * entries.size() + 4 + values.size(), order);
        values += entry.value;
      }
    }
    return head + u32(next, order) + values;
  }

  std::string header(uint64_t first = 8) const {
    return (order == ByteOrder::little ? "II"s : "MM"s) + u16(42, order) + u32(first, order);
  }

  // Header, IFD0 with pointers to the EXIF and GPS directories, these two, then IFD1.
  std::string file(std::vector<Entry> first, const std::vector<Entry>& exif = {}, const std::vector<Entry>& gps = {},
                   const std::vector<Entry>& second = {}) const {
    const std::size_t pointers = first.size();
    if (!exif.empty()) first.push_back(longEntry(0x8769, 0));
    if (!gps.empty()) first.push_back(longEntry(0x8825, 0));
    const uint64_t exifAt = 8 + directory(8, first).size();
    const uint64_t gpsAt = exifAt + (exif.empty() ? 0 : directory(exifAt, exif).size());
    const uint64_t secondAt = gpsAt + (gps.empty() ? 0 : directory(gpsAt, gps).size());
    std::size_t i = pointers;
    if (!exif.empty()) first[i++].value = u32(exifAt, order);
    if (!gps.empty()) first[i].value = u32(gpsAt, order);
    std::string bytes = header() + directory(8, first, second.empty() ? 0 : secondAt);
    if (!exif.empty()) bytes += directory(exifAt, exif);
    if (!gps.empty()) bytes += directory(gpsAt, gps);
    if (!second.empty()) bytes += directory(secondAt, second);
    return bytes;
  }
};

inline std::string segment(uint8_t code, const std::string& payload) {
  return "\xFF"s + static_cast<char>(code) + u16(static_cast<uint32_t>(payload.size() + 2)) + payload;
}

inline const std::string kSoi = "\xFF\xD8";
inline const std::string kEoi = "\xFF\xD9";
inline std::string exifSegment(const std::string& tiff) { return segment(0xE1, "Exif\0\0"s + tiff); }
inline std::string xmpSegment(const std::string& packet) {
  return segment(0xE1, "http://ns.adobe.com/xap/1.0/\0"s + packet);
}
inline std::string photoshopSegment(const std::string& block) { return segment(0xED, "Photoshop 3.0\0"s + block); }

inline std::string resource(uint16_t id, const std::string& data, const std::string& name = "\0\0"s) {
  return "8BIM" + u16(id) + name + u32(data.size()) + data + (data.size() % 2 ? "\0"s : ""s);
}
inline std::string thumbnail(uint32_t width, uint32_t height, const std::string& jpeg) {
  return u32(1) + u32(width) + u32(height) + u32(width * 3) + u32(width * 3 * height) + u32(jpeg.size()) + u16(24) +
         u16(1) + jpeg;
}

inline std::string psd(const std::string& resources, uint16_t channels = 3, uint16_t mode = 3) {
  return "8BPS" + u16(1) + std::string(6, '\0') + u16(channels) + u32(1) + u32(1) + u16(8) + u16(mode) + u32(3) +
         "abc" + u32(resources.size()) + resources;
}

// A settings packet with a lens, as another writer might lay it out.
inline std::string packet(const std::string& method, const std::string& lens) {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF><rdf:Description "
         "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'><aux:Lens>" +
         lens +
         "</aux:Lens></rdf:Description><rdf:Description "
         "xmlns:lfst='http://ns.lumenforge.org/lumenforge_settings01'><lfst:Method>" +
         method + "</lfst:Method></rdf:Description></rdf:RDF></x:xmpmeta>";
}

// A file that is there as long as the object.
class TempFile {
 public:
  explicit TempFile(const std::string& bytes) {
    std::strcpy(path_, "/tmp/lumenforge-XXXXXX");
    ::close(::mkstemp(path_));
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  ~TempFile() { std::remove(path_); }
  char* path() { return path_; }
  std::string bytes() const {
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

 private:
  char path_[64];
};

// A host's stream over bytes in memory, standing at `position`.
class MemoryStream {
 public:
  explicit MemoryStream(std::string bytes, long position = 0)
      : bytes_(std::move(bytes)), file_(::fmemopen(bytes_.data(), bytes_.size(), "rb")) {
    std::fseek(file_, position, SEEK_SET);
  }
  MemoryStream(const MemoryStream&) = delete;
  MemoryStream& operator=(const MemoryStream&) = delete;
  ~MemoryStream() { std::fclose(file_); }
  std::FILE* get() { return file_; }

 private:
  std::string bytes_;
  std::FILE* file_;
};

}  // namespace build
