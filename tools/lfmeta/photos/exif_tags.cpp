#include "photos/exif_tags.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace lfmeta {

namespace {

using View = std::span<const unsigned char>;

enum Type : uint32_t { kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kSignedRational = 10 };

constexpr uint32_t kLongestText = 255;

struct Entry {
  uint32_t tag;
  uint32_t type;
  uint32_t count;
  uint64_t field;  // where its value, or the value's offset, stands
};

class Reader {
 public:
  Reader(PhotoFile& file, uint64_t base) : file_(file), base_(base) {
    const View header = file_.view(base, 8);
    if (header.empty() || header[0] != header[1]) return;
    little_ = header[0] == 'I';
    if ((little_ || header[0] == 'M') && number(header.subspan(2, 2)) == 42) {
      readDirectory(number(header.subspan(4)), &Reader::takeFirst);
    }
    if (exifDirectory_ != 0) readDirectory(exifDirectory_, &Reader::takeExif);
  }

  ExifTags tags;

 private:
  uint32_t number(View bytes) const {
    uint32_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      value = value << 8 | bytes[little_ ? bytes.size() - 1 - i : i];
    }
    return value;
  }

  void readDirectory(uint32_t offset, void (Reader::*take)(const Entry&)) {
    constexpr std::size_t kEntrySize = 12;
    const uint64_t start = base_ + offset;
    const View count = file_.view(start, 2);
    const uint32_t entries = count.empty() ? 0 : number(count);
    for (uint32_t i = 0; i < entries; ++i) {
      const uint64_t at = start + 2 + i * kEntrySize;
      const View bytes = file_.view(at, kEntrySize);
      if (bytes.empty()) return;
      (this->*take)({number(bytes.first(2)), number(bytes.subspan(2, 2)),
                     number(bytes.subspan(4, 4)), at + 8});
    }
  }

  // The first `size` bytes of a value that has `whole` of them.
  View value(const Entry& entry, uint64_t whole, std::size_t size) {
    if (whole <= 4) return file_.view(entry.field, size);
    const View offset = file_.view(entry.field, 4);
    return offset.empty() ? offset : file_.view(base_ + number(offset), size);
  }

  std::string text(const Entry& entry) {
    if (entry.type != kAscii || entry.count == 0) return {};
    const View bytes = value(entry, entry.count, std::min(entry.count, kLongestText));
    const std::string_view all(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return std::string(all.substr(0, all.find('\0')));
  }

  std::string trimmedText(const Entry& entry) {
    std::string trimmed = text(entry);
    trimmed.erase(trimmed.find_last_not_of(' ') + 1);
    return trimmed;
  }

  std::optional<uint32_t> whole(const Entry& entry) {
    if (entry.count != 1 || (entry.type != kShort && entry.type != kLong)) return std::nullopt;
    const View bytes = value(entry, 4, entry.type == kShort ? 2 : 4);
    if (bytes.empty()) return std::nullopt;
    return number(bytes);
  }

  // Numerator over denominator; none for a denominator of 0.
  std::optional<float> fraction(const Entry& entry) {
    if (entry.count != 1 || (entry.type != kRational && entry.type != kSignedRational)) {
      return std::nullopt;
    }
    const View bytes = value(entry, 8, 8);
    if (bytes.empty()) return std::nullopt;
    const uint32_t above = number(bytes.first(4));
    const uint32_t below = number(bytes.subspan(4));
    if (below == 0) return std::nullopt;
    if (entry.type == kRational) return static_cast<float>(static_cast<double>(above) / below);
    return static_cast<float>(static_cast<double>(static_cast<int32_t>(above)) /
                              static_cast<int32_t>(below));
  }

  void takeFirst(const Entry& entry) {
    switch (entry.tag) {
      case 0x0100:
        tags.width = whole(entry).value_or(0);
        break;
      case 0x0101:
        tags.height = whole(entry).value_or(0);
        break;
      case 0x010F:
        tags.make = trimmedText(entry);
        break;
      case 0x0110:
        tags.model = text(entry);
        break;
      case 0x0112:
        tags.orientation = whole(entry);
        break;
      case 0x8769:
        exifDirectory_ = whole(entry).value_or(0);
        break;
      default:
        break;
    }
  }

  void takeExif(const Entry& entry) {
    switch (entry.tag) {
      case 0x829A:
        tags.hasExposureTime = fraction(entry).value_or(0) > 0;
        break;
      case 0x9201:
        tags.hasShutterSpeed = fraction(entry).has_value();
        break;
      case 0x9204:
        tags.exposureBias = fraction(entry);
        break;
      case 0x9291:
        tags.subseconds = trimmedText(entry);
        break;
      case 0xA402:
        tags.exposureMode = whole(entry);
        break;
      case 0xA431:
        tags.serialNumber = trimmedText(entry);
        break;
      case 0xA434:
        tags.lens = trimmedText(entry);
        break;
      default:
        break;
    }
  }

  PhotoFile& file_;
  uint64_t base_;
  bool little_ = false;
  uint32_t exifDirectory_ = 0;
};

}  // namespace

ExifTags readExifTags(PhotoFile& file, uint64_t base) {
  return std::move(Reader(file, base).tags);
}

}  // namespace lfmeta
