// An EXIF directory (EXIF 2.3) -> the camera settings of ExifInfo.
//
// No entry's type is checked. A fraction is two 32-bit numbers at the entry's target, taken as
// signed whatever the type says: hosts rely on the values that follow from it.
#include "reading/exif_directory.h"

#include <cmath>
#include <optional>

#include "reading/host_stream.h"

namespace lumenforge {
namespace {

struct Fraction {
  int32_t numerator = 0;
  int32_t denominator = 0;

  bool isValid() const { return denominator > 0; }
  float quotient() const { return static_cast<float>(numerator) / static_cast<float>(denominator); }
};

std::optional<Fraction> readFraction(Reading& reading, const TiffFrame& frame, uint64_t offset) {
  const uint8_t* bytes = reading.window.view(offset, 8);
  if (bytes == nullptr) return std::nullopt;
  return Fraction{static_cast<int32_t>(load32(bytes, frame.order)),
                  static_cast<int32_t>(load32(bytes + 4, frame.order))};
}

// An APEX shutter speed t stands for 2^-t seconds; 0 stands for none.
float exposureOfShutterSpeed(const Fraction& speed) {
  constexpr double kLn2 = 0.6931471805599453;
  const float t = speed.denominator != 0 ? speed.quotient() : static_cast<float>(speed.numerator);
  return t == 0.0F ? 0.0F : static_cast<float>(std::exp(-static_cast<double>(t) * kLn2));
}

// An APEX aperture value A stands for the f-number 2^(A/2).
float fNumberOfAperture(const Fraction& aperture) {
  return static_cast<float>(std::exp2(static_cast<double>(aperture.quotient()) / 2.0));
}

uint32_t isoOfExposureIndex(const Fraction& index) {
  const int32_t iso = index.isValid() ? index.numerator / index.denominator : index.numerator;
  return static_cast<uint32_t>(iso);
}

void setQuotient(const std::optional<Fraction>& fraction, float& field) {
  if (fraction && fraction->isValid()) field = fraction->quotient();
}

// The fallbacks test their field as it stands when their entry comes: order matters.
void takeEntry(Reading& reading, const TiffFrame& frame, const DirectoryEntry& entry,
               float& shutterExposure) {
  ExifInfo& info = reading.info;
  const auto fraction = [&] { return readFraction(reading, frame, entry.target); };
  switch (entry.tag) {
    case Tag::exposureTime:
      return setQuotient(fraction(), info.exposureTime);
    case Tag::fNumber:
      return setQuotient(fraction(), info.fNumber);
    case Tag::focalLength:
      return setQuotient(fraction(), info.focalLength);
    case Tag::focalPlaneXResolution:
      return setQuotient(fraction(), info.focalPlaneXResolution);
    case Tag::isoSpeedRatings:
      info.iso = entry.value;
      return;
    case Tag::focalPlaneResolutionUnit:
      info.focalPlaneResolutionUnit = entry.value;
      return;
    case Tag::focalLengthIn35mmFilm:
      info.focalLength35mm = entry.value;
      return;
    case Tag::dateTimeOriginal:
      return readLine(reading.window, entry.target, info.dateTimeOriginal);
    case Tag::shutterSpeedValue:
      if (const auto speed = fraction()) shutterExposure = exposureOfShutterSpeed(*speed);
      return;
    case Tag::apertureValue:
    case Tag::maxApertureValue:
      if (info.fNumber != 0.0F) return;
      if (const auto aperture = fraction(); aperture && aperture->isValid()) {
        info.fNumber = fNumberOfAperture(*aperture);
      }
      return;
    case Tag::exposureIndex:
      if (info.iso != 0) return;
      if (const auto index = fraction()) info.iso = isoOfExposureIndex(*index);
      return;
    default:
      return;
  }
}

}  // namespace

void readExifDirectory(Reading& reading, const TiffFrame& frame, uint64_t offset) {
  float shutterExposure = 0.0F;
  DirectoryReader directory(reading.window, offset, frame, reading.entriesLeft);
  while (const auto entry = directory.next()) takeEntry(reading, frame, *entry, shutterExposure);
  if (reading.info.exposureTime == 0.0F && shutterExposure > 0.0F) {
    reading.info.exposureTime = shutterExposure;
  }
}

}  // namespace lumenforge

int parse_exif_data(FILE* f, int /*count*/, int byteOrder, int base, ExifInfo* info) {
  return lumenforge::readFromStream(f, byteOrder, base, *info, lumenforge::readExifDirectory);
}
