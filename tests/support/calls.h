// Every exported function once, called on good data: one table, from which the tests of faults and
// of threads take their calls.
#pragma once

#include "support/tiff_records.h"

namespace calls {

using namespace build;

// What the memory that a call may write is filled with before.
inline constexpr char kUntouched = 'Z';
inline constexpr int kUntouchedWord = 0x5A5A5A5A;

// Memory that becomes a pointer of any kind.
struct Memory {
  unsigned char* bytes;
  Memory operator+(int offset) const { return {bytes + offset}; }
  template <typename T>
  operator T*() const {
    return reinterpret_cast<T*>(bytes);
  }
};

inline const std::string kXmp =
    packet("Details Enhancer", "EF 50mm") + "<lfst:SaturationIndividualColors>1,2,3,4,5,6,7,8<";
inline const std::string kHostXmp = std::string(40, ' ') + "<x:xmpmeta xmlns:x='adobe:ns:meta/'>" +
                                    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n\n</rdf:RDF>\n";
inline const std::string kIptc = "\x1C\2\x19\0\3sea"s;
inline const std::string kBlock = resource(0x404, kIptc) + resource(0x40C, thumbnail(9, 8, "jpeg"));
// Longer than the memory that a text gets at first.
inline const std::string kText = std::string(70000, 'd') + ",,, , , , , , , 1/250s, R60, G58, B61";
inline const std::string kIcc = std::string(60, 'p') + "desc\0\0\0\0\0\0\0\5sRGB "s;
inline const std::string kTiffFile = kTiff.file({kTiff.longEntry(1, 9), {0x8773, 7, 9, "a profile"}});
inline const std::string kPhoto = kSoi + exifSegment(kTiff.file({Tiff::text(0x110, "Canon EOS 5D")}, kExif, kGps)) +
                                  xmpSegment(kXmp) + photoshopSegment(kBlock) + "\xFF\xDA" + std::string(4096, 'x');
// Their offsets count from the directory itself.
inline const std::string kExifDirectory = kTiff.directory(0, kExif);
inline const std::string kGpsDirectory = kTiff.directory(0, kGps);
inline const std::string kStream = kTiffFile + kExifDirectory + kGpsDirectory + kBlock + kText;
inline const MetadataBuf kMeta = cameraMeta();

inline int size(const std::string& text) { return static_cast<int>(text.size()); }
inline int placeOf(const std::string& text, const std::string& inside = kStream) {
  return static_cast<int>(inside.find(text));
}

// Files and a stream of one call alone.
struct Scene {
  TempFile photo{kPhoto};
  TempFile packet{kXmp};
  TempFile output{kTiffFile};  // to be written over or changed
  MemoryStream stream{kStream};
  std::FILE* at(const std::string& text) {
    std::fseek(stream.get(), placeOf(text), SEEK_SET);
    return stream.get();
  }
};

struct Call {
  const char* name;
  int result;
  std::size_t memorySize;
  int (*function)(Scene&, Memory);
  // The documented results when the first, the second, ... allocation or opening of a file fails,
  // alone; the same for writes and what closes a file.
  std::vector<int> withoutMemory = {};
  std::vector<int> withoutWrite = {};
  // What may come back when a read or a seek fails, beside the good result.
  std::vector<int> withoutRead = {};
  bool takesBack = false;  // a call that fails leaves the file as it was
};

using S = Scene&;
using M = Memory;

// clang-format off
inline const std::vector<Call> kCalls = {
    {"init_exifInfo", 0, 524, [](S, M m) { return init_exifInfo(m); }},
    {"getExifData", 1, 524, [](S s, M m) { return getExifData(s.photo.path(), 1, m); },
     {-1, 1, 1}, {1}, {-1}},
    {"get_exif_data", 100, 336, [](S s, M m) { return get_exif_data(s.photo.path(), 1, m, m + 240); },
     {kUntouchedWord, 100, 100}, {100}, {kUntouchedWord}},
    {"metadataBufFromExifInfo", kUntouchedWord, 860, [](S, M m) {
      return init_exifInfo(m), metadataBufFromExifInfo(m, m + 524, m + 764); }},
    {"time_from_datetime", 1, 4, [](S, M m) { return time_from_datetime("2023:5:6 7:8:9", 0, m); }},
    {"get_profile_name", 4, 32, [](S, M m) { return get_profile_name(size(kIcc), bytesAt(kIcc), m); }},
    {"parse_exif_data", 1, 524, [](S s, M m) {
      return parse_exif_data(s.at(kExifDirectory), 0, 0x4949, placeOf(kExifDirectory), m); }},
    {"parse_gps_data", 1, 524, [](S s, M m) {
      return parse_gps_data(s.at(kGpsDirectory), 0, 0x4949, placeOf(kGpsDirectory), m); }},
    {"parse_photoshop_data", 4, 524, [](S s, M m) {
      return parse_photoshop_data(s.at(kBlock), size(kBlock), m); }, {-4}, {}, {1}},
    {"read_iptc", 8, 8, [](S s, M m) {
      return read_iptc(s.photo.path(), 8, placeOf(kIptc, kPhoto), m); }, {-1}, {8}, {0, -1, -2}},
    {"parse_image_description", 61, 524, [](S s, M m) {
      return parse_image_description(s.at(kText), size(kText), m); }, {-1, -1}, {}, {-1}},
    {"fgetm2", 0x4949, 0, [](S s, M) { return static_cast<int>(fgetm2(s.at("II*"))); }},
    {"fgetm4", 0x49492A00, 0, [](S s, M) { return static_cast<int>(fgetm4(s.at("II*"))); }},
    {"fgetmi2", 0x4949, 0, [](S s, M) { return static_cast<int>(fgetmi2(s.at("II*"), 0x4949)); }},
    {"fgetmi4", 0x2A4949, 0, [](S s, M) { return static_cast<int>(fgetmi4(s.at("II*"), 0x4949)); }},
    {"def_param", 0, 240, [](S, M m) { return def_param(1, m); }},
    {"searchForTag", 232, 480, [](S, M m) {
      def_param(0, m);
      return searchForTag(1, "lfst:Method", 1, bytesAt(kXmp), 1, size(kXmp) + 1, m, m + 240); }, {0}},
    {"get_settings_from_xmp", 232, 240, [](S, M m) {
      return get_settings_from_xmp(1, size(kXmp) + 1, bytesAt(kXmp), nullptr, m); }},
    {"extract_xmp", 1, 301, [](S s, M m) {
      return m.bytes[300] = 0, extract_xmp(s.packet.path(), 300, 4, m); }, {-1}, {1}, {-1, 0}},
    {"read_xmp", 232, 240, [](S s, M m) { return read_xmp(s.packet.path(), 1, m); }, {-1, -4}, {232}, {-1, -2}},
    {"lfsettings_occurences_in_xmp", 1, 0, [](S, M) {
      return lfsettings_occurences_in_xmp(size(kXmp) + 1, bytesAt(kXmp)); }},
    {"embed_xmp", 254, 254, [](S, M m) { return embed_xmp(1, 0, nullptr, 1, "EF 50mm", m); }},
    {"write_xmp", 1, 240, [](S s, M m) {
      return def_param(4, m), write_xmp(s.output.path(), 4, m); }, {-4, -1}, {-3, 1}},
    {"insert_xmp", 995, 1389, [](S, M m) {
      def_param(10, m);
      std::memcpy(m + 240, kHostXmp.data(), kHostXmp.size());
      return insert_xmp(2, 10, m, size(kHostXmp), 995, m + 240); }},
    {"get_exif_count", 14, 100, [](S, M m) {
      return get_exif_count(&kMeta, m, m + 4, &kCameraGps, m + 8, m + 12, m + 16, m + 20, m + 24,
                            m + 28, m + 32, m + 36); }},
    {"write_exif_buf", 408, 408, [](S, M m) {
      return write_exif_buf(5, 44, 9, 91, 13, 6, 20, 11, 6, &kMeta, &kCameraGps, "Canon", m); }},
    {"add_iptc_keyword", 8, 17, [](S, M m) {
      return add_iptc_keyword(size(kIptc), bytesAt(kIptc), 4, bytesAt("lake"), m); }},
    {"buf2tif", 8, 216, [](S s, M m) {
      const TifImageInfo info{9, 8, 3, 8, 72, 0, size(kIcc), 0, {}, 1};
      return buf2tif(m, &info, 27, bytesAt(kIcc), &kMeta, &kCameraGps, size(kIptc), bytesAt(kIptc),
                     0, nullptr, size(kXmp), bytesAt(kXmp), s.output.path()); }, {-1, -4, -1}, {-2, -3, -12, -12}},
    {"get_tif_tag", 22, 8, [](S s, M m) { return get_tif_tag(s.at("II*"), 0x8773, m, m + 4); }, {}, {}, {-1, -2, -3}},
    {"update_tif_profile", 77, 0, [](S s, M) { return update_tif_profile(size(kIcc), bytesAt(kIcc), s.output.path()); },
     {-1, -1, -1}, {77, -2, -2, -2, 77}, {0, -1, -2}, true},
    {"hdrMinMax", 50, 12, [](S, M m) { return hdrMinMax(20, 50, bytesAt(kText), m); }, {-4}},
};
// clang-format on

// A result and all that was written.
struct Outcome {
  int result;
  std::string memory;
  std::string file;
  bool operator==(const Outcome&) const = default;
};

inline Outcome run(const Call& call, Scene& scene) {
  std::vector<unsigned char> memory(call.memorySize, kUntouched);
  const int result = call.function(scene, {memory.data()});
  return {result, {memory.begin(), memory.end()}, scene.output.bytes()};
}

}  // namespace calls
