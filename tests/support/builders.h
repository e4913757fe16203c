// Photographs and their parts built in memory from a few readable lines, in either byte order.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "base/file.h"

namespace build {

using lumenforge::ByteOrder;
using namespace std::string_literals;

inline std::string number(uint64_t value, int size, ByteOrder order) {
  std::string bytes;
  for (int bit = 0; bit < 8 * size; bit += 8) {
    bytes.insert(order == ByteOrder::little ? bytes.end() : bytes.begin(), static_cast<char>(value >> bit & 0xFF));
  }
  return bytes;
}
inline std::string u16(uint64_t value, ByteOrder order = ByteOrder::big) { return number(value, 2, order); }
inline std::string u32(uint64_t value, ByteOrder order = ByteOrder::big) { return number(value, 4, order); }

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

  Entry shortEntry(uint16_t tag, uint64_t value) const { return {tag, 3, 1, u16(value, order)}; }
  Entry longEntry(uint16_t tag, uint64_t value) const { return {tag, 4, 1, u32(value, order)}; }
  static Entry text(uint16_t tag, const std::string& value) {
    return {tag, 2, static_cast<uint32_t>(value.size() + 1), value + '\0'};
  }

  // Entries from a line: "829A=1/250; 8827=s400; A405=l75; 2=48/1,49/1,50/1; 110='E-M1'", and for what no honest
  // writer writes, type, count and value: "8827=3#2@70009" (the field as one number) or "110=2#4'X10'".
  std::vector<Entry> entries(const std::string& line) const {
    std::vector<Entry> list;
    for (std::size_t at = 0, end = 0; at < line.size(); at = end + 2) {
      end = std::min(line.find("; ", at), line.size());
      list.push_back(entry(line.substr(at, end - at)));
    }
    return list;
  }

  Entry entry(const std::string& item) const {
    Entry e{};
    uint32_t words[2] = {};
    char mark = 0;
    const char* p = item.c_str();
    if (std::sscanf(p, "%hx=s%u", &e.tag, words) == 2) return shortEntry(e.tag, words[0]);
    if (std::sscanf(p, "%hx=l%u", &e.tag, words) == 2) return longEntry(e.tag, words[0]);
    const std::size_t start = std::min(item.find('\''), item.size() - 1) + 1;
    const std::string quoted = item.substr(start, std::max(item.size() - 1, start) - start);
    const int read = std::sscanf(p, "%hx=%hu#%u%c%x", &e.tag, &e.type, &e.count, &mark, words);
    if (read >= 4 && mark == '@') return {e.tag, e.type, e.count, u32(words[0], order)};
    if (read >= 4) return {e.tag, e.type, e.count, quoted};
    if (start < item.size()) return text(e.tag, quoted);
    e = {e.tag, 5, 0, ""};
    p = std::strchr(p, '=');
    for (int length = 0; std::sscanf(p, "%*1[=,]%u/%u%n", words, words + 1, &length) == 2; p += length) {
      e.value += u32(words[0], order) + u32(words[1], order);
      ++e.count;
    }
    return e;
  }

  // A directory that stands at `at`, its values behind it.
  std::string directory(uint64_t at, const std::vector<Entry>& entries, uint64_t next = 0) const {
    const uint64_t end = at + 2 + 12 * entries.size() + 4;
    std::string head = u16(entries.size(), order);
    std::string values;
    for (const Entry& entry : entries) {
      const bool inside = entry.value.size() <= 4;
      head += u16(entry.tag, order) + u16(entry.type, order) + u32(entry.count, order);
      head += inside ? (entry.value + "\0\0\0\0"s).substr(0, 4) : u32(end + values.size(), order);
      if (!inside) values += entry.value;
    }
    return head + u32(next, order) + values;
  }

  std::string header(uint64_t first = 8) const {
    return (order == ByteOrder::little ? "II"s : "MM"s) + u16(42, order) + u32(first, order);
  }

  // Header, IFD0 with pointers to the EXIF and GPS directories, these two, then IFD1.
  std::string file(std::vector<Entry> first, const std::vector<Entry>& exif = {}, const std::vector<Entry>& gps = {},
                   const std::vector<Entry>& second = {}) const {
    const uint64_t pointersSize = (exif.empty() ? 0U : 12U) + (gps.empty() ? 0U : 12U);
    const uint64_t end = 8 + directory(8, first).size() + pointersSize;
    std::string behind;
    const auto append = [&](const std::vector<Entry>& entries) {
      const uint64_t at = end + behind.size();
      behind += directory(at, entries);
      return at;
    };
    if (!exif.empty()) first.push_back(longEntry(0x8769, append(exif)));
    if (!gps.empty()) first.push_back(longEntry(0x8825, append(gps)));
    const uint64_t next = second.empty() ? 0 : append(second);
    return header() + directory(8, first, next) + behind;
  }
};

inline std::string segment(uint8_t code, const std::string& payload) {
  return "\xFF"s + static_cast<char>(code) + u16(payload.size() + 2) + payload;
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
  return u32(1) + u32(width) + u32(height) + u32(width * 3) + u32(width * 3 * height) + u32(jpeg.size()) +
         u32(24 << 16 | 1) + jpeg;
}
inline std::string psd(const std::string& resources, uint16_t channels = 3, uint16_t mode = 3) {
  return "8BPS" + u16(1) + std::string(6, '\0') + u16(channels) + u32(1) + u32(1) + u16(8) + u16(mode) + u32(3) +
         "abc" + u32(resources.size()) + resources;
}

// A settings packet with a lens, as another writer might lay it out.
inline std::string packet(const std::string& method, const std::string& lens) {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF><rdf:Description xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'>"
         "<aux:Lens>" +
         lens +
         "</aux:Lens></rdf:Description><rdf:Description xmlns:lfst='http://ns.lumenforge.org/lumenforge_settings01'>"
         "<lfst:Method>" +
         method + "</lfst:Method></rdf:Description></rdf:RDF></x:xmpmeta>";
}

inline std::string contentsOf(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A file that is there as long as the object.
struct TempFile {
  char name[32] = "/tmp/lumenforge-XXXXXX";

  explicit TempFile(const std::string& bytes) {
    ::close(::mkstemp(name));
    std::ofstream(name, std::ios::binary) << bytes;
  }
  TempFile(TempFile&&) = delete;
  ~TempFile() { std::remove(name); }
  char* path() { return name; }
  std::string bytes() const { return contentsOf(name); }
};

// A host's stream over bytes in memory, standing at `position`.
struct MemoryStream {
  std::string bytes;
  lumenforge::File file{::fmemopen(bytes.data(), bytes.size(), "rb")};

  explicit MemoryStream(std::string text, long position = 0) : bytes(std::move(text)) {
    std::fseek(get(), position, SEEK_SET);
  }
  MemoryStream(MemoryStream&&) = delete;
  std::FILE* get() { return file.get(); }
};

}  // namespace build
