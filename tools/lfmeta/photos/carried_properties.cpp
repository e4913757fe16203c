#include "photos/carried_properties.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <span>
#include <vector>

#include "base/characters.h"
#include "photos/carried_tags.h"
#include "photos/tiff_structure.h"

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

constexpr uint16_t kExifPointer = 0x8769;
constexpr uint16_t kGpsPointer = 0x8825;

struct Namespace {
  std::string_view prefix;
  std::string_view uri;
};

constexpr std::array kNamespaces{Namespace{"dc", "http://purl.org/dc/elements/1.1/"},
                                 Namespace{"tiff", "http://ns.adobe.com/tiff/1.0/"},
                                 Namespace{"xmp", "http://ns.adobe.com/xap/1.0/"},
                                 Namespace{"exif", "http://ns.adobe.com/exif/1.0/"},
                                 Namespace{"exifEX", "http://cipa.jp/exif/1.0/"},
                                 Namespace{"aux", "http://ns.adobe.com/exif/1.0/aux/"}};

std::string_view prefixOf(std::string_view property) {
  return property.substr(0, property.find(':'));
}

const Namespace& namespaceOf(std::string_view property) {
  return *std::find_if(kNamespaces.begin(), kNamespaces.end(),
                       [&](const Namespace& known) { return known.prefix == prefixOf(property); });
}

// The property as an outline names it.
std::string outlineNameOf(std::string_view property) {
  return std::string(namespaceOf(property).uri)
      .append(" ")
      .append(property.substr(property.find(':') + 1));
}

// Text of a file as XML has it: bytes that are no UTF-8 are taken for Latin-1, control characters
// for blanks.
std::string escaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const Character next = firstCharacter(text);
    const auto byte = static_cast<unsigned char>(text.front());
    if (!next.known) {
      out += static_cast<char>(0xC0 | byte >> 6);
      out += static_cast<char>(0x80 | (byte & 0x3F));
    } else if (next.code == '<') {
      out += "&lt;";
    } else if (next.code == '&') {
      out += "&amp;";
    } else if (next.code < ' ' || next.code == 0xFFFE || next.code == 0xFFFF) {
      out += ' ';
    } else {
      out += text.substr(0, next.length);
    }
    text.remove_prefix(next.length);
  }
  out.erase(out.find_last_not_of(' ') + 1);
  return out.erase(0, out.find_first_not_of(' '));
}

std::string textIn(const Bytes& value) {
  return escaped(
      {reinterpret_cast<const char*>(value.data()),
       static_cast<std::size_t>(std::find(value.begin(), value.end(), 0) - value.begin())});
}

class Carrier {
 public:
  Carrier(const TiffStructure& tiff, const PacketOutline& packet, std::string_view make)
      : tiff_(tiff), packet_(packet), make_(make) {}

  void carry(Directory which, const TiffDirectory& directory) {
    std::vector<bool> seen(65536);
    for (const TiffEntry& entry : directory.entries) {
      if (seen[entry.tag]) continue;  // the first of its tag counts
      seen[entry.tag] = true;
      bool known = false;
      for (const Carried& row : kCarried) {
        if (row.directory != which || row.tag != entry.tag) continue;
        known |= carryProperty(row, entry, directory);
      }
      if (!known && !isElsewhere(which, entry.tag)) {
        notTaken_ += (notTaken_.empty() ? "" : ", ") + nameOf(which, entry.tag);
      }
    }
  }

  CarriedProperties result() const {
    CarriedProperties all;
    if (!properties_.empty()) all.description = description();
    all.notTaken = notTaken_;
    return all;
  }

 private:
  static bool isElsewhere(Directory which, uint16_t tag) {
    const auto in = [tag](const auto& tags) {
      return std::find(tags.begin(), tags.end(), tag) != tags.end();
    };
    switch (which) {
      case Directory::image:
        return in(kOfTheImage) || in(kOfTheExposure);
      case Directory::exif:
        return in(kOfTheExposure);
      case Directory::gps:
        return tag <= kLastOfThePosition || tag == kGpsDate;
    }
    return false;
  }

  // As a person knows it: some by their names, carried ones by their properties.
  static std::string nameOf(Directory which, uint16_t tag) {
    for (const NamedTag& known : kNamedTags) {
      if (known.tag == tag) return std::string(known.name);
    }
    for (const Carried& row : kCarried) {
      if (row.directory == which && row.tag == tag) return std::string(row.property);
    }
    std::array<char, 8> digits{};
    std::snprintf(digits.data(), digits.size(), "0x%04X", static_cast<unsigned>(tag));
    return digits.data();
  }

  std::string description() const {
    std::string opening = "<rdf:Description rdf:about='" + about() + "'";
    for (const Namespace& known : kNamespaces) {
      if (properties_.find("\n<" + std::string(known.prefix) + ":") != std::string::npos) {
        opening.append("\nxmlns:").append(known.prefix).append("='").append(known.uri).append("'");
      }
    }
    return opening + ">" + properties_ + "\n</rdf:Description>\n\n";
  }

  // All descriptions of a packet are about the same.
  std::string about() const {
    std::string about = packet_.descriptions.empty() ? "" : packet_.descriptions.front().about;
    std::string quoted;
    for (const char c : escaped(about))
      quoted += c == '\'' ? std::string("&apos;") : std::string(1, c);
    return quoted;
  }

  // Whether nothing is lost of the entry.
  bool carryProperty(const Carried& row, const TiffEntry& entry, const TiffDirectory& directory) {
    if (packet_.has(outlineNameOf(row.property))) return true;
    constexpr uint32_t kMostElements = 65536;
    if (entry.count > kMostElements) return false;
    const Bytes value = tiff_.valueOf(entry);
    if (row.form == Form::comment && value.size() >= 8 && !isPlainComment(value)) return false;
    const std::string text = xmlOf(row.form, entry, value, directory);
    if (text.empty() || (row.property == "tiff:Make" && text == make_)) return true;
    properties_.append("\n<").append(row.property);
    if (row.form == Form::flash) properties_ += " rdf:parseType='Resource'";
    properties_.append(">").append(text).append("</").append(row.property).append(">");
    return true;
  }

  static bool isPlainComment(const Bytes& value) {
    constexpr auto kAscii = "ASCII\0\0\0"sv;
    const std::string_view code(reinterpret_cast<const char*>(value.data()), 8);
    return code == kAscii || code == "\0\0\0\0\0\0\0\0"sv || value.size() == 8;
  }

  static std::string listed(const char* kind, const std::string& attributes,
                            const std::vector<std::string>& items) {
    std::string list = std::string("<rdf:") + kind + ">";
    bool any = false;
    for (const std::string& item : items) {
      any |= !item.empty();
      list.append("<rdf:li").append(attributes).append(">").append(item).append("</rdf:li>");
    }
    return any ? list + "</rdf:" + kind + ">" : "";
  }

  std::string xmlOf(Form form, const TiffEntry& entry, const Bytes& value,
                    const TiffDirectory& directory) const {
    switch (form) {
      case Form::text:
        return textIn(value);
      case Form::alternatives:
        return listed("Alt", " xml:lang='x-default'", {textIn(value)});
      case Form::sequence:
        return listed("Seq", "", {textIn(value)});
      case Form::integer:
        return integer(value);
      case Form::fraction:
        return fraction(entry, value);
      case Form::fractions:
        return fractions(entry, value);
      case Form::date:
        return date(entry.tag, value, directory);
      case Form::flash:
        return flash(value);
      case Form::comment:
        return value.size() <= 8 ? ""
                                 : listed("Alt", " xml:lang='x-default'",
                                          {textIn(Bytes(value.begin() + 8, value.end()))});
    }
    return {};
  }

  std::string integer(const Bytes& value) const {
    if (value.empty() || value.size() == 3 || value.size() > 4) return {};
    return std::to_string(tiff_.number(value));
  }

  std::string fraction(const TiffEntry& entry, std::span<const unsigned char> value) const {
    constexpr uint16_t kSigned = 10;
    if (value.size() < 8) return {};
    const uint32_t above = tiff_.number(value.first(4));
    const uint32_t below = tiff_.number(value.subspan(4, 4));
    if (entry.type != kSigned) return std::to_string(above) + "/" + std::to_string(below);
    return std::to_string(static_cast<int32_t>(above)) + "/" +
           std::to_string(static_cast<int32_t>(below));
  }

  std::string fractions(const TiffEntry& entry, std::span<const unsigned char> value) const {
    std::vector<std::string> items;
    for (; value.size() >= 8 && items.size() < 4; value = value.subspan(8)) {
      items.push_back(fraction(entry, value));
    }
    return listed("Seq", "", items);
  }

  // 2021:06:05 07:14:59 with what other entries say of the fraction of a second and of the zone.
  std::string date(uint16_t tag, const Bytes& value, const TiffDirectory& directory) const {
    constexpr uint16_t kOriginal = 0x9003;
    std::string text = textIn(value);
    const std::string fractionText =
        other(directory, tag == kOriginal ? 0x9291 : 0x9292, "0123456789");
    const std::string zone = other(directory, tag == kOriginal ? 0x9011 : 0x9012, "+-0123456789:");
    const bool known = text.size() == 19 && text.find_first_of("123456789") != std::string::npos;
    if (!known || (tag == kOriginal && fractionText.empty() && zone.empty())) return {};
    text[4] = text[7] = '-';
    text[10] = 'T';
    return text + (fractionText.empty() ? "" : "." + fractionText) + zone;
  }

  // The text of another entry when it consists of these characters alone.
  std::string other(const TiffDirectory& directory, uint16_t tag, const char* allowed) const {
    const TiffEntry* entry = findEntry(directory, tag);
    const std::string text = entry == nullptr ? "" : textIn(tiff_.valueOf(*entry));
    return text.find_first_not_of(allowed) == std::string::npos ? text : "";
  }

  std::string flash(const Bytes& value) const {
    const std::string number = integer(value);
    if (number.empty()) return {};
    const uint32_t bits = tiff_.number(value);
    const auto flag = [bits](uint32_t bit) { return bits & bit ? "True" : "False"; };
    return std::string("<exif:Fired>") + flag(1) + "</exif:Fired><exif:Return>" +
           std::to_string(bits >> 1 & 3) + "</exif:Return><exif:Mode>" +
           std::to_string(bits >> 3 & 3) + "</exif:Mode><exif:Function>" + flag(32) +
           "</exif:Function><exif:RedEyeMode>" + flag(64) + "</exif:RedEyeMode>";
  }

  const TiffStructure& tiff_;
  const PacketOutline& packet_;
  std::string_view make_;
  std::string properties_;
  std::string notTaken_;
};

}  // namespace

CarriedProperties carryExif(const std::string& path, uint64_t base, const PacketOutline& packet,
                            std::string_view make) {
  const auto tiff = TiffStructure::at(path, base);
  const auto image = tiff ? tiff->directory(tiff->firstDirectory()) : std::nullopt;
  if (!image) return {};
  Carrier carrier(*tiff, packet, make);
  carrier.carry(Directory::image, *image);
  for (const auto& [pointer, which] :
       {std::pair{kExifPointer, Directory::exif}, std::pair{kGpsPointer, Directory::gps}}) {
    const TiffEntry* entry = findEntry(*image, pointer);
    const auto directory =
        entry != nullptr ? tiff->directory(tiff->number(entry->field)) : std::nullopt;
    if (directory) carrier.carry(which, *directory);
  }
  return carrier.result();
}

}  // namespace lfmeta
