#include "photos/icc_profile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "base/failure.h"
#include "photos/tiff_rewrite.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

constexpr uint16_t kPhotometricTag = 262;
constexpr uint16_t kProfileTag = 34675;
constexpr uint16_t kUndefined = 7;
constexpr std::size_t kHeaderSize = 128;
constexpr std::size_t kTagSize = 12;

uint32_t numberAt(std::span<const unsigned char> bytes, std::size_t at) {
  return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 |
         bytes[at + 3];
}

std::span<const unsigned char> within(std::span<const unsigned char> bytes, uint64_t at,
                                      uint64_t size) {
  if (at > bytes.size() || size > bytes.size() - at) return {};
  return bytes.subspan(at, size);
}

// The data of the tag, from its type on; empty without it.
std::span<const unsigned char> findTag(std::span<const unsigned char> profile, uint32_t tag) {
  if (profile.size() < kHeaderSize + 4) return {};
  const uint32_t count = numberAt(profile, kHeaderSize);
  for (uint64_t i = 0; i < count; ++i) {
    const auto entry = within(profile, kHeaderSize + 4 + i * kTagSize, kTagSize);
    if (entry.empty()) break;
    if (numberAt(entry, 0) == tag) return within(profile, numberAt(entry, 4), numberAt(entry, 8));
  }
  return {};
}

void appendUtf8(std::string& text, uint32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr std::array kLeads{0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(static_cast<uint32_t>(kLeads[static_cast<std::size_t>(more)]) |
                            code >> (6 * more));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
}

// UTF-16, big-endian, up to a NUL or a length that no name has. Halves of a pair that stand alone
// become U+FFFD.
std::string utf8Of(std::span<const unsigned char> utf16) {
  constexpr std::size_t kLongestText = 4096;
  std::string text;
  uint32_t high = 0;
  for (; utf16.size() >= 2 && text.size() < kLongestText; utf16 = utf16.subspan(2)) {
    const uint32_t unit = uint32_t{utf16[0]} << 8 | utf16[1];
    const bool isLow = unit >= 0xDC00 && unit < 0xE000;
    if (high != 0 && !isLow) appendUtf8(text, 0xFFFD);
    if (unit == 0) return text;
    const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
    if (isLow) {
      appendUtf8(text, high == 0 ? 0xFFFD : 0x10000 + ((high - 0xD800) << 10) + unit - 0xDC00);
    } else if (!isHigh) {
      appendUtf8(text, unit);
    }
    high = isHigh ? unit : 0;
  }
  if (high != 0) appendUtf8(text, 0xFFFD);
  return text;
}

// Version 2: a text in ASCII, then one in UTF-16.
std::string plainDescription(std::span<const unsigned char> tag) {
  if (tag.size() < 12) return {};
  const uint64_t size = numberAt(tag, 8);
  const auto ascii = within(tag, 12, size);
  std::string text(ascii.begin(), std::find(ascii.begin(), ascii.end(), 0));
  const auto counts = within(tag, 12 + size, 8);
  if (!text.empty() || counts.empty()) return text;
  return utf8Of(within(tag, 20 + size, uint64_t{numberAt(counts, 4)} * 2));
}

// Version 4: texts in several languages, of which English is taken where there is any.
std::string localizedDescription(std::span<const unsigned char> tag) {
  if (tag.size() < 16) return {};
  constexpr std::size_t kRecordSize = 12;
  constexpr uint32_t kMostRecords = 256;  // more languages than any profile speaks
  std::string first;
  for (uint64_t i = 0; i < std::min(numberAt(tag, 8), kMostRecords); ++i) {
    const auto record = within(tag, 16 + i * kRecordSize, kRecordSize);
    if (record.empty()) break;
    std::string text = utf8Of(within(tag, numberAt(record, 8), numberAt(record, 4)));
    if (record[0] == 'e' && record[1] == 'n' && !text.empty()) return text;
    if (first.empty()) first = std::move(text);
  }
  return first;
}

// What TIFF calls the colours of an image, and the colour spaces of profiles that fit.
struct Photometric {
  uint32_t number;
  std::string_view colourSpace;
  const char* name;
};

constexpr std::array kPhotometrics{
    Photometric{0, "GRAY", "gray"},  Photometric{1, "GRAY", "gray"},
    Photometric{2, "RGB ", "RGB"},   Photometric{3, "RGB ", "RGB (a palette)"},
    Photometric{5, "CMYK", "CMYK"},  Photometric{6, "RGB ", "RGB (as YCbCr)"},
    Photometric{8, "Lab ", "CIELab"}};

}  // namespace

std::string_view IccProfile::letters(std::size_t at) const {
  if (bytes.size() < at + 4) return {};
  return {reinterpret_cast<const char*>(bytes.data()) + at, 4};
}

std::string IccProfile::version() const {
  if (bytes.size() < 12) return {};
  return std::to_string(bytes[8]) + "." + std::to_string(bytes[9] >> 4) + "." +
         std::to_string(bytes[9] & 15);
}

std::string IccProfile::description() const {
  constexpr uint32_t kDescription = 0x64657363;  // "desc", the tag and the type of version 2
  constexpr uint32_t kLocalized = 0x6D6C7563;    // "mluc"
  const auto tag = findTag(bytes, kDescription);
  if (tag.size() < 4) return {};
  if (numberAt(tag, 0) == kDescription) return plainDescription(tag);
  return numberAt(tag, 0) == kLocalized ? localizedDescription(tag) : std::string();
}

const char* profileFault(std::span<const unsigned char> bytes) {
  constexpr uint32_t kSignature = 0x61637370;  // "acsp"
  if (bytes.size() < kHeaderSize + 4 || numberAt(bytes, 36) != kSignature) {
    return "is no ICC profile";
  }
  if (numberAt(bytes, 0) > bytes.size()) return "is an ICC profile that is cut short";
  if (numberAt(bytes, 0) < bytes.size()) return "is an ICC profile with other bytes behind it";
  constexpr std::array kClasses{"scnr", "mntr", "prtr", "spac"};
  const std::string_view deviceClass(reinterpret_cast<const char*>(bytes.data()) + 12, 4);
  if (std::find(kClasses.begin(), kClasses.end(), deviceClass) == kClasses.end()) {
    return "is an ICC profile of a class that no image has (a link, an abstract or a named one)";
  }
  return nullptr;
}

IccProfile readProfile(const std::string& path) {
  IccProfile profile{readForLibrary(path)};
  if (const char* fault = profileFault(profile.bytes)) throw Failure(path, fault);
  return profile;
}

std::optional<IccProfile> readTiffProfile(const std::string& path) {
  const auto tiff = TiffStructure::at(path);
  if (!tiff) throw Failure(path, "is no TIFF file of 32-bit offsets");
  const auto directory = tiff->directory(tiff->firstDirectory());
  if (!directory) throw Failure(path, "has a damaged directory");
  const TiffEntry* entry = findEntry(*directory, kProfileTag);
  if (entry == nullptr) return std::nullopt;
  IccProfile profile{tiff->valueOf(*entry)};
  if (profile.bytes.empty()) {
    throw Failure(path, "has a profile entry that points outside of the file; --set replaces it");
  }
  return profile;
}

void setTiffProfile(const std::string& path, const IccProfile& profile,
                    const std::string& profilePath) {
  const LockedFile file(path);
  if (const auto tiff = TiffStructure::at(path)) {
    const auto directory = tiff->directory(tiff->firstDirectory());
    const TiffEntry* entry = directory ? findEntry(*directory, kPhotometricTag) : nullptr;
    const uint32_t colours =
        entry != nullptr ? tiff->number(std::span(entry->field).first(2)) : UINT32_MAX;
    for (const Photometric& known : kPhotometrics) {
      if (known.number == colours && known.colourSpace != profile.colourSpace()) {
        const std::string_view space = profile.colourSpace();
        const std::string name(space.substr(0, space.find_last_not_of(' ') + 1));
        throw Failure(profilePath, "is a profile for " + name + ", and the image is " + known.name +
                                       "; nothing is changed");
      }
    }
  }
  setTiffEntry(file, kProfileTag, kUndefined, profile.bytes);
}

}  // namespace lfmeta
