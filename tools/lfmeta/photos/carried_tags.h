// The EXIF tags that a finished file carries as XMP properties, and those that need none.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace lfmeta {

enum class Directory { image, exif, gps };
enum class Form {
  text,
  alternatives,
  sequence,
  integer,
  fraction,
  fractions,
  date,
  flash,
  comment
};

struct Carried {
  Directory directory;
  uint16_t tag;
  std::string_view property;
  Form form;
};

inline constexpr std::array kCarried{
    Carried{Directory::image, 0x010E, "dc:description", Form::alternatives},
    Carried{Directory::image, 0x010F, "tiff:Make", Form::text},
    Carried{Directory::image, 0x0131, "xmp:CreatorTool", Form::text},
    Carried{Directory::image, 0x013B, "dc:creator", Form::sequence},
    Carried{Directory::image, 0x8298, "dc:rights", Form::alternatives},
    Carried{Directory::exif, 0x8822, "exif:ExposureProgram", Form::integer},
    Carried{Directory::exif, 0x8830, "exifEX:SensitivityType", Form::integer},
    Carried{Directory::exif, 0x9003, "exif:DateTimeOriginal", Form::date},
    Carried{Directory::exif, 0x9004, "exif:DateTimeDigitized", Form::date},
    Carried{Directory::exif, 0x9201, "exif:ShutterSpeedValue", Form::fraction},
    Carried{Directory::exif, 0x9202, "exif:ApertureValue", Form::fraction},
    Carried{Directory::exif, 0x9203, "exif:BrightnessValue", Form::fraction},
    Carried{Directory::exif, 0x9204, "exif:ExposureBiasValue", Form::fraction},
    Carried{Directory::exif, 0x9205, "exif:MaxApertureValue", Form::fraction},
    Carried{Directory::exif, 0x9206, "exif:SubjectDistance", Form::fraction},
    Carried{Directory::exif, 0x9207, "exif:MeteringMode", Form::integer},
    Carried{Directory::exif, 0x9208, "exif:LightSource", Form::integer},
    Carried{Directory::exif, 0x9209, "exif:Flash", Form::flash},
    Carried{Directory::exif, 0x9286, "exif:UserComment", Form::comment},
    Carried{Directory::exif, 0xA20F, "exif:FocalPlaneYResolution", Form::fraction},
    Carried{Directory::exif, 0xA215, "exif:ExposureIndex", Form::fraction},
    Carried{Directory::exif, 0xA217, "exif:SensingMethod", Form::integer},
    Carried{Directory::exif, 0xA401, "exif:CustomRendered", Form::integer},
    Carried{Directory::exif, 0xA402, "exif:ExposureMode", Form::integer},
    Carried{Directory::exif, 0xA403, "exif:WhiteBalance", Form::integer},
    Carried{Directory::exif, 0xA404, "exif:DigitalZoomRatio", Form::fraction},
    Carried{Directory::exif, 0xA406, "exif:SceneCaptureType", Form::integer},
    Carried{Directory::exif, 0xA407, "exif:GainControl", Form::integer},
    Carried{Directory::exif, 0xA408, "exif:Contrast", Form::integer},
    Carried{Directory::exif, 0xA409, "exif:Saturation", Form::integer},
    Carried{Directory::exif, 0xA40A, "exif:Sharpness", Form::integer},
    Carried{Directory::exif, 0xA40C, "exif:SubjectDistanceRange", Form::integer},
    Carried{Directory::exif, 0xA420, "exif:ImageUniqueID", Form::text},
    Carried{Directory::exif, 0xA430, "aux:OwnerName", Form::text},
    Carried{Directory::exif, 0xA431, "aux:SerialNumber", Form::text},
    Carried{Directory::exif, 0xA432, "exifEX:LensSpecification", Form::fractions},
    Carried{Directory::exif, 0xA433, "exifEX:LensMake", Form::text},
    Carried{Directory::exif, 0xA434, "exifEX:LensModel", Form::text},
    Carried{Directory::exif, 0xA434, "aux:Lens", Form::text},
    Carried{Directory::exif, 0xA435, "exifEX:LensSerialNumber", Form::text},
    Carried{Directory::exif, 0xA460, "exifEX:CompositeImage", Form::integer},
    Carried{Directory::gps, 0x0008, "exif:GPSSatellites", Form::text},
    Carried{Directory::gps, 0x0009, "exif:GPSStatus", Form::text},
    Carried{Directory::gps, 0x000A, "exif:GPSMeasureMode", Form::text},
    Carried{Directory::gps, 0x000B, "exif:GPSDOP", Form::fraction},
    Carried{Directory::gps, 0x000C, "exif:GPSSpeedRef", Form::text},
    Carried{Directory::gps, 0x000D, "exif:GPSSpeed", Form::fraction},
    Carried{Directory::gps, 0x000E, "exif:GPSTrackRef", Form::text},
    Carried{Directory::gps, 0x000F, "exif:GPSTrack", Form::fraction},
    Carried{Directory::gps, 0x0010, "exif:GPSImgDirectionRef", Form::text},
    Carried{Directory::gps, 0x0011, "exif:GPSImgDirection", Form::fraction},
    Carried{Directory::gps, 0x0012, "exif:GPSMapDatum", Form::text},
    Carried{Directory::gps, 0x0017, "exif:GPSDestBearingRef", Form::text},
    Carried{Directory::gps, 0x0018, "exif:GPSDestBearing", Form::fraction},
    Carried{Directory::gps, 0x001F, "exifEX:GPSHPositioningError", Form::fraction}};

struct NamedTag {
  uint16_t tag;
  std::string_view name;
};

// Those that a person should know of when they are not taken.
inline constexpr std::array kNamedTags{
    NamedTag{0x927C, "maker note"},     NamedTag{0x9286, "user comment"},
    NamedTag{0x9C9B, "Windows title"},  NamedTag{0x9C9C, "Windows comment"},
    NamedTag{0x9C9D, "Windows author"}, NamedTag{0x9C9E, "Windows keywords"},
    NamedTag{0x9C9F, "Windows subject"}};

// Written by the library, about the photograph's own pixels, or part of what is carried above.
inline constexpr std::array<uint16_t, 47> kOfTheImage{
    0x00FE, 0x00FF, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x010A, 0x0110, 0x0111, 0x0112, 0x0115,
    0x0116, 0x0117, 0x011A, 0x011B, 0x011C, 0x011D, 0x0128, 0x0129, 0x012D, 0x0132, 0x013D, 0x013E,
    0x013F, 0x0140, 0x0142, 0x0143, 0x0144, 0x0145, 0x014A, 0x0152, 0x0153, 0x015B, 0x0201, 0x0202,
    0x0211, 0x0212, 0x0213, 0x0214, 0x02BC, 0x83BB, 0x8649, 0x8769, 0x8773, 0x8825, 0xC4A5};
inline constexpr std::array<uint16_t, 31> kOfTheExposure{
    0x829A, 0x829D, 0x8827, 0x8831, 0x8832, 0x9000, 0x9010, 0x9011, 0x9012, 0x9101, 0x9102,
    0x920A, 0x9290, 0x9291, 0x9292, 0xA000, 0xA001, 0xA002, 0xA003, 0xA005, 0xA20E, 0xA210,
    0xA300, 0xA301, 0xA302, 0xA405, 0xA500, 0xA40B, 0xEA1C, 0xEA1D, 0xA214};
inline constexpr uint16_t kLastOfThePosition = 0x0007;  // and the date
inline constexpr uint16_t kGpsDate = 0x001D;

}  // namespace lfmeta
