#include "photos/packet_rewrite.h"

#include <algorithm>
#include <array>
#include <span>

#include "base/failure.h"
#include "base/replacement_file.h"
#include "photos/jpeg_markers.h"
#include "photos/packet_edit.h"
#include "photos/photo_blocks.h"
#include "photos/photo_file.h"
#include "photos/tiff_rewrite.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

// The bytes of the file that the packet's segment takes the place of; none of them when the JPEG
// has no packet.
struct Place {
  uint64_t start = 2;
  uint64_t end = 2;
  bool behindPictures = false;  // an index of further pictures counts bytes from before it
};

Place placeIn(const std::string& path, const std::vector<JpegSegment>& segments) {
  Place place;
  bool pictures = false;
  for (const JpegSegment& segment : segments) {
    const uint64_t end = segment.data.offset + segment.data.size;
    pictures |= isSegment(path, segment, kApp2, "MPF\0"sv);
    if (isSegment(path, segment, kApp1, kXmpSignature)) return {segment.start, end, pictures};
    const bool exif = isSegment(path, segment, kApp1, kExifSignature);
    const bool jfif = segment.marker == kApp0 && segment.start == segments.front().start;
    if (exif || jfif) place = {end, end, pictures};
  }
  return place;
}

void copy(const std::string& path, uint64_t from, uint64_t to, const ReplacementFile& file) {
  constexpr uint64_t kPiece = 1 << 20;
  while (from < to) {
    const Bytes piece = readRegion(path, from, std::min(kPiece, to - from));
    if (piece.empty()) throw Failure(path, "shrinks while it is read");
    file.write(piece);
    from += piece.size();
  }
}

void replaceInJpeg(const std::string& path, Bytes packet) {
  const std::vector<JpegSegment> segments = jpegSegments(path);
  if (segments.empty()) throw Failure(path, "has a damaged segment; nothing is changed");
  const Place place = placeIn(path, segments);
  constexpr std::size_t kOverhead = 4 + kXmpSignature.size();
  const uint64_t present = place.end - place.start;
  refitPadding(packet, present > kOverhead ? present - kOverhead : 0, kLongestJpegPacket);
  if (packet.size() > kLongestJpegPacket) {
    throw Failure(path, "would need " + std::to_string(packet.size()) +
                            " bytes of XMP, more than the 65502 that a JPEG has room for; nothing "
                            "is changed");
  }
  if (place.behindPictures && packet.size() + kOverhead != present) {
    throw Failure(path, "holds further pictures whose places would change; nothing is changed");
  }
  const std::size_t length = 2 + kXmpSignature.size() + packet.size();
  const std::array<unsigned char, 4> head{0xFF, kApp1, static_cast<unsigned char>(length >> 8),
                                          static_cast<unsigned char>(length)};
  ReplacementFile file(path);
  copy(path, 0, place.start, file);
  file.write(head);
  file.write(std::span(reinterpret_cast<const unsigned char*>(kXmpSignature.data()),
                       kXmpSignature.size()));
  file.write(packet);
  copy(path, place.end, PhotoFile(path).size(), file);
  file.commit();
}

// The pictures of raw photographs stand in directories below the first; a DNG is made for XMP. What
// has no picture in its first directory is an EXIF block alone.
bool isPlainTiff(const std::string& path) {
  constexpr uint16_t kImageWidth = 256;
  constexpr uint16_t kSubDirectories = 330;
  constexpr uint16_t kDngVersion = 50706;
  const Bytes mark = readRegion(path, 8, 2);
  if (!mark.empty() && mark[0] == 'C' && mark[1] == 'R') return false;
  const auto tiff = TiffStructure::at(path);
  const auto directory = tiff ? tiff->directory(tiff->firstDirectory()) : std::nullopt;
  if (!directory) return false;
  const auto has = [&](uint16_t tag) { return findEntry(*directory, tag) != nullptr; };
  return has(kImageWidth) && (!has(kSubDirectories) || has(kDngVersion));
}

void replaceInTiff(const LockedFile& file, const Bytes& packet) {
  constexpr uint16_t kXmpTag = 700;
  constexpr uint16_t kByte = 1;
  if (!isPlainTiff(file.path())) {
    throw Failure(file.path(),
                  "is no TIFF picture that is changed (a raw photograph, a BigTIFF or damaged); "
                  "write a file of XMP beside it");
  }
  setTiffEntry(file, kXmpTag, kByte, packet);
}

void replaceText(const std::string& path, const Bytes& packet) {
  ReplacementFile file(path);
  file.write(packet);
  file.commit();
}

}  // namespace

bool takesPacket(const std::string& path) {
  const auto type = findPhotoType(path);
  return type == PhotoType::jpeg || (type == PhotoType::tiff && isPlainTiff(path));
}

Bytes packetOf(const std::string& path) {
  const auto type = findPhotoType(path);
  return type ? readPacket(path, findBlocks(path, *type)) : readForLibrary(path);
}

void replacePacketOf(const LockedFile& file, Bytes packet) {
  const auto type = findPhotoType(file.path());
  if (!type) return replaceText(file.path(), packet);
  switch (*type) {
    case PhotoType::jpeg:
      return replaceInJpeg(file.path(), std::move(packet));
    case PhotoType::tiff:
      return replaceInTiff(file, packet);
    case PhotoType::psd:
      throw Failure(file.path(), "is a PSD, which is only read; write a file of XMP beside it");
  }
}

}  // namespace lfmeta
